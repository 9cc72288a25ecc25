#include "store/storeindex.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <initializer_list>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace vek {
namespace {

struct Field {
  const char *type;
  std::string bytes;
};

// Two repositories, two entries.
const std::vector<Field> fields = {
    {"unsigned", {"\2\0\0\0", 4}}, {"unsigned", {"\2\0\0\0", 4}},
    {"str", {"ab\0", 3}},          {"unsigned", {"\1\0\0\0", 4}},
    {"off_t", {"\4\3\2\1", 4}},    {"size_t", {"\377\0\0\0", 4}},
    {"time_t", {"\0\1\2\377", 4}}, {"str", {"\0", 1}},
    {"unsigned", {"\0\0\0\0", 4}}, {"off_t", {"\0\0\0\0", 4}},
    {"size_t", {"\0\0\0\0", 4}},   {"time_t", {"\0\0\0\0", 4}},
};

std::string whole() {
  std::string out;
  for (const Field &field : fields)
    out += field.bytes;
  return out;
}

// Moves at most `piece` bytes at a time, and fails at the end if it is told to.
IndexSource source(std::string_view rest, gsize piece, bool fails = false) {
  return [=](void *buffer, gsize size) mutable -> gssize {
    errno = EIO;
    const gsize count =
        rest.copy(static_cast<char *>(buffer), std::min(piece, size));
    rest.remove_prefix(count);
    return count == 0 && fails ? -1 : static_cast<gssize>(count);
  };
}

class StoreIndex : public testing::Test {
 protected:
  ~StoreIndex() override {
    forget();
    g_tree_destroy(tree_P_);
  }
  bool read(const IndexSource &from) {
    forget();
    return read_index(from, tree_P_, summary_, fault_);
  }
  void forget() {
    const auto free_entry = [](gpointer, gpointer value, gpointer) {
      free_node(static_cast<FileStoreNode *>(value));
      return FALSE;
    };
    g_tree_foreach(tree_P_, free_entry, nullptr);
    g_tree_destroy(tree_P_);
    tree_P_ = new_index_tree();
    summary_ = {};
    fault_ = {};
  }
  const FileStoreNode &node(const char *name) const {
    return *static_cast<FileStoreNode *>(g_tree_lookup(tree_P_, name));
  }
  std::string written(std::initializer_list<const char *> names) const {
    GString *out_P = g_string_new(nullptr);
    append_index_head(out_P, summary_.nr_stores,
                      static_cast<guint32>(names.size()));
    for (const char *name : names)
      append_index_entry(out_P, node(name));
    std::string out(out_P->str, out_P->len);
    g_string_free(out_P, TRUE);
    return out;
  }

  GTree *tree_P_ = new_index_tree();
  IndexSummary summary_;
  IndexFault fault_;
};

TEST_F(StoreIndex, IsReadAndWrittenByteForByte) {
  ASSERT_TRUE(read(source(whole(), 1)));
  EXPECT_EQ(summary_.nr_stores, 2U);
  EXPECT_EQ(summary_.block_ends[1], 0x01020304 + 255);
  EXPECT_EQ(node("ab").offset, 0x01020304);
  EXPECT_EQ(node("ab").time, 0xFF020100U);
  EXPECT_EQ(written({"ab", ""}), whole());
}

TEST_F(StoreIndex, MayHaveNamesBeyondAnyBuffer) {
  const std::string name(300000, 'n');
  const std::string entry(17, '\0');
  const std::string bytes =
      std::string("\1\0\0\0\2\0\0\0", 8) + name + entry + name + "x" + entry;
  ASSERT_TRUE(read(source(bytes, 70000)));
  EXPECT_EQ(written({name.c_str(), (name + "x").c_str()}), bytes);
}

// A source that fails must not look like one that ends: the store would be
// taken for damaged.
TEST_F(StoreIndex, NamesTheFieldInWhichItsSourceFails) {
  const std::string bytes = whole();
  std::size_t start = 0;
  for (const Field &field : fields) {
    for (std::size_t in = 0; in < field.bytes.size(); ++in) {
      SCOPED_TRACE(start + in);
      EXPECT_FALSE(read(source({bytes.data(), start + in}, 3, true)));
      EXPECT_EQ(fault_.kind, IndexFault::Kind::cannot_read);
      EXPECT_EQ(fault_.primitive, std::string("read_") + field.type);
      EXPECT_EQ(errno, EIO);
    }
    start += field.bytes.size();
  }
  EXPECT_FALSE(read(source(bytes, 3, true)));
  EXPECT_STREQ(fault_.primitive, "filestore_open");
}

TEST_F(StoreIndex, KnowsTheFieldOfEachByte) {
  const std::string bytes = whole();
  GString *image_P = g_string_new_len(bytes.data(), std::ssize(bytes));
  gsize start = 0;
  for (const Field &field : fields) {
    for (gsize in = 0; in < field.bytes.size(); ++in) {
      const IndexField found = index_field_at(image_P, start + in);
      EXPECT_EQ(found.primitive, std::string("write_") + field.type);
      EXPECT_EQ(found.start, start);
      EXPECT_EQ(found.size, field.bytes.size());
    }
    start += field.bytes.size();
  }
  g_string_free(image_P, TRUE);
}

}  // namespace
}  // namespace vek

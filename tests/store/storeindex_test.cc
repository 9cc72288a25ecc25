#include "store/storeindex.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace vek {
namespace {

struct Field {
  std::string type;
  std::string bytes;
};

// Two repositories, two entries.
const std::vector<Field> fields = {
    {"unsigned", {"\2\0\0\0", 4}},
    {"unsigned", {"\2\0\0\0", 4}},
    {"str", {"\0", 1}},
    {"unsigned", {"\0\0\0\0", 4}},
    {"off_t", {"\0\0\0\0", 4}},
    {"size_t", {"\0\0\0\0", 4}},
    {"time_t", {"\0\0\0\0", 4}},
    {"str", {"ab\0", 3}},
    {"unsigned", {"\1\0\0\0", 4}},
    {"off_t", {"\4\3\2\1", 4}},
    {"size_t", {"\377\0\0\0", 4}},
    {"time_t", {"\0\1\2\377", 4}},
};

std::string whole() {
  std::string out;
  for (const Field &field : fields)
    out += field.bytes;
  return out;
}

struct Reading {
  bool is_good = false;
  IndexSummary summary;
  IndexFault fault;
  std::string written_again;
};

// Reads in small pieces, from a source that may fail where it has no more.
Reading read(std::string_view bytes, bool fails = false) {
  const auto source = [=](void *buffer, gsize size) mutable -> gssize {
    errno = EIO;
    const gsize count =
        bytes.copy(static_cast<char *>(buffer), std::min<gsize>(3, size));
    bytes.remove_prefix(count);
    return count == 0 && fails ? -1 : static_cast<gssize>(count);
  };
  Reading out;
  GTree *tree_P = new_index_tree();
  out.is_good = read_index(source, tree_P, out.summary, out.fault);
  GString *image_P = g_string_new(nullptr);
  append_index_head(image_P, out.summary.nr_stores,
                    static_cast<guint32>(g_tree_nnodes(tree_P)));
  const auto take_entry = [](gpointer, gpointer value, gpointer image) {
    auto *node_P = static_cast<FileStoreNode *>(value);
    append_index_entry(static_cast<GString *>(image), *node_P);
    free_node(node_P);
    return FALSE;
  };
  g_tree_foreach(tree_P, take_entry, image_P);
  out.written_again.assign(image_P->str, image_P->len);
  g_string_free(image_P, TRUE);
  g_tree_destroy(tree_P);
  return out;
}

TEST(StoreIndex, IsReadAndWrittenByteForByte) {
  const Reading index = read(whole());
  ASSERT_TRUE(index.is_good);
  EXPECT_EQ(index.summary.block_ends[1], 0x01020304 + 255);
  EXPECT_EQ(index.written_again, whole());
}

// A source that fails must not look like one that ends: the store would be
// taken for damaged.
TEST(StoreIndex, KnowsTheFieldOfEachByte) {
  const std::string bytes = whole();
  GString *image_P = g_string_new_len(bytes.data(), std::ssize(bytes));
  gsize start = 0;
  for (const auto &[type, field] : fields) {
    for (gsize in = 0; in < field.size(); ++in) {
      SCOPED_TRACE(start + in);
      const IndexField found = index_field_at(image_P, start + in);
      EXPECT_EQ(found.primitive, "write_" + type);
      EXPECT_EQ(found.start, start);
      EXPECT_EQ(found.size, field.size());
      IndexFault fault = read(bytes.substr(0, start + in), true).fault;
      EXPECT_EQ(fault.kind, IndexFault::Kind::cannot_read);
      EXPECT_EQ(fault.primitive, "read_" + type);
      fault = read(bytes.substr(0, start + in)).fault;
      EXPECT_EQ(fault.kind, IndexFault::Kind::ends_early);
      EXPECT_EQ(fault.primitive, "read_" + type);
      // A name is read byte by byte.
      EXPECT_EQ(fault.count, type == "str" ? 0 : in);
      EXPECT_EQ(fault.wanted, type == "str" ? 1U : 4U);
    }
    start += field.size();
  }
  g_string_free(image_P, TRUE);
  const Reading failed = read(bytes, true);
  EXPECT_FALSE(failed.is_good);
  EXPECT_EQ(errno, EIO);
  EXPECT_STREQ(failed.fault.primitive, "filestore_open");
}

}  // namespace
}  // namespace vek

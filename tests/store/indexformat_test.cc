#include "store/indexformat.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>

namespace vek {
namespace {

// Two repositories, two entries: no name and "ab".
const std::string whole(
    "\2\0\0\0\2\0\0\0"
    "\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"
    "ab\0\1\0\0\0\4\3\2\1\377\0\0\0\0\1\2\377",
    44);

struct Reading {
  bool is_good = false;
  IndexSummary summary;
  IndexFault fault;
  std::string written_again;
};

// Reads in small pieces, from a source that may fail where it has no more.
Reading read(std::string_view bytes, bool fails = false) {
  const auto source = [=](void *buffer, gsize size) mutable -> gssize {
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

TEST(IndexFormat, IsReadAndWrittenByteForByte) {
  const Reading index = read(whole);
  ASSERT_TRUE(index.is_good);
  EXPECT_EQ(index.summary.block_ends[1], 0x01020304 + 255);
  EXPECT_EQ(index.written_again, whole);
}

// A source that fails must not look like one that ends: the store would be
// taken for damaged.
TEST(IndexFormat, TellsASourceThatFailsFromOneThatEnds) {
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_EQ(read(whole.substr(0, size)).fault.kind,
              IndexFault::Kind::ends_early);
    EXPECT_EQ(read(whole.substr(0, size), true).fault.kind,
              IndexFault::Kind::cannot_read);
  }
  EXPECT_FALSE(read(whole, true).is_good);
}

}  // namespace
}  // namespace vek

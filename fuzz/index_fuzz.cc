// Any bytes as the index of a file store, in pieces of any size: what is read
// lies within the stated limits, is written in as many bytes, and read again as
// the same entries. A source that fails at its end is never taken for one that
// ends.
//
// The first byte chooses the size of the pieces, and whether the source fails.
#include <algorithm>
#include <cerrno>
#include <cstring>

#include "store/indexformat.h"
#include "target.h"

namespace {

using namespace vek;
using vek::fuzzing::require;

// The bytes of an index, given out in pieces.
struct Pieces {
  std::string_view rest;
  gsize size;
  bool fails;  // at the end

  gssize operator()(void *buffer, gsize wanted) {
    if (rest.empty() && fails)
      return -1;
    const gsize count = rest.copy(static_cast<char *>(buffer),
                                  std::min(std::max(size, gsize{1}), wanted));
    rest.remove_prefix(count);
    return static_cast<gssize>(count);
  }
};

// An index in memory.
class Index {
 public:
  Index() = default;
  ~Index() {
    g_tree_foreach(tree_P_, free_entry, nullptr);
    g_tree_destroy(tree_P_);
  }
  Index(const Index &) = delete;
  Index &operator=(const Index &) = delete;

  bool read(const Pieces &pieces) {
    IndexFault fault;
    const bool good = read_index(pieces, tree_P_, summary_, fault);
    require(good == (fault.kind == IndexFault::Kind::none));
    return good;
  }
  std::string written() const {
    GString *out_P = g_string_new(nullptr);
    append_index_head(out_P, summary_.nr_stores,
                      static_cast<guint32>(nr_entries()));
    g_tree_foreach(tree_P_, append_entry, out_P);
    check_fields(out_P);
    std::string out(out_P->str, out_P->len);
    g_string_free(out_P, TRUE);
    return out;
  }
  gsize nr_entries() const {
    return static_cast<gsize>(g_tree_nnodes(tree_P_));
  }
  void check() const {
    require(summary_.nr_stores <= MAX_NR_STORES);
    g_tree_foreach(tree_P_, check_entry, const_cast<IndexSummary *>(&summary_));
  }

 private:
  static gboolean free_entry(gpointer, gpointer value, gpointer) {
    free_node(static_cast<FileStoreNode *>(value));
    return FALSE;
  }
  static gboolean append_entry(gpointer, gpointer value, gpointer out_P) {
    append_index_entry(static_cast<GString *>(out_P),
                       *static_cast<FileStoreNode *>(value));
    return FALSE;
  }
  static gboolean check_entry(gpointer, gpointer value, gpointer data) {
    const auto &node = *static_cast<FileStoreNode *>(value);
    const auto &summary = *static_cast<IndexSummary *>(data);
    require(node.repository_id < summary.nr_stores && node.offset >= 0);
    require(summary.block_ends[node.repository_id] >=
            gint64{node.offset} + node.size);
    return FALSE;
  }
  // The fields follow one another without a gap.
  static void check_fields(const GString *image) {
    for (gsize at = 0, steps = 0; at < image->len && steps < 100; ++steps) {
      const IndexField field = index_field_at(image, at);
      require(field.start == at && field.size > 0);
      require(index_field_at(image, at + field.size - 1).start == at);
      at += field.size;
    }
  }

  GTree *tree_P_ = new_index_tree();
  IndexSummary summary_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  if (size == 0)
    return 0;
  const std::string_view bytes = fuzzing::text_of(data + 1, size - 1);
  const bool fails = data[0] >= 192;
  Index index;
  const bool good = index.read({bytes, data[0], fails});
  // The shortest entry has no name.
  require(index.nr_entries() <= size / 17);
  if (!good)
    return 0;
  require(!fails);
  index.check();
  const std::string image = index.written();
  require(image.size() == bytes.size());
  Index again;
  require(again.read({image, 4096, false}) && again.written() == image);
  return 0;
}

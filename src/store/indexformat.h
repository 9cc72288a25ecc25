// The index of a file store as bytes: what filestore_open() reads and
// filestore_sync() writes.
//
// A part of the file store, apart from it so that the format can be read from
// memory too. It opens no file, prints nothing and never ends the program;
// what is wrong with an index it leaves to the store to say.
#ifndef VEK_STORE_INDEXFORMAT_H_
#define VEK_STORE_INDEXFORMAT_H_

#include <array>
#include <functional>
#include <string>

#include "store/filestore.h"

namespace vek {

// Moves up to `size` bytes of an index to `buffer` and returns how many: 0 at
// its end, -1 with errno set if they cannot be had. `size` is never 0.
using IndexSource = std::function<gssize(void *buffer, gsize size)>;

// Why an index cannot be read.
struct IndexFault {
  enum class Kind {
    none,
    cannot_read,  // the source failed in the field of `primitive`
    ends_early,   // of that field, only `count` of `wanted` bytes are there
    impossible,   // a number of repositories, or of one, above the limit
    damaged,      // `text` says how
  };
  Kind kind = Kind::none;
  const char *primitive = nullptr;
  gsize count = 0;
  gsize wanted = 0;
  std::string text;
};

// What an index says beside its entries.
struct IndexSummary {
  guint32 nr_stores = 0;  // repository files in use
  // Of the entry read last; it may be an impossible one.
  guint32 repository_id = 0;
  // For each repository the end of its last block.
  std::array<gint64, MAX_NR_STORES> block_ends{};
};

// An empty tree for an index: names to FileStoreNode, by the order of their
// bytes. The caller owns it, and free_node() frees what is in it.
GTree *new_index_tree();

// Frees the node and its name.
void free_node(FileStoreNode *node_P);

// Reads an index to its end and enters a new node for each of its entries in
// the empty tree. Memory grows with the bytes of the source, never with what a
// number in them claims. Returns false with `fault` filled in if the source
// fails or the index cannot be right, whatever the repository files hold; the
// tree and `summary` then have what came before.
bool read_index(const IndexSource &source, GTree *tree, IndexSummary &summary,
                IndexFault &fault);

// Append to `out` the head or an entry of an index. An index is one head and
// then all entries, in any order.
void append_index_head(GString *out, guint32 nr_stores, guint32 nr_entries);
void append_index_entry(GString *out, const FileStoreNode &node);

// A field of an index, known by the primitive that writes it alone.
struct IndexField {
  const char *primitive;
  gsize start;  // of its first byte
  gsize size;
};

// The field to which the byte at `position` of a whole index belongs.
IndexField index_field_at(const GString *image, gsize position);

}  // namespace vek

#endif  // VEK_STORE_INDEXFORMAT_H_

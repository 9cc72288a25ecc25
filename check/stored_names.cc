#include "check/stored_names.h"

#include <glib.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "run/helpers.h"
#include "store/filestore.h"
#include "store/storeindex.h"

namespace vek::checking {
namespace {

// Reads an index without opening the store, which would write to it.
bool read_names(const std::string &path, NameSet &names) {
  std::string content;
  if (read_file(path, content) != ReadResult::ok)
    return false;
  std::size_t done = 0;
  const IndexSource source = [&](void *buffer_P, gsize size) {
    const std::size_t part = std::min<std::size_t>(size, content.size() - done);
    std::memcpy(buffer_P, content.data() + done, part);
    done += part;
    return static_cast<gssize>(part);
  };
  GTree *tree_P = new_index_tree();
  IndexSummary summary;
  IndexFault fault;
  const bool is_good = read_index(source, tree_P, summary, fault);
  for (GTreeNode *entry_P = g_tree_node_first(tree_P); entry_P != nullptr;
       entry_P = g_tree_node_next(entry_P)) {
    auto *node_P = static_cast<FileStoreNode *>(g_tree_node_value(entry_P));
    if (is_good)
      names.emplace(node_P->name);
    free_node(node_P);
  }
  g_tree_destroy(tree_P);
  return is_good;
}

}  // namespace

bool read_stored_names(const std::string &data_directory, NameSet &names) {
  const Path index(data_directory, "profile-store", ".idx");
  const Path copy(data_directory, "profile-store", ".new");
  if (file_size(index) <= 0 && !file_exists(copy))
    return true;
  // The copy is there after a crash, and the next run takes it.
  return read_names(index, names) || read_names(copy, names);
}

}  // namespace vek::checking

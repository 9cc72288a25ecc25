#include "model/storereader.h"

#include <fcntl.h>
#include <glib.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "base/helpers.h"
#include "store/datafiles.h"
#include "store/indexformat.h"

namespace vek {
namespace {

// The index is read whole and handed out in parts; `rest` is what is left.
IndexSource source_of(std::string_view &rest) {
  return [&rest](void *buffer_P, gsize size) {
    const std::size_t part = std::min<std::size_t>(size, rest.size());
    std::memcpy(buffer_P, rest.data(), part);
    rest.remove_prefix(part);
    return static_cast<gssize>(part);
  };
}

std::string words_of(const IndexFault &fault) {
  switch (fault.kind) {
    case IndexFault::Kind::ends_early:
      return "damaged index: it ends too early";
    case IndexFault::Kind::impossible:
      return "damaged index: an impossible number of repositories";
    default:
      return "damaged index: " + fault.text;
  }
}

// Whether the repository files have all the bytes to which the index leads.
bool has_repositories(const std::string &base, const IndexSummary &summary,
                      Failure &failure) {
  for (guint32 id = 0; id < summary.nr_stores; ++id) {
    const std::string path = repository_path(base.c_str(), id);
    if (file_size(path) < summary.block_ends[id]) {
      failure = {path, "", "it lacks bytes to which the store's index leads"};
      return false;
    }
  }
  return true;
}

// False if there is no such index, or none that can be right.
bool read_index_file(const std::string &base, const std::string &path,
                     StoreReader::Blocks &blocks, Failure &failure) {
  std::string text;
  if (read_file(path, text) != ReadResult::ok) {
    failure = {path, "", std::strerror(errno)};
    return false;
  }
  std::string_view rest = text;
  GTree *const tree_P = new_index_tree();
  IndexSummary summary;
  IndexFault fault;
  bool is_good = read_index(source_of(rest), tree_P, summary, fault);
  if (!is_good)
    failure = {path, "", words_of(fault)};
  is_good = is_good && has_repositories(base, summary, failure);
  // Also after a fault, to free the nodes that were entered before it.
  for (GTreeNode *entry_P = g_tree_node_first(tree_P); entry_P != nullptr;
       entry_P = g_tree_node_next(entry_P)) {
    auto *node_P = static_cast<FileStoreNode *>(g_tree_node_value(entry_P));
    if (is_good) {
      // Both trees are ordered by the bytes of the names, so each goes to the
      // end.
      blocks.emplace_hint(
          blocks.end(), node_P->name,
          StoreReader::Block{node_P->repository_id, node_P->offset,
                             node_P->size, node_P->time});
    }
    free_node(node_P);
  }
  g_tree_destroy(tree_P);
  return is_good;
}

}  // namespace

bool StoreReader::open(const std::string &base, Failure &failure) {
  base_ = base;
  const std::string path = index_path(base.c_str());
  const KeepErrno keep;
  // An index is created empty and written at the first sync.
  const bool is_new = !file_exists(path) || file_size(path) == 0;
  const bool is_good = is_new || read_index_file(base, path, blocks_, failure);
  Failure of_copy;
  Blocks copied;
  // As restore_index() decides it, but without writing: a good copy counts
  // unless the index is good and has more entries.
  if (read_index_file(base, index_copy_path(base.c_str()), copied, of_copy) &&
      (!is_good || copied.size() >= blocks_.size())) {
    blocks_.swap(copied);
    return true;
  }
  return is_good;
}

bool StoreReader::read(const Block &block, std::string &bytes,
                       Failure &failure) const {
  const KeepErrno keep;
  const std::string path = repository_path(base_.c_str(), block.repository_id);
  const int fd = retry(
      // Without waiting, should something have put a pipe in the file's place.
      [&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK); });
  bytes.resize(block.size);
  std::size_t done = 0;
  // As after a read: above 0, all well so far; 0, the file ended; -1, an error.
  // An empty block needs no read.
  ssize_t count = fd < 0 ? -1 : 1;
  while (count > 0 && done < bytes.size()) {
    count = retry([&] {
      return pread(fd, bytes.data() + done, bytes.size() - done,
                   static_cast<off_t>(block.offset) + static_cast<off_t>(done));
    });
    done += count > 0 ? static_cast<std::size_t>(count) : 0;
  }
  if (count < 0)
    failure = {path, "", std::strerror(errno)};
  if (count == 0)
    failure = {path, "byte " + std::to_string(block.offset), "it ends there"};
  if (fd >= 0)
    close(fd);
  return count > 0;
}

}  // namespace vek

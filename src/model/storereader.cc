#include "model/storereader.h"

#include <glib.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <utility>

#include "base/helpers.h"
#include "base/input_file.h"
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

enum class IndexState {
  good,
  bad,      // damaged, or it leads to bytes that are not there
  missing,  // or empty
  unknown,  // the system fails to say
};

IndexState fail(IndexState state, const std::string &path, std::string reason,
                Failure &failure) {
  failure = {path, "", std::move(reason)};
  return state;
}

// Whether the repository files have all the bytes to which the index leads.
IndexState check_repositories(const std::string &base,
                              const IndexSummary &summary, Failure &failure) {
  for (guint32 id = 0; id < summary.nr_stores; ++id) {
    const std::string path = repository_path(base.c_str(), id);
    const std::int64_t size = file_size(path);
    if (size < 0 && errno != ENOENT)
      return fail(IndexState::unknown, path, std::strerror(errno), failure);
    if (size < summary.block_ends[id]) {
      return fail(IndexState::bad, path,
                  "it lacks bytes to which the store's index leads", failure);
    }
  }
  return IndexState::good;
}

IndexState read_index_text(const std::string &base, const std::string &path,
                           std::string_view text, StoreReader::Blocks &blocks,
                           Failure &failure) {
  GTree *const tree_P = new_index_tree();
  IndexSummary summary;
  IndexFault fault;
  const IndexState state =
      read_index(source_of(text), tree_P, summary, fault)
          ? check_repositories(base, summary, failure)
          : fail(IndexState::bad, path, words_of(fault), failure);
  // Also after a fault, to free the nodes that were entered before it.
  for (GTreeNode *entry_P = g_tree_node_first(tree_P); entry_P != nullptr;
       entry_P = g_tree_node_next(entry_P)) {
    auto *node_P = static_cast<FileStoreNode *>(g_tree_node_value(entry_P));
    if (state == IndexState::good) {
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
  return state;
}

IndexState read_index_file(const std::string &base, const std::string &path,
                           StoreReader::Blocks &blocks, Failure &failure) {
  const Presence presence = presence_of(path);
  if (presence == Presence::missing)
    return IndexState::missing;
  if (presence == Presence::unknown)
    return fail(IndexState::unknown, path, std::strerror(errno), failure);
  std::string text;
  std::string reason;
  if (read_file(path, text, reason) != ReadResult::ok)
    return fail(IndexState::unknown, path, reason, failure);
  return text.empty() ? IndexState::missing
                      : read_index_text(base, path, text, blocks, failure);
}

}  // namespace

bool StoreReader::open(const std::string &base, Failure &failure) {
  base_ = base;
  const KeepErrno keep;
  const IndexState state =
      read_index_file(base, index_path(base.c_str()), blocks_, failure);
  if (state == IndexState::unknown)
    return false;
  // As restore_index() decides it, but without writing: a good copy counts
  // unless the index is good and has more entries.
  Failure of_copy;
  Blocks copied;
  const IndexState state_of_copy =
      read_index_file(base, index_copy_path(base.c_str()), copied, of_copy);
  if (state_of_copy == IndexState::unknown) {
    failure = of_copy;
    return false;
  }
  if (state_of_copy == IndexState::good &&
      (state == IndexState::bad || copied.size() >= blocks_.size())) {
    blocks_.swap(copied);
    return true;
  }
  return state != IndexState::bad;
}

bool StoreReader::read(const Block &block, std::string &bytes,
                       Failure &failure) const {
  const KeepErrno keep;
  const std::string path = repository_path(base_.c_str(), block.repository_id);
  std::string reason;
  const int fd = open_input(path, reason);
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
    failure = {path, "", fd < 0 ? reason : std::strerror(errno)};
  if (count == 0)
    failure = {path, "byte " + std::to_string(block.offset), "it ends there"};
  if (fd >= 0)
    close(fd);
  return count > 0;
}

}  // namespace vek

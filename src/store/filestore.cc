#include "store/filestore.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

#include "base/helpers.h"
#include "base/messages.h"
#include "base/require.h"
#include "log/log.h"
#include "store/indexformat.h"
#include "store/indexupdate.h"
#include "store/storeio.h"

// One slot for a repository file; in an unused slot both are -1.
struct FileStoreRepository {
  gint64 size;  // where the next block goes
  int fd;
};

// The first `nr_stores` slots are open. Every node's block lies in one of them,
// and ends within its `size`.
struct FileStore {
  char *name;
  guint32 nr_stores;
  FileStoreRepository stores[MAX_NR_STORES];
  // Name to FileStoreNode. Its shape is seen outside: the entries of the index
  // file stand in its post-order.
  GTree *tree;
  int idx_fd;
  GString *idx_image;  // the index file's next content, during a sync only
  gsize idx_size;      // of that content in bytes
  gsize idx_file_size;
  gboolean in_sync;
  gboolean is_index_old;  // the index file may have other content
  GSList *replaced;  // nodes that left the tree, kept for those who hold them
};

namespace {

using vek::fail;
using vek::need_memory;
using vek::open_file;

// ---- Reading the index.

// Ends the program over what the store cannot hold or be.
[[noreturn, gnu::format(printf, 2, 3)]] void refuse(const std::string &what,
                                                    const char *format, ...) {
  std::va_list values;
  va_start(values, format);
  const std::string text = what + ": " + vek::formatted_list(format, values);
  va_end(values);
  std::fprintf(stderr, "%s\n", text.c_str());
  vek::log_file.write(vek::Log::Kind::error, text);
  vek::end_run(1);
}

std::string damaged(const char *idx_path) {
  return std::string("filestore_open: damaged index file `") + idx_path + "'";
}

[[noreturn]] void report_fault(const vek::IndexFault &fault, int idx_fd,
                               const char *idx_path) {
  using Kind = vek::IndexFault::Kind;
  if (fault.kind == Kind::cannot_read)
    fail(fault.primitive, idx_fd);
  if (fault.kind == Kind::ends_early) {
    vek::check_read(fault.primitive, idx_fd, static_cast<gssize>(fault.count),
                    fault.wanted);
    refuse(damaged(idx_path), "it ends too early");
  }
  refuse(damaged(idx_path), "%s", fault.text.c_str());
}

void open_repository(FileStore *fstore, guint32 id, gint64 block_end,
                     const char *idx_path) {
  FileStoreRepository &repository = fstore->stores[id];
  const std::string path = vek::repository_path(fstore->name, id);
  repository.fd = open_file(path.c_str(), 0);
  if (repository.fd < 0)
    fail("filestore_open", path);
  repository.size = vek::length_of("filestore_open", repository.fd);
  if (block_end > repository.size) {
    refuse(damaged(idx_path),
           "it has a block up to byte %" G_GINT64_FORMAT
           " of `%s', which has %" G_GINT64_FORMAT,
           block_end, path.c_str(), repository.size);
  }
}

void load_index(FileStore *res, const char *idx_path) {
  const auto source = [res](void *buffer, gsize size) {
    // The smallest entry has 17 bytes, and about 150 in memory.
    need_memory("filestore_open", 16 * size);
    return vek::retry([=] { return read(res->idx_fd, buffer, size); });
  };
  vek::IndexSummary summary;
  vek::IndexFault fault;
  const bool complete = vek::read_index(source, res->tree, summary, fault);
  res->nr_stores = summary.nr_stores;
  g_assert(res->nr_stores <= MAX_NR_STORES);
  vek::require(summary.repository_id < MAX_NR_STORES,
               "node->repository_id < MAX_NR_STORES");
  if (!complete)
    report_fault(fault, res->idx_fd, idx_path);
  for (guint32 id = 0; id < res->nr_stores; ++id) {
    open_repository(res, id, summary.block_ends[id], idx_path);
  }
}

void create_index(FileStore *res, const char *idx_path) {
  if (res->idx_fd >= 0)
    close(res->idx_fd);
  res->idx_fd = open_file(idx_path, O_CREAT);
  if (res->idx_fd < 0)
    fail("filestore_open", idx_path);
}

// ---- Writing the index, into memory.

gboolean idx_write_func(gpointer key, gpointer value, gpointer data) {
  const auto *node = static_cast<const FileStoreNode *>(value);
  const auto *fstore = static_cast<const FileStore *>(data);
  g_assert(key);
  g_assert(node);
  g_assert(fstore);
  vek::append_index_entry(fstore->idx_image, *node);
  return FALSE;
}

// g_tree_traverse() is deprecated because a balanced tree promises no shape,
// but the order of the index file is just that shape.
void traverse(FileStore *fstore, GTraverseFunc function, GTraverseType order,
              gpointer data) {
  G_GNUC_BEGIN_IGNORE_DEPRECATIONS
  g_tree_traverse(fstore->tree, function, order, data);
  G_GNUC_END_IGNORE_DEPRECATIONS
}

// ---- Putting blocks.

FileStoreRepository &begin_repository(FileStore *fstore) {
  if (fstore->nr_stores == MAX_NR_STORES) {
    refuse("filestore_put_file", "all %d repositories of `%s' are full",
           static_cast<int>(MAX_NR_STORES), fstore->name);
  }
  FileStoreRepository &repository = fstore->stores[fstore->nr_stores];
  const std::string path =
      vek::repository_path(fstore->name, fstore->nr_stores);
  // Not truncated: what a run without a sync left there is overwritten.
  repository.fd = open_file(path.c_str(), O_CREAT);
  if (repository.fd < 0)
    fail("filestore_put_file", path);
  repository.size = 0;
  // Counted last, because exit() may write the index, which must not name a
  // missing file.
  ++fstore->nr_stores;
  return repository;
}

FileStoreRepository &repository_for(FileStore *fstore, guint32 len) {
  for (guint32 id = 0; id < fstore->nr_stores; ++id) {
    FileStoreRepository &repository = fstore->stores[id];
    if (repository.size + len <= MAX_REPOSITORY_SIZE)
      return repository;
  }
  return begin_repository(fstore);
}

gsize index_entry_size(const char *name) {
  return std::strlen(name) + 1 + 16;
}

// Enters a node in place of the one of its name, if there is one.
void enter_node(FileStore *fstore, FileStoreNode *node) {
  gpointer old_P = g_tree_lookup(fstore->tree, node->name);
  if (old_P != nullptr) {
    fstore->replaced = g_slist_prepend(fstore->replaced, old_P);
  } else {
    fstore->idx_size += index_entry_size(node->name);
  }
  g_tree_replace(fstore->tree, node->name, node);
}

// ---- The rest.

FileStore *new_store(const char *fname) {
  need_memory("filestore_open", vek::small_memory);
  auto *res = g_new0(FileStore, 1);
  res->tree = vek::new_index_tree();
  res->name = g_strdup(fname);
  res->idx_fd = -1;
  for (FileStoreRepository &repository : res->stores)
    repository = {-1, -1};
  return res;
}

FileStoreNode *find_node(FileStore *fstore, const char *fname) {
  return static_cast<FileStoreNode *>(g_tree_lookup(fstore->tree, fname));
}

gboolean fs_free_func(gpointer key, gpointer value, gpointer) {
  g_assert(key);
  g_assert(value);
  g_free(key);
  g_free(value);
  return FALSE;
}

void free_replaced(gpointer value) {
  vek::free_node(static_cast<FileStoreNode *>(value));
}

}  // namespace

FileStore *filestore_open(const char *fname) {
  g_assert(fname);
  FileStore *res = new_store(fname);
  const std::string idx_path = vek::index_path(fname);
  res->idx_fd = open_file(idx_path.c_str(), 0);
  // Only an index that is not there is none. One that cannot be opened would
  // be overwritten as a new one.
  if (res->idx_fd < 0 && errno != ENOENT)
    fail("filestore_open", idx_path);
  res->idx_fd = vek::restore_index(fname, res->idx_fd);
  const gint64 length =
      res->idx_fd < 0 ? 0 : vek::length_of("filestore_open", res->idx_fd);
  if (length > 0) {
    load_index(res, idx_path.c_str());
  } else {
    create_index(res, idx_path.c_str());
  }
  res->idx_size = static_cast<gsize>(MAX(length, 8));
  res->idx_file_size = static_cast<gsize>(length);
  res->is_index_old = TRUE;
  return res;
}

void filestore_close(FileStore *fstore) {
  g_assert(fstore);
  filestore_sync(fstore);
  // A failing close() has nothing more to lose: all is on the disk.
  for (guint32 id = 0; id < fstore->nr_stores; ++id) {
    if (fstore->stores[id].fd >= 0)
      close(fstore->stores[id].fd);
  }
  close(fstore->idx_fd);
  if (fstore->idx_image != nullptr)
    g_string_free(fstore->idx_image, TRUE);
  g_free(fstore->name);
  traverse(fstore, fs_free_func, G_PRE_ORDER, nullptr);
  g_tree_destroy(fstore->tree);
  g_slist_free_full(fstore->replaced, free_replaced);
  g_free(fstore);
}

void filestore_sync(FileStore *fstore) {
  g_assert(fstore);
  // Still set after a sync that ended the program. Then this is a destructor's
  // filestore_close(), and another try would only end it a second time.
  if (fstore->in_sync)
    return;
  // All is on the disk already, as it is.
  if (!fstore->is_index_old)
    return;
  need_memory("filestore_sync", 2 * fstore->idx_size + vek::small_memory);
  fstore->in_sync = TRUE;
  fstore->idx_image = g_string_sized_new(fstore->idx_size + 1);
  vek::append_index_head(fstore->idx_image, fstore->nr_stores,
                         static_cast<guint32>(g_tree_nnodes(fstore->tree)));
  traverse(fstore, idx_write_func, G_POST_ORDER, fstore);
  // The blocks first: an entry must not lead to bytes that are not there yet.
  for (const FileStoreRepository &repository : fstore->stores) {
    if (repository.fd >= 0)
      vek::flush(repository.fd);
  }
  vek::replace_index(fstore->name, fstore->idx_fd, fstore->idx_image);
  fstore->is_index_old = FALSE;
  fstore->idx_file_size = fstore->idx_size;
  g_string_free(fstore->idx_image, TRUE);
  fstore->idx_image = nullptr;
  fstore->in_sync = FALSE;
}

guint64 filestore_index_size(FileStore *fstore) {
  g_assert(fstore);
  return fstore->idx_size;
}

guint64 filestore_index_growth(FileStore *fstore) {
  g_assert(fstore);
  return fstore->idx_size - MIN(fstore->idx_file_size, fstore->idx_size);
}

gboolean filestore_file_exists(FileStore *fstore, const char *fname) {
  g_assert(fstore);
  g_assert(fname);
  return find_node(fstore, fname) != nullptr;
}

void filestore_put_file(FileStore *fstore, const char *fname, const void *data,
                        unsigned int len) {
  g_assert(fstore);
  g_assert(fname);
  g_assert(data);
  need_memory("filestore_put_file", vek::small_memory);
  if (len > MAX_BLOCK_SIZE)
    refuse("filestore_put_file", "a block of %u bytes is too big", len);
  FileStoreRepository &repository = repository_for(fstore, len);
  const gint64 offset = repository.size;
  vek::seek("filestore_put_file", repository.fd, offset);
  vek::write_data(repository.fd, data, len);
  repository.size += len;

  auto *node = g_new0(FileStoreNode, 1);
  node->name = g_strdup(fname);
  node->repository_id = static_cast<guint32>(&repository - fstore->stores);
  node->offset = static_cast<gint32>(offset);
  node->size = len;
  node->time = static_cast<guint32>(std::time(nullptr));
  enter_node(fstore, node);
  fstore->is_index_old = TRUE;
}

gboolean filestore_get_file(FileStore *fstore, const char *fname,
                            void **data_ptr, size_t *len_ptr) {
  g_assert(fstore);
  g_assert(fname);
  g_assert(data_ptr);
  g_assert(len_ptr);
  const FileStoreNode *node_P = find_node(fstore, fname);
  if (node_P == nullptr)
    return FALSE;
  *len_ptr = node_P->size;
  const int fd = fstore->stores[node_P->repository_id].fd;
  *data_ptr = vek::read_data(fd, node_P->offset, node_P->size);
  return TRUE;
}

const FileStoreNode *filestore_get_node(FileStore *fstore, const char *fname) {
  g_assert(fstore);
  g_assert(fname);
  return find_node(fstore, fname);
}

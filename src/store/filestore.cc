#include "store/filestore.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

#include "store/storeindex.h"

// One slot for a repository file; in an unused slot both are -1.
struct FileStoreRepository {
  gint64 size;  // where the next block goes
  int fd;
};

// Bytes of a repository file, read ahead of those who ask for their blocks: a
// run gets them mostly in the order in which they lie there.
struct FileStoreWindow {
  char *data;  // `window_size` bytes, null before the first use
  gsize length;
  gsize used;  // bytes of it that were asked for
  guint32 repository_id;
  gint64 offset;
  gint64 last_offset;  // of the block that was asked for last
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
  gboolean in_sync;
  gboolean is_index_old;  // the index file may hold something else
  FileStoreWindow window;
  GSList *replaced;  // nodes that left the tree, kept for those who hold them
};

namespace {

[[noreturn]] void fail(const char *function) {
  std::perror(function);
  std::exit(1);
}

// Makes a system call anew as long as a signal interrupts it. Leaves errno
// alone unless the call fails.
template <typename Call>
auto retry(Call call) {
  const int errno_before = errno;
  auto result = call();
  while (result == -1 && errno == EINTR)
    result = call();
  if (result != -1)
    errno = errno_before;
  return result;
}

// GLib aborts the program where it gets no memory, with what was put since the
// last sync. So it is asked only after this, which fails in the manner of a
// system call.
void need_memory(const char *function, gsize size) {
  const int errno_before = errno;
  // Volatile, or the compiler would see that nobody needs it.
  void *volatile block_P = std::malloc(size);
  if (block_P == nullptr)
    fail(function);
  std::free(block_P);
  errno = errno_before;
}

// More than the names and the node that an operation makes.
constexpr gsize small_memory = 32768;

// ---- Moving bytes. Each primitive is known by its name in the reports.

void check_read(const char *primitive, gssize count, gsize wanted) {
  if (count < 0)
    fail(primitive);
  if (static_cast<gsize>(count) == wanted)
    return;
  std::fprintf(stderr, "warning: %s read %ld bytes in stead of %ld\n",
               primitive, static_cast<long>(count), static_cast<long>(wanted));
}

void check_write(const char *primitive, gssize count, gsize wanted) {
  if (count < 0)
    fail(primitive);
  if (static_cast<gsize>(count) == wanted)
    return;
  std::fprintf(stderr, "warning: %s wrote %d bytes in stead of %d\n", primitive,
               static_cast<int>(count), static_cast<int>(wanted));
}

// The caller owns the result. What comes short is told, and read on. What the
// file does not have is 0, so that no old memory is taken for a block.
void *read_data(int fd, gsize size) {
  auto *data_P = static_cast<char *>(g_try_malloc(size));
  if (data_P == nullptr && size > 0)
    fail("read_data");
  gsize done = 0;
  gssize count = 1;
  while (done < size && count > 0) {
    count = retry([=] { return read(fd, data_P + done, size - done); });
    if (done == 0 || count < 0)
      check_read("read_data", count, size);
    done += static_cast<gsize>(count);
  }
  if (done < size)
    std::memset(data_P + done, 0, size - done);
  return data_P;
}

constexpr gint64 window_size = 65536;

// Fills the window from the block's first byte, with more the more of it was of
// use the last time. Whatever goes wrong here is left to the reading of the
// block itself.
void fill_window(FileStore *fstore, const FileStoreNode *node_P) {
  FileStoreWindow &window = fstore->window;
  if (window.data == nullptr)
    window.data = static_cast<char *>(g_try_malloc(window_size));
  const gsize length = std::min<gsize>(
      window_size, std::max<gsize>(node_P->size, 4096 + 2 * window.used));
  const int fd = fstore->stores[node_P->repository_id].fd;
  const int errno_before = errno;
  const gssize count = window.data == nullptr
                           ? 0
                           : pread(fd, window.data, length, node_P->offset);
  errno = errno_before;
  window.used = 0;
  window.length = static_cast<gsize>(MAX(count, 0));
  window.repository_id = node_P->repository_id;
  window.offset = node_P->offset;
}

// The block's bytes, if they can be had without a call of their own, or null.
// The window is filled when the block lies a little behind the last one.
const char *find_in_window(FileStore *fstore, const FileStoreNode *node_P) {
  FileStoreWindow &window = fstore->window;
  const gint64 distance = node_P->offset - window.last_offset;
  window.last_offset = node_P->offset;
  const auto holds_block = [&] {
    return window.repository_id == node_P->repository_id &&
           node_P->offset >= window.offset &&
           node_P->offset + gint64{node_P->size} <=
               window.offset + static_cast<gint64>(window.length);
  };
  if (!holds_block()) {
    if (distance < 0 || distance >= window_size || node_P->size > window_size)
      return nullptr;
    fill_window(fstore, node_P);
    if (!holds_block())
      return nullptr;
  }
  window.used += node_P->size;
  return window.data + (node_P->offset - window.offset);
}

// What falls short is told, and the rest written all the same: with a gap the
// block would be a wrong one in every later run.
void write_data(int fd, const void *data, gsize size) {
  const auto *bytes_P = static_cast<const char *>(data);
  while (size > 0) {
    const gssize count = retry([=] { return write(fd, bytes_P, size); });
    check_write("write_data", count, size);
    if (count == 0) {
      errno = EIO;
      fail("write_data");
    }
    bytes_P += count;
    size -= static_cast<gsize>(count);
  }
}

void seek(const char *function, int fd, gint64 offset) {
  if (lseek(fd, static_cast<off_t>(offset), SEEK_SET) < 0)
    fail(function);
}

int open_file(const char *path, int more_flags) {
  return retry(
      [=] { return open(path, O_RDWR | O_CLOEXEC | more_flags, 0640); });
}

gint64 length_of(const char *function, int fd) {
  struct stat status = {};
  if (fstat(fd, &status) != 0)
    fail(function);
  return status.st_size;
}

// ---- Reading the index.

[[noreturn, gnu::format(printf, 2, 3)]] void refuse_index(const char *idx_path,
                                                          const char *format,
                                                          ...) {
  std::fprintf(stderr, "filestore_open: damaged index file `%s': ", idx_path);
  std::va_list values;
  va_start(values, format);
  std::vfprintf(stderr, format, values);
  va_end(values);
  std::fputc('\n', stderr);
  std::exit(1);
}

[[noreturn]] void report_fault(const vek::IndexFault &fault,
                               const char *idx_path) {
  using Kind = vek::IndexFault::Kind;
  if (fault.kind == Kind::cannot_read)
    fail(fault.primitive);
  if (fault.kind == Kind::ends_early) {
    check_read(fault.primitive, static_cast<gssize>(fault.count), fault.wanted);
    refuse_index(idx_path, "it ends too early");
  }
  refuse_index(idx_path, "%s", fault.text.c_str());
}

std::string repository_path(const FileStore *fstore, guint32 id) {
  return std::string(fstore->name) + ".00" + std::to_string(id);
}

void open_repository(FileStore *fstore, guint32 id, gint64 block_end,
                     const char *idx_path) {
  FileStoreRepository &repository = fstore->stores[id];
  const std::string path = repository_path(fstore, id);
  repository.fd = open_file(path.c_str(), 0);
  if (repository.fd < 0)
    fail("filestore_open");
  repository.size = length_of("filestore_open", repository.fd);
  if (block_end > repository.size) {
    refuse_index(idx_path,
                 "it has a block up to byte %" G_GINT64_FORMAT
                 " of `%s', which has %" G_GINT64_FORMAT,
                 block_end, path.c_str(), repository.size);
  }
}

void load_index(FileStore *res, const char *idx_path) {
  const auto source = [res](void *buffer, gsize size) {
    // The smallest entry has 17 bytes, and about 150 in memory.
    need_memory("filestore_open", 16 * size);
    return retry([=] { return read(res->idx_fd, buffer, size); });
  };
  vek::IndexSummary summary;
  vek::IndexFault fault;
  const bool complete = vek::read_index(source, res->tree, summary, fault);
  res->nr_stores = summary.nr_stores;
  g_assert(res->nr_stores <= MAX_NR_STORES);
  const vek::IndexSummary *node = &summary;  // what the assertion calls it
  g_assert(node->repository_id < MAX_NR_STORES);
  if (!complete)
    report_fault(fault, idx_path);
  for (guint32 id = 0; id < res->nr_stores; ++id) {
    open_repository(res, id, summary.block_ends[id], idx_path);
  }
}

void create_index(FileStore *res, const char *idx_path) {
  if (res->idx_fd >= 0)
    close(res->idx_fd);
  res->idx_fd = open_file(idx_path, O_CREAT);
  if (res->idx_fd < 0)
    fail("filestore_open");
}

// ---- Writing the index: into memory, and from there by one call.

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

// Warns of a write that ended before byte `end`, unless it ended with a field.
void warn_of_cut(const GString *image, gsize end) {
  const vek::IndexField field = vek::index_field_at(image, end);
  if (end == field.start)
    return;
  check_write(field.primitive, static_cast<gssize>(end - field.start),
              field.size);
}

// The rest of a short write is written all the same: an index with a gap would
// be lost as a whole.
void write_index(int fd, const GString *image) {
  gsize done = 0;
  while (done < image->len) {
    const gssize count =
        retry([=] { return write(fd, image->str + done, image->len - done); });
    if (count == 0)
      errno = EIO;
    if (count <= 0)
      fail(vek::index_field_at(image, done).primitive);
    done += static_cast<gsize>(count);
    if (done < image->len)
      warn_of_cut(image, done);
  }
}

// Makes sure of room for the whole index before the first byte of the old one
// is overwritten. The file keeps its length. Where the file system cannot
// reserve room, the writes will tell.
void reserve_room(int fd, gsize size) {
  const int errno_before = errno;
  const int result = retry([=] {
    return fallocate(fd, FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(size));
  });
  if (result != 0 && (errno == ENOSPC || errno == EDQUOT)) {
    fail("filestore_sync");
  }
  errno = errno_before;
}

void flush(int fd) {
  if (retry([=] { return fsync(fd); }) != 0)
    fail("filestore_sync");
}

void write_image(int fd, const GString *image) {
  seek("filestore_sync", fd, 0);
  write_index(fd, image);
}

// ---- The copy of the index. To overwrite a file in place is to risk it, so a
// copy of its next content is on the disk while that is done, under a name that
// it gets when it is complete.

std::string path_while_written(const FileStore *fstore) {
  return std::string(fstore->name) + ".tmp";
}
std::string path_of_copy(const FileStore *fstore) {
  return std::string(fstore->name) + ".new";
}

// The names of the store's files, those of new repositories too.
void flush_directory(const FileStore *fstore) {
  const std::string name(fstore->name);
  const std::size_t slash = name.rfind('/');
  const std::string path =
      slash == std::string::npos ? "." : name.substr(0, slash + 1);
  const int errno_before = errno;
  const int fd =
      retry([&] { return open(path.c_str(), O_RDONLY | O_CLOEXEC); });
  // Who may not look into a directory can have nothing flushed there, and some
  // file systems flush no directory.
  if (fd < 0 && errno != EACCES)
    fail("filestore_sync");
  if (fd >= 0) {
    if (retry([=] { return fsync(fd); }) != 0 && errno != EINVAL &&
        errno != ENOTSUP) {
      fail("filestore_sync");
    }
    close(fd);
  }
  errno = errno_before;
}

// Without the right or the room to make a copy the index is overwritten all the
// same: it has been opened for that, and its own room is reserved.
bool copy_is_denied() {
  return errno == EACCES || errno == EPERM || errno == EROFS ||
         errno == ENOSPC || errno == EDQUOT;
}

// Returns whether there is a copy now.
bool save_copy(const FileStore *fstore) {
  const int errno_before = errno;
  const std::string path = path_while_written(fstore);
  const int fd = open_file(path.c_str(), O_CREAT | O_TRUNC);
  const bool has_room =
      fd >= 0 &&
      (retry([=] {
         return fallocate(fd, 0, 0, static_cast<off_t>(fstore->idx_image->len));
       }) == 0 ||
       !copy_is_denied());
  if (!has_room) {
    if (!copy_is_denied())
      fail("filestore_sync");
    if (fd >= 0) {
      close(fd);
      unlink(path.c_str());
    }
    errno = errno_before;
    return false;
  }
  write_index(fd, fstore->idx_image);
  flush(fd);
  if (close(fd) != 0 && errno != EINTR)
    fail("filestore_sync");
  if (std::rename(path.c_str(), path_of_copy(fstore).c_str()) != 0)
    fail("filestore_sync");
  flush_directory(fstore);
  errno = errno_before;
  return true;
}

// Somebody may have tidied up.
void remove_copy(const FileStore *fstore) {
  const int errno_before = errno;
  if (unlink(path_of_copy(fstore).c_str()) != 0 && errno != ENOENT)
    fail("filestore_sync");
  errno = errno_before;
}

// The number of entries of an index, or -1 if it cannot be right or leads to
// bytes that the repository files do not have.
gint64 count_entries(const FileStore *fstore, const vek::IndexSource &source) {
  GTree *tree = vek::new_index_tree();
  vek::IndexSummary summary;
  vek::IndexFault fault;
  bool is_good = vek::read_index(source, tree, summary, fault);
  for (guint32 id = 0; is_good && id < summary.nr_stores; ++id) {
    struct stat status = {};
    is_good = stat(repository_path(fstore, id).c_str(), &status) == 0 &&
              status.st_size >= summary.block_ends[id];
  }
  const gint64 nr_entries = is_good ? g_tree_nnodes(tree) : -1;
  G_GNUC_BEGIN_IGNORE_DEPRECATIONS
  g_tree_traverse(
      tree,
      [](gpointer, gpointer node_P, gpointer) -> gboolean {
        vek::free_node(static_cast<FileStoreNode *>(node_P));
        return FALSE;
      },
      G_PRE_ORDER, nullptr);
  G_GNUC_END_IGNORE_DEPRECATIONS
  g_tree_destroy(tree);
  return nr_entries;
}

gint64 count_entries(const FileStore *fstore, const GString *image) {
  gsize done = 0;
  return count_entries(fstore, [&](void *buffer, gsize size) {
    const gsize part = MIN(size, image->len - done);
    std::memcpy(buffer, image->str + done, part);
    done += part;
    return static_cast<gssize>(part);
  });
}

gint64 count_entries_of_file(const FileStore *fstore) {
  if (fstore->idx_fd < 0)
    return -1;
  seek("filestore_open", fstore->idx_fd, 0);
  const gint64 nr_entries =
      count_entries(fstore, [&](void *buffer, gsize size) {
        return retry([=] { return read(fstore->idx_fd, buffer, size); });
      });
  seek("filestore_open", fstore->idx_fd, 0);
  return nr_entries;
}

GString *read_copy(int fd) {
  const auto size = static_cast<gsize>(length_of("filestore_open", fd));
  need_memory("filestore_open", 4 * size + small_memory);
  void *data_P = read_data(fd, size);
  GString *image =
      g_string_new_len(static_cast<char *>(data_P), static_cast<gssize>(size));
  g_free(data_P);
  return image;
}

// If there is a copy, a sync was broken off: makes the index equal to it. Not
// if the copy is damaged, or if the index is good and has more entries: then
// the copy is no work of a broken sync, but was laid there. With neither of
// them good both stay.
void restore_index(FileStore *fstore, const char *idx_path) {
  const int errno_before = errno;
  const int fd = open_file(path_of_copy(fstore).c_str(), 0);
  if (fd < 0 && errno != ENOENT)
    fail("filestore_open");
  if (fd >= 0) {
    GString *image = read_copy(fd);
    close(fd);
    const gint64 nr_copied = count_entries(fstore, image);
    const gint64 nr_entries = count_entries_of_file(fstore);
    if (nr_copied >= 0 && nr_copied >= nr_entries) {
      if (fstore->idx_fd < 0)
        create_index(fstore, idx_path);
      write_image(fstore->idx_fd, image);
      if (ftruncate(fstore->idx_fd, static_cast<off_t>(image->len)) != 0)
        fail("filestore_open");
      flush(fstore->idx_fd);
    }
    g_string_free(image, TRUE);
    if (nr_copied >= 0 || nr_entries >= 0)
      remove_copy(fstore);
    if (fstore->idx_fd >= 0)
      seek("filestore_open", fstore->idx_fd, 0);
  }
  errno = errno_before;
}

// ---- Putting blocks.

// Refuses a block that the store cannot hold.
[[noreturn, gnu::format(printf, 1, 2)]] void refuse_block(const char *format,
                                                          ...) {
  std::fputs("filestore_put_file: ", stderr);
  std::va_list values;
  va_start(values, format);
  std::vfprintf(stderr, format, values);
  va_end(values);
  std::fputc('\n', stderr);
  std::exit(1);
}

FileStoreRepository &begin_repository(FileStore *fstore) {
  if (fstore->nr_stores == MAX_NR_STORES) {
    refuse_block("all %d repositories of `%s' are full",
                 static_cast<int>(MAX_NR_STORES), fstore->name);
  }
  FileStoreRepository &repository = fstore->stores[fstore->nr_stores];
  const std::string path = repository_path(fstore, fstore->nr_stores);
  // Not truncated: what a run without a sync left there is overwritten.
  repository.fd = open_file(path.c_str(), O_CREAT);
  if (repository.fd < 0)
    fail("filestore_put_file");
  repository.size = 0;
  // Counted last, because exit() may write the index: it must not name a file
  // that there is not.
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
  need_memory("filestore_open", small_memory);
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

gboolean list_func(gpointer key, gpointer, gpointer data) {
  auto *names_P = static_cast<GList **>(data);
  *names_P = g_list_prepend(*names_P, key);
  return FALSE;
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
  const std::string idx_path = std::string(fname) + ".idx";
  res->idx_fd = open_file(idx_path.c_str(), 0);
  // Only an index that is not there is none. One that cannot be opened would
  // be overwritten as a new one.
  if (res->idx_fd < 0 && errno != ENOENT)
    fail("filestore_open");
  restore_index(res, idx_path.c_str());
  const gint64 length =
      res->idx_fd < 0 ? 0 : length_of("filestore_open", res->idx_fd);
  if (length > 0) {
    load_index(res, idx_path.c_str());
  } else {
    create_index(res, idx_path.c_str());
  }
  res->idx_size = static_cast<gsize>(MAX(length, 8));
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
  g_free(fstore->window.data);
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
  fstore->in_sync = TRUE;
  need_memory("filestore_sync", 2 * fstore->idx_size + small_memory);
  fstore->idx_image = g_string_sized_new(fstore->idx_size + 1);
  vek::append_index_head(fstore->idx_image, fstore->nr_stores,
                         static_cast<guint32>(g_tree_nnodes(fstore->tree)));
  traverse(fstore, idx_write_func, G_POST_ORDER, fstore);
  // The blocks first: an entry must not lead to bytes that are not there yet.
  for (const FileStoreRepository &repository : fstore->stores) {
    if (repository.fd >= 0)
      flush(repository.fd);
  }
  reserve_room(fstore->idx_fd, fstore->idx_image->len);
  const bool has_copy = fstore->is_index_old && save_copy(fstore);
  write_image(fstore->idx_fd, fstore->idx_image);
  flush(fstore->idx_fd);
  if (has_copy)
    remove_copy(fstore);
  fstore->is_index_old = FALSE;
  g_string_free(fstore->idx_image, TRUE);
  fstore->idx_image = nullptr;
  fstore->in_sync = FALSE;
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
  need_memory("filestore_put_file", small_memory);
  if (len > MAX_BLOCK_SIZE)
    refuse_block("a block of %u bytes is too big", len);
  FileStoreRepository &repository = repository_for(fstore, len);
  const gint64 offset = repository.size;
  // It may hold old bytes of where the block goes.
  fstore->window.length = 0;
  seek("filestore_put_file", repository.fd, offset);
  write_data(repository.fd, data, len);
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
  if (const char *block_P = find_in_window(fstore, node_P)) {
    need_memory("filestore_get_file", node_P->size);
    *data_ptr = g_memdup2(block_P, node_P->size);
    return TRUE;
  }
  const int fd = fstore->stores[node_P->repository_id].fd;
  seek("filestore_get_file", fd, node_P->offset);
  *data_ptr = read_data(fd, node_P->size);
  return TRUE;
}

GList *filestore_get_filenames(FileStore *fstore) {
  g_assert(fstore);
  need_memory("filestore_get_filenames",
              static_cast<gsize>(g_tree_nnodes(fstore->tree)) * 64);
  GList *names_P = nullptr;
  traverse(fstore, list_func, G_POST_ORDER, &names_P);
  return g_list_reverse(names_P);
}

const FileStoreNode *filestore_get_node(FileStore *fstore, const char *fname) {
  g_assert(fstore);
  g_assert(fname);
  return find_node(fstore, fname);
}

#include "store/filestore.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <vector>

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
  gboolean in_sync;
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

// The caller owns the result. What could not be read is 0, so that no old
// memory is taken for a block.
void *read_data(int fd, gsize size) {
  auto *data_P = static_cast<char *>(g_malloc(size));
  const gssize count = retry([=] { return read(fd, data_P, size); });
  check_read("read_data", count, size);
  const auto done = static_cast<gsize>(count);
  if (done < size)
    std::memset(data_P + done, 0, size - done);
  return data_P;
}

// Returns whether all bytes were written.
bool write_data(int fd, const void *data, gsize size) {
  const gssize count = retry([=] { return write(fd, data, size); });
  check_write("write_data", count, size);
  return static_cast<gsize>(count) == size;
}

void seek(const char *function, int fd, gint64 offset) {
  if (lseek(fd, static_cast<off_t>(offset), SEEK_SET) < 0)
    fail(function);
}

int open_file(const char *path, int more_flags) {
  return retry(
      [=] { return open(path, O_RDWR | O_CLOEXEC | more_flags, 0640); });
}

// -1 if fstat() fails.
gint64 length_of(int fd) {
  struct stat status = {};
  return fstat(fd, &status) == 0 ? gint64{status.st_size} : -1;
}

// ---- Reading the index.

// The index file as a row of fields. It is read in large pieces, because a
// store may have a million entries; the reports are those of reading each
// field by itself, and a name byte by byte. A field that is not there whole
// ends the program.
class IndexReader {
 public:
  IndexReader(int fd, const char *path)
      : fd_(fd), path_(path), buffer_(initial_size) {}

  guint32 read_number(const char *primitive) {
    while (unread() < 4 && read_more(primitive)) {
    }
    if (unread() < 4)
      end_too_early(primitive, unread(), 4);
    const unsigned char *bytes_P = buffer_.data() + begin_;
    begin_ += 4;
    return bytes_P[0] | guint32{bytes_P[1]} << 8 | guint32{bytes_P[2]} << 16 |
           guint32{bytes_P[3]} << 24;
  }

  // The caller owns the result.
  char *read_string(const char *primitive) {
    gsize length = 0;
    for (;;) {
      const unsigned char *start_P = buffer_.data() + begin_;
      const void *end_P = std::memchr(start_P + length, 0, unread() - length);
      if (end_P != nullptr) {
        length = static_cast<gsize>(static_cast<const unsigned char *>(end_P) -
                                    start_P);
        begin_ += length + 1;
        return static_cast<char *>(g_memdup2(start_P, length + 1));
      }
      length = unread();
      if (!read_more(primitive))
        end_too_early(primitive, 0, 1);
    }
  }

  bool at_end() { return unread() == 0 && !read_more("filestore_open"); }

  [[noreturn, gnu::format(printf, 2, 3)]] void refuse(const char *format,
                                                      ...) const {
    std::fprintf(stderr, "filestore_open: damaged index file `%s': ", path_);
    std::va_list values;
    va_start(values, format);
    std::vfprintf(stderr, format, values);
    va_end(values);
    std::fputc('\n', stderr);
    std::exit(1);
  }

 private:
  static constexpr gsize initial_size = gsize{1} << 18;

  gsize unread() const { return end_ - begin_; }

  // Gets bytes behind the unread ones, which move to the front. The buffer
  // grows only when it is full of them, that is for a name of its size, never
  // for what a number in the file claims. Returns false at the end of the file.
  bool read_more(const char *primitive) {
    std::copy(buffer_.begin() + static_cast<std::ptrdiff_t>(begin_),
              buffer_.begin() + static_cast<std::ptrdiff_t>(end_),
              buffer_.begin());
    end_ -= begin_;
    begin_ = 0;
    if (end_ == buffer_.size())
      buffer_.resize(2 * buffer_.size());
    const gssize count = retry([this] {
      return read(fd_, buffer_.data() + end_, buffer_.size() - end_);
    });
    if (count < 0)
      fail(primitive);
    end_ += static_cast<gsize>(count);
    return count > 0;
  }

  [[noreturn]] void end_too_early(const char *primitive, gsize count,
                                  gsize wanted) const {
    check_read(primitive, static_cast<gssize>(count), wanted);
    refuse("it ends too early");
  }

  int fd_;
  const char *path_;
  std::vector<unsigned char> buffer_;
  gsize begin_ = 0;  // of the unread bytes in `buffer_`
  gsize end_ = 0;
};

guint32 read_unsigned(IndexReader &reader) {
  return reader.read_number("read_unsigned");
}
gint32 read_off_t(IndexReader &reader) {
  return static_cast<gint32>(reader.read_number("read_off_t"));
}
guint32 read_size_t(IndexReader &reader) {
  return reader.read_number("read_size_t");
}
guint32 read_time_t(IndexReader &reader) {
  return reader.read_number("read_time_t");
}
char *read_str(IndexReader &reader) {
  return reader.read_string("read_str");
}

// For each repository the end of its last block, as the index has it.
using BlockEnds = std::array<gint64, MAX_NR_STORES>;

// `number` counts the entries from 1, for the messages.
void read_entry(FileStore *fstore, IndexReader &reader, guint32 number,
                BlockEnds &block_ends) {
  auto *node = g_new0(FileStoreNode, 1);
  node->name = read_str(reader);
  node->repository_id = read_unsigned(reader);
  g_assert(node->repository_id < MAX_NR_STORES);
  node->offset = read_off_t(reader);
  node->size = read_size_t(reader);
  node->time = read_time_t(reader);
  if (node->repository_id >= fstore->nr_stores) {
    reader.refuse("entry %u lies in repository %u of %u", number,
                  node->repository_id, fstore->nr_stores);
  }
  if (node->offset < 0)
    reader.refuse("entry %u has no position", number);
  gint64 &block_end = block_ends[node->repository_id];
  block_end = std::max(block_end, gint64{node->offset} + node->size);

  if (g_tree_lookup(fstore->tree, node->name) != nullptr) {
    reader.refuse("entry %u has the name of another", number);
  }
  g_tree_insert(fstore->tree, node->name, node);
}

void open_repository(FileStore *fstore, guint32 id, gint64 block_end,
                     const IndexReader &reader) {
  FileStoreRepository &repository = fstore->stores[id];
  char *path_P = g_strdup_printf("%s.%03d", fstore->name, static_cast<int>(id));
  repository.fd = open_file(path_P, 0);
  if (repository.fd < 0)
    fail("filestore_open");
  repository.size = length_of(repository.fd);
  if (repository.size < 0)
    fail("filestore_open");
  if (block_end > repository.size) {
    reader.refuse("it has a block up to byte %" G_GINT64_FORMAT
                  " of `%s', which has %" G_GINT64_FORMAT,
                  block_end, path_P, repository.size);
  }
  g_free(path_P);
}

void read_index(FileStore *res, const char *idx_path) {
  IndexReader reader(res->idx_fd, idx_path);
  res->nr_stores = read_unsigned(reader);
  g_assert(res->nr_stores <= MAX_NR_STORES);
  BlockEnds block_ends{};
  const guint32 nr_entries = read_unsigned(reader);
  for (guint32 nr_read = 0; nr_read < nr_entries; ++nr_read) {
    read_entry(res, reader, nr_read + 1, block_ends);
  }
  // Entries are never removed, so that no sync leaves bytes behind its own.
  if (!reader.at_end())
    reader.refuse("it has bytes behind its last entry");
  for (guint32 id = 0; id < res->nr_stores; ++id) {
    open_repository(res, id, block_ends[id], reader);
  }
}

void create_index(FileStore *res, const char *idx_path) {
  if (res->idx_fd >= 0)
    close(res->idx_fd);
  res->idx_fd = open_file(idx_path, O_CREAT);
  if (res->idx_fd < 0)
    fail("filestore_open");
}

// ---- Writing the index: into memory, in the format of the file, and from
// there by one call.

void write_number(GString *out, guint32 value) {
  const char bytes[4] = {
      static_cast<char>(value & 0xFF), static_cast<char>(value >> 8 & 0xFF),
      static_cast<char>(value >> 16 & 0xFF), static_cast<char>(value >> 24)};
  g_string_append_len(out, bytes, sizeof bytes);
}

void write_unsigned(GString *out, guint32 value) {
  write_number(out, value);
}
void write_off_t(GString *out, gint32 value) {
  write_number(out, static_cast<guint32>(value));
}
void write_size_t(GString *out, guint32 value) {
  write_number(out, value);
}
void write_time_t(GString *out, guint32 value) {
  write_number(out, value);
}
void write_str(GString *out, const char *text) {
  g_string_append_len(out, text, static_cast<gssize>(std::strlen(text) + 1));
}

gboolean idx_write_func(gpointer key, gpointer value, gpointer data) {
  const auto *node = static_cast<const FileStoreNode *>(value);
  const auto *fstore = static_cast<const FileStore *>(data);
  g_assert(key);
  g_assert(node);
  g_assert(fstore);
  write_str(fstore->idx_image, node->name);
  write_unsigned(fstore->idx_image, node->repository_id);
  write_off_t(fstore->idx_image, node->offset);
  write_size_t(fstore->idx_image, node->size);
  write_time_t(fstore->idx_image, node->time);
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

// The field of the index that byte `position` of it belongs to.
struct Field {
  const char *primitive;
  gsize start;
  gsize size;
};

Field field_at(const GString *image, gsize position) {
  static constexpr std::array<const char *, 4> numbers = {
      "write_unsigned", "write_off_t", "write_size_t", "write_time_t"};
  if (position < 8)
    return {"write_unsigned", position / 4 * 4, 4};
  gsize start = 8;
  for (;;) {
    const gsize name_size = std::strlen(image->str + start) + 1;
    if (position < start + name_size)
      return {"write_str", start, name_size};
    start += name_size;
    for (const char *primitive : numbers) {
      if (position < start + 4)
        return {primitive, start, 4};
      start += 4;
    }
  }
}

// Warns of a write that ended before byte `end`, unless it ended with a field.
void warn_of_cut(const GString *image, gsize end) {
  const Field field = field_at(image, end);
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
      fail(field_at(image, done).primitive);
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

// ---- Putting blocks.

// A block that was written short counts as written, so the file must reach as
// far as its entry says: else the next filestore_open() would refuse the index.
void extend_to(int fd, gint64 size) {
  if (length_of(fd) >= size)
    return;
  if (ftruncate(fd, static_cast<off_t>(size)) != 0)
    fail("filestore_put_file");
}

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
  char *path_P = g_strdup_printf("%s.%03d", fstore->name,
                                 static_cast<int>(fstore->nr_stores));
  // Not truncated: what a run without a sync left there is overwritten.
  repository.fd = open_file(path_P, O_CREAT);
  if (repository.fd < 0)
    fail("filestore_put_file");
  g_free(path_P);
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

// Enters a node in place of the one of its name, if there is one.
void enter_node(FileStore *fstore, FileStoreNode *node) {
  gpointer old_P = g_tree_lookup(fstore->tree, node->name);
  if (old_P != nullptr) {
    fstore->replaced = g_slist_prepend(fstore->replaced, old_P);
  }
  g_tree_replace(fstore->tree, node->name, node);
}

// ---- The rest.

gint compare_names(gconstpointer left, gconstpointer right) {
  return std::strcmp(static_cast<const char *>(left),
                     static_cast<const char *>(right));
}

FileStore *new_store(const char *fname) {
  auto *res = g_new0(FileStore, 1);
  res->tree = g_tree_new(compare_names);
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
  fs_free_func(static_cast<FileStoreNode *>(value)->name, value, nullptr);
}

}  // namespace

FileStore *filestore_open(const char *fname) {
  g_assert(fname);
  FileStore *res = new_store(fname);
  char *idx_path_P = g_strdup_printf("%s.idx", fname);
  res->idx_fd = open_file(idx_path_P, 0);
  if (res->idx_fd >= 0 && length_of(res->idx_fd) > 0) {
    read_index(res, idx_path_P);
  } else {
    create_index(res, idx_path_P);
  }
  g_free(idx_path_P);
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
  fstore->in_sync = TRUE;
  fstore->idx_image = g_string_new(nullptr);
  write_unsigned(fstore->idx_image, fstore->nr_stores);
  write_unsigned(fstore->idx_image,
                 static_cast<guint32>(g_tree_nnodes(fstore->tree)));
  traverse(fstore, idx_write_func, G_POST_ORDER, fstore);
  reserve_room(fstore->idx_fd, fstore->idx_image->len);
  seek("filestore_sync", fstore->idx_fd, 0);
  write_index(fstore->idx_fd, fstore->idx_image);
  g_string_free(fstore->idx_image, TRUE);
  fstore->idx_image = nullptr;
  flush(fstore->idx_fd);
  for (const FileStoreRepository &repository : fstore->stores) {
    if (repository.fd >= 0)
      flush(repository.fd);
  }
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
  if (len > MAX_BLOCK_SIZE)
    refuse_block("a block of %u bytes is too big", len);
  FileStoreRepository &repository = repository_for(fstore, len);
  const gint64 offset = repository.size;
  seek("filestore_put_file", repository.fd, offset);
  const bool complete = write_data(repository.fd, data, len);
  repository.size += len;
  if (!complete)
    extend_to(repository.fd, repository.size);

  auto *node = g_new0(FileStoreNode, 1);
  node->name = g_strdup(fname);
  node->repository_id = static_cast<guint32>(&repository - fstore->stores);
  node->offset = static_cast<gint32>(offset);
  node->size = len;
  node->time = static_cast<guint32>(std::time(nullptr));
  enter_node(fstore, node);
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
  const int fd = fstore->stores[node_P->repository_id].fd;
  *len_ptr = node_P->size;
  seek("filestore_get_file", fd, node_P->offset);
  *data_ptr = read_data(fd, node_P->size);
  return TRUE;
}

GList *filestore_get_filenames(FileStore *fstore) {
  g_assert(fstore);
  GList *names_P = nullptr;
  traverse(fstore, list_func, G_POST_ORDER, &names_P);
  return g_list_reverse(names_P);
}

const FileStoreNode *filestore_get_node(FileStore *fstore, const char *fname) {
  g_assert(fstore);
  g_assert(fname);
  return find_node(fstore, fname);
}

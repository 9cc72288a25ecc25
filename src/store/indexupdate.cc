#include "store/indexupdate.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "base/helpers.h"
#include "store/indexformat.h"
#include "store/storeio.h"

namespace vek {
namespace {

// ---- Writing an index from memory.

// Warns of a write that ended before byte `end`, unless it ended with a field.
void warn_of_cut(int fd, const GString *image, gsize end) {
  const IndexField field = index_field_at(image, end);
  if (end == field.start)
    return;
  check_write(field.primitive, fd, static_cast<gssize>(end - field.start),
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
      fail(index_field_at(image, done).primitive, fd);
    done += static_cast<gsize>(count);
    if (done < image->len)
      warn_of_cut(fd, image, done);
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
  // Any other failure says that room cannot be reserved here, not that there is
  // none.
  if (result != 0 && (errno == ENOSPC || errno == EDQUOT)) {
    fail("filestore_sync", fd);
  }
  errno = errno_before;
}

void write_image(int fd, const GString *image) {
  seek("filestore_sync", fd, 0);
  write_index(fd, image);
}

// ---- The copy.

std::string path_while_written(const char *base) {
  return std::string(base) + ".tmp";
}

// Puts the directory on the disk: with it the names of the store's files, those
// of new repositories too.
void flush_directory(const char *base) {
  const std::string name(base);
  const std::size_t slash = name.rfind('/');
  const std::string path =
      slash == std::string::npos ? "." : name.substr(0, slash + 1);
  const int errno_before = errno;
  const int fd =
      retry([&] { return open(path.c_str(), O_RDONLY | O_CLOEXEC); });
  // A directory that may not be read cannot be flushed, and some file systems
  // flush none.
  if (fd < 0 && errno != EACCES)
    fail("filestore_sync", path);
  if (fd >= 0) {
    if (retry([=] { return fsync(fd); }) != 0 && errno != EINVAL &&
        errno != ENOTSUP) {
      fail("filestore_sync", path);
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
bool save_copy(const char *base, const GString *image) {
  const int errno_before = errno;
  const std::string path = path_while_written(base);
  // What a killed run has left under this name is of no use: a copy counts only
  // under its final name.
  const int fd = open_file(path.c_str(), O_CREAT | O_TRUNC);
  const bool has_room =
      fd >= 0 && (retry([=] {
                    return fallocate(fd, 0, 0, static_cast<off_t>(image->len));
                  }) == 0 ||
                  !copy_is_denied());
  if (!has_room) {
    if (!copy_is_denied())
      fail("filestore_sync", path);
    if (fd >= 0) {
      close(fd);
      unlink(path.c_str());
    }
    errno = errno_before;
    return false;
  }
  write_index(fd, image);
  // The content must be on the disk before the name: after a crash a file with
  // the name of a copy is a complete one.
  flush(fd);
  if (close(fd) != 0 && errno != EINTR)
    fail("filestore_sync", path);
  if (std::rename(path.c_str(), index_copy_path(base).c_str()) != 0)
    fail("filestore_sync", path);
  // And the name before the index is overwritten, or a crash could leave
  // neither.
  flush_directory(base);
  errno = errno_before;
  return true;
}

// The copy may have been removed by hand; that is no failure.
void remove_copy(const char *base) {
  const int errno_before = errno;
  if (unlink(index_copy_path(base).c_str()) != 0 && errno != ENOENT)
    fail("filestore_sync", index_copy_path(base));
  errno = errno_before;
}

GString *read_copy(int fd) {
  const auto size = static_cast<gsize>(length_of("filestore_open", fd));
  // For the bytes, their copy as a string, and the nodes with their names.
  need_memory("filestore_open", 4 * size + small_memory);
  void *data_P = read_data(fd, 0, size);
  GString *image =
      g_string_new_len(static_cast<char *>(data_P), static_cast<gssize>(size));
  g_free(data_P);
  return image;
}

// ---- Which of index and copy counts.

// The number of entries of an index, or -1 if it cannot be right or leads to
// bytes that the repository files do not have.
gint64 count_entries(const char *base, const IndexSource &source) {
  GTree *tree = new_index_tree();
  IndexSummary summary;
  IndexFault fault;
  bool is_good = read_index(source, tree, summary, fault);
  for (guint32 id = 0; is_good && id < summary.nr_stores; ++id) {
    struct stat status = {};
    // An index that leads beyond the bytes of its repositories was not written
    // for them.
    is_good = stat(repository_path(base, id).c_str(), &status) == 0 &&
              status.st_size >= summary.block_ends[id];
  }
  const gint64 nr_entries = is_good ? g_tree_nnodes(tree) : -1;
  G_GNUC_BEGIN_IGNORE_DEPRECATIONS
  g_tree_traverse(
      tree,
      [](gpointer, gpointer node_P, gpointer) -> gboolean {
        free_node(static_cast<FileStoreNode *>(node_P));
        return FALSE;
      },
      G_PRE_ORDER, nullptr);
  G_GNUC_END_IGNORE_DEPRECATIONS
  g_tree_destroy(tree);
  return nr_entries;
}

gint64 count_entries_of_copy(const char *base, const GString *image) {
  gsize done = 0;
  return count_entries(base, [&](void *buffer, gsize size) {
    const gsize part = MIN(size, image->len - done);
    std::memcpy(buffer, image->str + done, part);
    done += part;
    return static_cast<gssize>(part);
  });
}

gint64 count_entries_of_file(const char *base, int idx_fd) {
  if (idx_fd < 0)
    return -1;
  seek("filestore_open", idx_fd, 0);
  const gint64 nr_entries = count_entries(base, [=](void *buffer, gsize size) {
    return retry([=] { return read(idx_fd, buffer, size); });
  });
  seek("filestore_open", idx_fd, 0);
  return nr_entries;
}

void take_copy(int idx_fd, const GString *image) {
  write_image(idx_fd, image);
  // The index may be longer than the copy, with damaged bytes behind.
  if (ftruncate(idx_fd, static_cast<off_t>(image->len)) != 0)
    fail("filestore_open", idx_fd);
  flush(idx_fd);
}

}  // namespace

int restore_index(const char *base, int idx_fd) {
  const int errno_before = errno;
  const int fd = open_file(index_copy_path(base).c_str(), 0);
  if (fd < 0 && errno != ENOENT)
    fail("filestore_open", index_copy_path(base));
  if (fd >= 0) {
    GString *image = read_copy(fd);
    close(fd);
    const gint64 nr_copied = count_entries_of_copy(base, image);
    const gint64 nr_entries = count_entries_of_file(base, idx_fd);
    // Entries are only ever added, so of two good ones the longer is the later.
    // Equal ones may differ in the places of blocks: the copy is the later
    // then, too, since it is made first and removed last.
    if (nr_copied >= 0 && nr_copied >= nr_entries) {
      if (idx_fd < 0)
        idx_fd = open_file(index_path(base).c_str(), O_CREAT);
      if (idx_fd < 0)
        fail("filestore_open", index_path(base));
      take_copy(idx_fd, image);
    }
    g_string_free(image, TRUE);
    // With neither good the copy stays, as material for a repair.
    if (nr_copied >= 0 || nr_entries >= 0)
      remove_copy(base);
    if (idx_fd >= 0)
      seek("filestore_open", idx_fd, 0);
  }
  errno = errno_before;
  return idx_fd;
}

void replace_index(const char *base, int idx_fd, const GString *image) {
  // Room first, then the copy, then the index: at each point there is a whole
  // index on the disk, the old one or the new one.
  reserve_room(idx_fd, image->len);
  const bool has_copy = save_copy(base, image);
  write_image(idx_fd, image);
  flush(idx_fd);
  if (has_copy)
    remove_copy(base);
}

}  // namespace vek

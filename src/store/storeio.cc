#include "store/storeio.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/helpers.h"
#include "log/log.h"

namespace vek {

void fail(const char *function) {
  const int code = errno;
  std::perror(function);
  log_file.write(Log::Kind::error,
                 std::string(function) + ": " + std::strerror(code));
  if (code == ENOSPC) {
    errno = code;
    abort_run();
  }
  std::exit(1);
}

void need_memory(const char *function, gsize size) {
  const int errno_before = errno;
  // Volatile, or the compiler would remove a block that is never used, and
  // malloc() with it.
  void *volatile block_P = std::malloc(size);
  if (block_P == nullptr)
    fail(function);
  std::free(block_P);
  errno = errno_before;
}

int open_file(const char *path, int more_flags) {
  return retry(
      // A child process must not inherit the store's files, hence O_CLOEXEC.
      [=] { return open(path, O_RDWR | O_CLOEXEC | more_flags, 0640); });
}

gint64 length_of(const char *function, int fd) {
  struct stat status = {};
  if (fstat(fd, &status) != 0)
    fail(function);
  return status.st_size;
}

void seek(const char *function, int fd, gint64 offset) {
  if (lseek(fd, static_cast<off_t>(offset), SEEK_SET) < 0)
    fail(function);
}

void flush(int fd) {
  if (retry([=] { return fsync(fd); }) != 0)
    fail("filestore_sync");
}

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

void *read_data(int fd, gint64 offset, gsize size) {
  auto *data_P = static_cast<char *>(g_try_malloc(size));
  if (data_P == nullptr && size > 0)
    fail("read_data");
  gsize done = 0;
  gssize count = 1;
  while (done < size && count > 0) {
    count = retry([=] {
      return pread(fd, data_P + done, size - done,
                   offset + static_cast<gint64>(done));
    });
    // A short read is reported once, at the first part.
    if (done == 0 || count < 0)
      check_read("read_data", count, size);
    done += static_cast<gsize>(count);
  }
  if (done < size)
    std::memset(data_P + done, 0, size - done);
  return data_P;
}

void write_data(int fd, const void *data, gsize size) {
  const auto *bytes_P = static_cast<const char *>(data);
  while (size > 0) {
    const gssize count = retry([=] { return write(fd, bytes_P, size); });
    check_write("write_data", count, size);
    // A write that moves nothing and reports nothing would be repeated for
    // ever.
    if (count == 0) {
      errno = EIO;
      fail("write_data");
    }
    bytes_P += count;
    size -= static_cast<gsize>(count);
  }
}

}  // namespace vek

#include "store/storeio.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/helpers.h"
#include "log/log.h"

namespace vek {

namespace {

// Asked of the system, so that no part of the store has to carry it along.
std::string path_of(int fd) {
  const KeepErrno keep;
  std::array<char, 4096> path = {};
  const std::string link = "/proc/self/fd/" + std::to_string(fd);
  const ssize_t length = readlink(link.c_str(), path.data(), path.size());
  return {path.data(), static_cast<std::size_t>(std::max<ssize_t>(length, 0))};
}

bool is_other_than_a_file(const std::string &path) {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

void name_file(const std::string &path, const std::string &what) {
  if (!path.empty())
    log_always(1, "file " + path + ": " + what);
}

void warn_of_count(const char *primitive, int fd, const std::string &text) {
  name_file(path_of(fd), std::string(primitive) + " fell short");
  std::fprintf(stderr, "warning: %s\n", text.c_str());
  log_file.write(Log::Kind::warning, text);
}

}  // namespace

void fail(const char *function, const std::string &path) {
  const int code = errno;
  name_file(path, is_other_than_a_file(path) ? "no regular file"
                                             : std::strerror(code));
  errno = code;
  std::perror(function);
  log_file.write(Log::Kind::error,
                 std::string(function) + ": " + std::strerror(code));
  if (code == ENOSPC)
    abort_run(code);
  end_run(1);
}

void fail(const char *function, int fd) {
  fail(function, path_of(fd));
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
  const int fd = retry([=] {
    // A child process must not inherit the store's files, hence O_CLOEXEC.
    return open(path, O_RDWR | O_NONBLOCK | O_NOCTTY | O_CLOEXEC | more_flags,
                0640);
  });
  struct stat status = {};
  if (fd < 0 || fstat(fd, &status) != 0 || S_ISREG(status.st_mode))
    return fd;
  // Positions mean nothing in a pipe.
  close(fd);
  errno = EINVAL;
  return -1;
}

gint64 length_of(const char *function, int fd) {
  struct stat status = {};
  if (fstat(fd, &status) != 0)
    fail(function, fd);
  return status.st_size;
}

void seek(const char *function, int fd, gint64 offset) {
  if (lseek(fd, static_cast<off_t>(offset), SEEK_SET) < 0)
    fail(function, fd);
}

void flush(int fd) {
  if (retry([=] { return fsync(fd); }) != 0)
    fail("filestore_sync", fd);
}

void check_read(const char *primitive, int fd, gssize count, gsize wanted) {
  if (count < 0)
    fail(primitive, fd);
  if (static_cast<gsize>(count) == wanted)
    return;
  warn_of_count(primitive, fd,
                formatted("%s read %ld bytes in stead of %ld", primitive,
                          static_cast<long>(count), static_cast<long>(wanted)));
}

void check_write(const char *primitive, int fd, gssize count, gsize wanted) {
  if (count < 0)
    fail(primitive, fd);
  if (static_cast<gsize>(count) == wanted)
    return;
  warn_of_count(primitive, fd,
                formatted("%s wrote %d bytes in stead of %d", primitive,
                          static_cast<int>(count), static_cast<int>(wanted)));
}

void *read_data(int fd, gint64 offset, gsize size) {
  auto *data_P = static_cast<char *>(g_try_malloc(size));
  if (data_P == nullptr && size > 0)
    fail("read_data", fd);
  gsize done = 0;
  gssize count = 1;
  while (done < size && count > 0) {
    count = retry([=] {
      return pread(fd, data_P + done, size - done,
                   offset + static_cast<gint64>(done));
    });
    // A short read is reported once, at the first part.
    if (done == 0 || count < 0)
      check_read("read_data", fd, count, size);
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
    check_write("write_data", fd, count, size);
    // A write that moves nothing and reports nothing would be repeated for
    // ever.
    if (count == 0) {
      errno = EIO;
      fail("write_data", fd);
    }
    bytes_P += count;
    size -= static_cast<gsize>(count);
  }
}

}  // namespace vek

#include "base/input_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstring>

#include "base/helpers.h"

namespace vek {
namespace {

// Closes the file, whose state was found to be of no use.
void drop(int &fd, std::string &reason, int code, const std::string &text) {
  close(fd);
  fd = -1;
  reason = text;
  errno = code;
}

// Fills `status` too. Sets `is_open` if the system has opened it, whatever it
// is.
int open_file(const std::string &path, struct stat &status, bool &is_open,
              std::string &reason) {
  int fd = retry([&] {
    return open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  });
  is_open = fd >= 0;
  if (!is_open) {
    reason = std::strerror(errno);
  } else if (fstat(fd, &status) != 0) {
    const int code = errno;
    drop(fd, reason, code, std::strerror(code));
  } else if (!S_ISREG(status.st_mode)) {
    drop(fd, reason, S_ISDIR(status.st_mode) ? EISDIR : EINVAL,
         "no regular file");
  }
  return fd;
}

// False if the system fails to read on. Stops behind byte `largest`.
bool read_all(int fd, std::size_t room, std::uint64_t largest,
              std::string &content) {
  ssize_t count = 0;
  std::size_t used = 0;
  do {
    if (used == content.size())
      content.resize(used + room);
    count = retry(
        [&] { return read(fd, content.data() + used, content.size() - used); });
    if (count > 0)
      used += static_cast<std::size_t>(count);
  } while (count > 0 && used <= largest);
  const KeepErrno keep;
  content.resize(used);
  return count >= 0;
}

}  // namespace

int open_input(const std::string &path, std::string &reason) {
  struct stat status = {};
  bool is_open = false;
  return open_file(path, status, is_open, reason);
}

ReadResult read_file(const std::string &path, std::string &content,
                     std::string &reason, std::uint64_t largest) {
  content.clear();
  struct stat status = {};
  bool is_open = false;
  int fd = open_file(path, status, is_open, reason);
  if (fd < 0)
    return is_open ? ReadResult::read_error : ReadResult::cannot_open;
  std::uint64_t size = static_cast<std::uint64_t>(status.st_size);
  if (size <= largest) {
    // One more than the file has, so that the read that finds the end needs no
    // larger buffer. The size is a hint: the file may grow, and one in /proc
    // claims to be empty.
    const std::size_t room = size == 0 ? 65536 : size + 1;
    if (!read_all(fd, room, largest, content)) {
      const int code = errno;
      drop(fd, reason, code, std::strerror(code));
      return ReadResult::read_error;
    }
    size = content.size();
  }
  if (size > largest) {
    content.clear();
    drop(fd, reason, EFBIG,
         "larger than " + std::to_string(largest) + " bytes");
    return ReadResult::read_error;
  }
  const KeepErrno keep;
  close(fd);
  return ReadResult::ok;
}

ReadResult read_file(const std::string &path, std::string &content) {
  std::string reason;
  return read_file(path, content, reason);
}

}  // namespace vek

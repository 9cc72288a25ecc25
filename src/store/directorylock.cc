#include "store/directorylock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <sstream>

#include "base/helpers.h"
#include "base/input_file.h"

namespace vek {
namespace {

// From /proc/locks, whose lines are
//   1: FLOCK  ADVISORY  WRITE 1234 fe:00:5678 0 EOF
// with the process, the device in hexadecimal, and the inode.
pid_t find_holder(int fd) {
  struct stat status = {};
  std::string text;
  if (fstat(fd, &status) != 0 ||
      read_file("/proc/locks", text) != ReadResult::ok) {
    return 0;
  }
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    int process = 0;
    unsigned major_number = 0;
    unsigned minor_number = 0;
    unsigned long inode = 0;
    if (std::sscanf(line.c_str(), "%*d: FLOCK %*s %*s %d %x:%x:%lu", &process,
                    &major_number, &minor_number, &inode) == 4 &&
        inode == status.st_ino && major_number == major(status.st_dev) &&
        minor_number == minor(status.st_dev)) {
      return process > 0 ? process : 0;
    }
  }
  return 0;
}

}  // namespace

DirectoryLock::Outcome DirectoryLock::take(const std::string &directory,
                                           Mode mode) {
  const int errno_before = errno;
  Outcome outcome = Outcome::failed;
  do {
    outcome = lock_open_directory(directory, mode);
  } while (outcome == Outcome::locked && !has_name(directory));
  if (outcome != Outcome::failed)
    errno = errno_before;
  return outcome;
}

DirectoryLock::Outcome DirectoryLock::lock_open_directory(
    const std::string &directory, Mode mode) {
  release();
  fd_ = retry([&] {
    return ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  });
  if (fd_ < 0)
    return Outcome::failed;
  const int operation = mode == Mode::shared ? LOCK_SH : LOCK_EX;
  if (retry([&] { return flock(fd_, operation | LOCK_NB); }) != 0) {
    const int code = errno;
    if (code == EWOULDBLOCK)
      holder_ = find_holder(fd_);
    release();
    errno = code;
    return code == EWOULDBLOCK ? Outcome::held : Outcome::failed;
  }
  return Outcome::locked;
}

bool DirectoryLock::has_name(const std::string &directory) const {
  const KeepErrno keep;
  struct stat locked = {};
  struct stat named = {};
  if (fd_ < 0 || fstat(fd_, &locked) != 0)
    return true;
  if (stat(directory.c_str(), &named) != 0)
    return errno != ENOENT && errno != ENOTDIR;
  return locked.st_ino == named.st_ino && locked.st_dev == named.st_dev;
}

void DirectoryLock::release() {
  if (fd_ >= 0)
    ::close(fd_);
  fd_ = -1;
}

}  // namespace vek

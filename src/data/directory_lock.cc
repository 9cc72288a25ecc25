#include "data/directory_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/helpers.h"

namespace vek::keeping {

DirectoryLock::~DirectoryLock() {
  if (fd_ >= 0)
    close(fd_);
}

bool DirectoryLock::take(const std::string &directory, LockKind kind,
                         std::string &warning, Failure &failure) {
  fd_ = retry([&] {
    return open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  });
  if (fd_ < 0) {
    failure = {directory, "", std::strerror(errno)};
    return false;
  }
  const int how = kind == LockKind::shared ? LOCK_SH : LOCK_EX;
  if (retry([&] { return flock(fd_, how | LOCK_NB); }) != 0) {
    if (errno == EWOULDBLOCK) {
      failure = {directory, "", "somebody else is using it"};
      return false;
    }
    warning = directory + ": it cannot be locked: " + std::strerror(errno);
  }
  // Another directory may have taken its place since it was opened.
  struct stat locked = {};
  struct stat named = {};
  if (fstat(fd_, &locked) != 0 || stat(directory.c_str(), &named) != 0) {
    failure = {directory, "", std::strerror(errno)};
    return false;
  }
  if (locked.st_ino != named.st_ino || locked.st_dev != named.st_dev) {
    failure = {directory, "", "it is being replaced"};
    return false;
  }
  return true;
}

}  // namespace vek::keeping

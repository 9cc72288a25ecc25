#include "data/new_directory.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

#include "base/helpers.h"

namespace vek::keeping {

bool NewDirectory::make(Failure &failure) {
  std::string warning;
  struct stat status = {};
  if (lstat(path_.c_str(), &status) == 0) {
    DirectoryLock old;
    if (!take_lock(old, path_, DirectoryLock::Mode::exclusive, warning,
                   failure) ||
        !remove_(path_, failure)) {
      return false;
    }
  }
  if (mkdir(path_.c_str(), 0700) != 0)
    return fails(path_, failure);
  return take_lock(lock_, path_, DirectoryLock::Mode::exclusive, warning,
                   failure);
}

// One call for the whole file system, since an fsync() for each file would take
// seconds where there are many classes.
bool NewDirectory::finish(const struct stat &like, Failure &failure) const {
  const int fd = retry([this] {
    return open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  });
  if (fd < 0)
    return fails(path_, failure);
  bool ok = make_alike(fd, like, path_, failure);
  if (ok && retry([=] { return syncfs(fd); }) != 0)
    ok = fails(path_, failure);
  close(fd);
  return ok;
}

bool NewDirectory::put_at(const std::string &path, Failure &failure) const {
  if (std::rename(path_.c_str(), path.c_str()) != 0)
    return fails(path, failure);
  return sync_directory(parent_of(path), failure);
}

void NewDirectory::give_up() const {
  Failure ignored;
  remove_(path_, ignored);
}

bool is_free(const std::string &path, Failure &failure) {
  struct stat status = {};
  if (lstat(path.c_str(), &status) != 0)
    return true;
  failure = {path, "", "it is there already"};
  return false;
}

std::string without_slashes(std::string path) {
  while (path.size() > 1 && path.back() == '/')
    path.pop_back();
  return path;
}

}  // namespace vek::keeping

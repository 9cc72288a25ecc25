#include "data/directory_lock.h"

#include <cerrno>
#include <cstring>

namespace vek::keeping {

bool take_lock(DirectoryLock &lock, const std::string &directory,
               DirectoryLock::Mode mode, std::string &warning,
               Failure &failure) {
  switch (lock.take(directory, mode)) {
    case DirectoryLock::Outcome::locked:
      return true;
    case DirectoryLock::Outcome::held:
      failure = {
          directory, "",
          lock.holder() == 0
              ? "another process is using it"
              : "process " + std::to_string(lock.holder()) + " is using it"};
      return false;
    case DirectoryLock::Outcome::failed:
      break;
  }
  const bool has_no_locks = errno == ENOLCK || errno == ENOSYS ||
                            errno == EOPNOTSUPP || errno == EINVAL;
  if (!has_no_locks) {
    failure = {directory, "", std::strerror(errno)};
    return false;
  }
  warning = directory + ": it cannot be locked: " + std::strerror(errno);
  return true;
}

}  // namespace vek::keeping

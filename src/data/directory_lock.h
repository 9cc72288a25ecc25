// A data directory in one's own hands.
#ifndef VEK_DATA_DIRECTORY_LOCK_H_
#define VEK_DATA_DIRECTORY_LOCK_H_

#include <string>

#include "base/failure.h"

namespace vek::keeping {

// Whoever only reads shares the directory with other readers.
enum class LockKind { shared, exclusive };

// Held until it is destroyed, or until the process ends in whatever way.
class DirectoryLock {
 public:
  DirectoryLock() = default;
  ~DirectoryLock();
  DirectoryLock(const DirectoryLock &) = delete;
  DirectoryLock &operator=(const DirectoryLock &) = delete;

  // Waits for nobody. False, with `failure` filled in, if the directory cannot
  // be opened or somebody else has it. Where the file system has no locks,
  // `warning` says so, and it is as if there were one.
  bool take(const std::string &directory, LockKind kind, std::string &warning,
            Failure &failure);

 private:
  int fd_ = -1;
};

}  // namespace vek::keeping

#endif  // VEK_DATA_DIRECTORY_LOCK_H_

// A data directory in one's own hands, with words for when it is in others'.
#ifndef VEK_DATA_DIRECTORY_LOCK_H_
#define VEK_DATA_DIRECTORY_LOCK_H_

#include <string>

#include "base/failure.h"
#include "store/directorylock.h"

namespace vek::keeping {

// Waits for nobody. False, with `failure` filled in, if the directory cannot be
// opened or another process has it. Where the file system has no locks,
// `warning` says so, and it is as if there were one.
bool take_lock(DirectoryLock &lock, const std::string &directory,
               DirectoryLock::Mode mode, std::string &warning,
               Failure &failure);

}  // namespace vek::keeping

#endif  // VEK_DATA_DIRECTORY_LOCK_H_

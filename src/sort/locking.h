// A directory in one's own hands, after some time of waiting for it.
#ifndef VEK_SORT_LOCKING_H_
#define VEK_SORT_LOCKING_H_

#include <chrono>
#include <string>

#include "base/failure.h"
#include "store/directorylock.h"

namespace vek::sorting {

enum class Locked { yes, in_use, failed };

// Whenever it is not `yes`, `failure` says who has it, or what is wrong. Where
// the file system has no locks it is as if there were one.
Locked take_lock(DirectoryLock &lock, const std::string &directory,
                 DirectoryLock::Mode mode, std::chrono::seconds patience,
                 Failure &failure);

}  // namespace vek::sorting

#endif  // VEK_SORT_LOCKING_H_

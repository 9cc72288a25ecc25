#include "sort/locking.h"

#include <thread>

#include "data/directory_lock.h"
#include "sort/signals.h"

namespace vek::sorting {

Locked take_lock(DirectoryLock &lock, const std::string &directory,
                 DirectoryLock::Mode mode, std::chrono::seconds patience,
                 Failure &failure) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point end = Clock::now() + patience;
  while (true) {
    const DirectoryLock::Outcome outcome = lock.take(directory, mode);
    if (outcome == DirectoryLock::Outcome::locked)
      return Locked::yes;
    std::string warning;
    // It has the words; and by now it may be free.
    if (keeping::take_lock(lock, directory, mode, warning, failure))
      return Locked::yes;
    if (outcome == DirectoryLock::Outcome::failed)
      return Locked::failed;
    if (Clock::now() >= end || stop_signal() != 0)
      return Locked::in_use;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
}

}  // namespace vek::sorting

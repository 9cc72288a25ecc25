// Sorts texts as they come in, until a signal ends it.
#ifndef VEK_SORT_WATCH_H_
#define VEK_SORT_WATCH_H_

#include <functional>
#include <string>

#include "base/failure.h"
#include "sort/answers.h"
#include "sort/arrivals.h"
#include "sort/sorter.h"
#include "sort/target.h"

namespace vek::sorting {

struct Watched {
  Answers &answers;
  Target &target;
  const Arrivals &arrivals;
  Sorter &sorter;
  std::function<void(const std::string &message)> report;
  // A directory that is locked and has another name by now, or none: whoever
  // looks for it there has to lock it first. Empty if there is none.
  std::function<std::string()> find_lost;
};

// The system tells of each text that was written or moved there; once a minute,
// and when it was too much to be told, the whole directory is looked through.
// What fails is told and tried again. `signals` is that of watch_signals().
// False if the directory cannot be watched at all, and when a directory is
// gone.
bool watch(const Watched &watched, int signals, Failure &failure);

}  // namespace vek::sorting

#endif  // VEK_SORT_WATCH_H_

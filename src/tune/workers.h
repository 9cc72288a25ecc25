// Trials, each in a process of its own: as many at a time as there are
// processors. A child shares the documents with its parent, draws on its own
// random numbers, and takes nothing with it when it dies.
#ifndef VEK_TUNE_WORKERS_H_
#define VEK_TUNE_WORKERS_H_

#include <functional>
#include <vector>

#include "tune/examples.h"
#include "tune/trial.h"

namespace vek::tuning {

// What try_out() returned for each trial; nothing for one whose process died,
// and for those that a stop signal has cut off. `is_done` hears of each that
// ends, in the order of ending.
std::vector<std::vector<Decisions>> run_trials(
    const Examples &examples, const std::vector<Trial> &trials,
    const std::function<void(const Trial &trial)> &is_done);

}  // namespace vek::tuning

#endif  // VEK_TUNE_WORKERS_H_

#include "run/progress.h"

#include "run/log.h"

namespace vek {

void Progress::count() {
  ++nr_done_;
  if (step_ == 0 || nr_done_ % step_ != 0)
    return;
  logf_always(2, "%s on <%s> %1.0ld0%% complete", what_, class_name_.c_str(),
              static_cast<long>(nr_done_ / step_));
}

}  // namespace vek

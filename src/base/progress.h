// The progress of a long loop over documents, as messages.
#ifndef VEK_BASE_PROGRESS_H_
#define VEK_BASE_PROGRESS_H_

#include <cstddef>
#include <string>

#include "base/messages.h"

namespace vek {

// A message of level 2 whenever another tenth of the documents is done. The
// step is a tenth cut to an integer, so the percentages can pass 100; with
// fewer than ten documents it is 0, and there are no messages.
class Progress {
 public:
  // "<what> on <`class_name`> N0% complete"
  Progress(Messages &messages, const char *what, const std::string &class_name,
           std::size_t nr_docs)
      : messages_(messages),
        what_(what),
        class_name_(class_name),
        step_(nr_docs / 10) {}

  // One document more is done.
  void count() {
    ++nr_done_;
    if (step_ != 0 && nr_done_ % step_ == 0)
      tell();
  }

 private:
  void tell() {
    messages_.note(2, formatted("%s on <%s> %zu0%% complete", what_,
                                class_name_.c_str(), nr_done_ / step_));
  }

  Messages &messages_;
  const char *what_;
  const std::string &class_name_;
  std::size_t step_;
  std::size_t nr_done_ = 0;
};

}  // namespace vek

#endif  // VEK_BASE_PROGRESS_H_

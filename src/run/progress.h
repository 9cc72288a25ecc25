// The progress of a long loop over documents, as lines of the log.
#ifndef VEK_RUN_PROGRESS_H_
#define VEK_RUN_PROGRESS_H_

#include <cstddef>
#include <string>

namespace vek {

// Logs a line at level 2 whenever another tenth of the documents is done. The
// step is a tenth cut to an integer, so the percentages can pass 100; with
// fewer than ten documents it is 0, and there are no lines.
class Progress {
 public:
  // "<what> on <`class_name`> N0% complete"
  Progress(const char *what, const std::string &class_name, std::size_t nr_docs)
      : what_(what), class_name_(class_name), step_(nr_docs / 10) {}

  // One document more is done.
  void count();

 private:
  const char *what_;
  std::string class_name_;
  std::size_t step_;
  std::size_t nr_done_ = 0;
};

}  // namespace vek

#endif  // VEK_RUN_PROGRESS_H_

// How far the work is, for someone who looks on.
#ifndef VEK_ANALYSE_PROGRESS_H_
#define VEK_ANALYSE_PROGRESS_H_

#include <chrono>
#include <cstdint>

namespace vek::analysis {

// A line on standard error: rewritten in place on a terminal, and else a new
// one every few seconds, so that a log stays readable.
class Progress {
 public:
  Progress(bool is_wanted, bool is_terminal);

  // A document is done.
  void count(bool was_skipped);

  // Writes the last line.
  void finish();

 private:
  using Clock = std::chrono::steady_clock;

  void show(Clock::time_point now) const;

  const bool is_wanted_;
  const bool is_terminal_;
  const Clock::time_point start_ = Clock::now();
  Clock::time_point last_shown_ = start_;
  std::uint64_t nr_documents_ = 0;  // with those that were skipped
  std::uint64_t nr_skipped_ = 0;
};

}  // namespace vek::analysis

#endif  // VEK_ANALYSE_PROGRESS_H_

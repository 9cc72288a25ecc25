// How far a program is with its documents, in one line on standard error: it
// moves on a terminal, and is a new one every few seconds elsewhere, so that a
// log stays readable.
#ifndef VEK_BASE_PROGRESS_LINE_H_
#define VEK_BASE_PROGRESS_LINE_H_

#include <chrono>
#include <cstdint>
#include <string>

namespace vek {

// What is known of the work at some moment.
struct WorkDone {
  std::uint64_t nr_done = 0;     // documents, with those that were skipped
  std::uint64_t nr_skipped = 0;  // documents that needed no work
  std::uint64_t nr_total = 0;    // documents; 0 if it is not known
  double seconds = 0;            // since the begin

  // "30 of 120 documents (25 %), 4 of them skipped, 10 a second, 0:00:09 left",
  // without what is not known or is none. The time left assumes that the rest
  // goes on as all did up to now.
  std::string text() const;
};

class ProgressLine {
 public:
  enum class Shown { never, on_terminal, always };

  // `nr_total` is 0 if the number of documents is not known.
  ProgressLine(std::string program, Shown shown, std::uint64_t nr_total = 0);

  // A document is done.
  void count(bool was_skipped = false);

  // Writes the last line, and leaves it there.
  void finish();

 private:
  using Clock = std::chrono::steady_clock;

  void show(Clock::time_point now);

  const std::string program_;
  const bool is_terminal_;
  const bool is_shown_;
  const Clock::time_point start_ = Clock::now();
  Clock::time_point last_shown_ = start_;
  WorkDone work_;
};

// Removes the line that moves on the terminal, if one stands there, so that a
// message can take its place. The next document brings it back.
void erase_progress_line();

}  // namespace vek

#endif  // VEK_BASE_PROGRESS_LINE_H_

#include "base/progress_line.h"

#include <unistd.h>

#include <cstdio>
#include <utility>

namespace vek {
namespace {

using namespace std::chrono_literals;

// Often enough to look alive, and so seldom that it costs nothing.
constexpr std::chrono::milliseconds terminal_interval = 200ms;
constexpr std::chrono::milliseconds log_interval = 5s;

bool is_line_on_terminal = false;

// "1:02:03"
std::string hours(double seconds) {
  // Fractions of a second are cut off: the estimate is not that exact.
  const auto all = static_cast<std::uint64_t>(seconds);
  char text[40];
  std::snprintf(
      text, sizeof text, "%u:%02u:%02u", static_cast<unsigned>(all / 3600),
      static_cast<unsigned>(all / 60 % 60), static_cast<unsigned>(all % 60));
  return text;
}

}  // namespace

std::string WorkDone::text() const {
  const auto done = static_cast<double>(nr_done);
  // Documents a second. The first line may come at once: no division by 0.
  const double rate = seconds > 0 ? done / seconds : 0;
  std::string text = std::to_string(nr_done);
  if (nr_total > 0)
    text += " of " + std::to_string(nr_total);
  text += " documents";
  if (nr_total > 0)
    text += " (" + std::to_string(nr_done * 100 / nr_total) + " %)";
  if (nr_skipped > 0)
    text += ", " + std::to_string(nr_skipped) + " of them skipped";
  text += ", " + std::to_string(static_cast<std::uint64_t>(rate)) + " a second";
  if (nr_total > nr_done && rate > 0)
    text +=
        ", " + hours(static_cast<double>(nr_total - nr_done) / rate) + " left";
  return text;
}

ProgressLine::ProgressLine(std::string program, Shown shown,
                           std::uint64_t nr_total)
    : program_(std::move(program)),
      // Standard error, as standard output may be the data of a pipe.
      is_terminal_(isatty(STDERR_FILENO) == 1),
      is_shown_(shown == Shown::always ||
                (shown == Shown::on_terminal && is_terminal_)) {
  work_.nr_total = nr_total;
}

void ProgressLine::count(bool was_skipped) {
  ++work_.nr_done;
  if (was_skipped)
    ++work_.nr_skipped;
  if (!is_shown_)
    return;
  const Clock::time_point now = Clock::now();
  if (now - last_shown_ >= (is_terminal_ ? terminal_interval : log_interval))
    show(now);
}

void ProgressLine::finish() {
  if (!is_shown_)
    return;
  show(Clock::now());
  if (is_terminal_)
    std::fputc('\n', stderr);
  is_line_on_terminal = false;
}

void ProgressLine::show(Clock::time_point now) {
  last_shown_ = now;
  work_.seconds = std::chrono::duration<double>(now - start_).count();
  const std::string line = program_ + ": " + work_.text();
  // On a terminal over the line before, of which nothing may remain.
  std::fputs((is_terminal_ ? "\r" + line + "\x1B[K" : line + '\n').c_str(),
             stderr);
  is_line_on_terminal = is_terminal_;
}

void erase_progress_line() {
  if (!is_line_on_terminal)
    return;
  std::fputs("\r\x1B[K", stderr);
  is_line_on_terminal = false;
}

}  // namespace vek

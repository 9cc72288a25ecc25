#include "analyse/progress.h"

#include <cinttypes>
#include <cstdio>

namespace vek::analysis {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds terminal_interval = 200ms;
constexpr std::chrono::milliseconds log_interval = 5s;

}  // namespace

Progress::Progress(bool is_wanted, bool is_terminal)
    : is_wanted_(is_wanted), is_terminal_(is_terminal) {}

void Progress::count(bool was_skipped) {
  if (!is_wanted_)
    return;
  ++nr_documents_;
  if (was_skipped)
    ++nr_skipped_;
  const Clock::time_point now = Clock::now();
  if (now - last_shown_ < (is_terminal_ ? terminal_interval : log_interval)) {
    return;
  }
  last_shown_ = now;
  show(now);
}

void Progress::finish() {
  if (!is_wanted_)
    return;
  show(Clock::now());
  if (is_terminal_)
    std::fputc('\n', stderr);
}

void Progress::show(Clock::time_point now) const {
  const double seconds = std::chrono::duration<double>(now - start_).count();
  const double rate =
      seconds > 0 ? static_cast<double>(nr_documents_) / seconds : 0;
  std::fprintf(stderr,
               "%svek-analyse: %" PRIu64 " documents, %" PRIu64
               " of them skipped, %.0f a second%s",
               is_terminal_ ? "\r" : "", nr_documents_, nr_skipped_, rate,
               is_terminal_ ? "\x1B[K" : "\n");
}

}  // namespace vek::analysis

// When to sync while a long run goes on: often enough that little is lost with
// a run that is killed, and seldom enough that it costs little.
#ifndef VEK_STORE_SYNCINTERVAL_H_
#define VEK_STORE_SYNCINTERVAL_H_

#include <algorithm>
#include <chrono>

namespace vek {

class SyncInterval {
 public:
  using Clock = std::chrono::steady_clock;

  // A sync writes all of the index and of what the vocabulary's files lack, so
  // it costs more and more. Of 40 parts of the time it may take one.
  static constexpr std::chrono::seconds shortest{5};
  static constexpr int nr_costs = 40;

  explicit SyncInterval(Clock::time_point now) : last_(now) {}

  bool is_due(Clock::time_point now) const {
    return now - last_ >= std::max<Clock::duration>(shortest, nr_costs * cost_);
  }
  void note_sync(Clock::time_point begin, Clock::time_point end) {
    last_ = end;
    cost_ = end - begin;
  }

 private:
  Clock::time_point last_;
  Clock::duration cost_{};
};

}  // namespace vek

#endif  // VEK_STORE_SYNCINTERVAL_H_

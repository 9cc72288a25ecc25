#include "store/syncinterval.h"

#include <gtest/gtest.h>

namespace vek {
namespace {

using std::chrono::milliseconds;

TEST(SyncInterval, IsAsLongAsTheLastSyncAsksFor) {
  const SyncInterval::Clock::time_point start{};
  const struct {
    milliseconds cost;
    milliseconds since;
    bool is_due;
  } cases[] = {
      {milliseconds(0), milliseconds(4999), false},
      {milliseconds(0), milliseconds(5000), true},
      {milliseconds(125), milliseconds(4999), false},
      {milliseconds(125), milliseconds(5000), true},
      {milliseconds(250), milliseconds(9999), false},
      {milliseconds(250), milliseconds(10000), true},
  };
  for (const auto &[cost, since, is_due] : cases) {
    SyncInterval interval(start);
    EXPECT_FALSE(interval.is_due(start + milliseconds(4999)));
    EXPECT_TRUE(interval.is_due(start + milliseconds(5000)));
    interval.note_sync(start + milliseconds(5000),
                       start + milliseconds(5000) + cost);
    EXPECT_EQ(interval.is_due(start + milliseconds(5000) + cost + since),
              is_due)
        << cost.count() << ' ' << since.count();
  }
}

}  // namespace
}  // namespace vek

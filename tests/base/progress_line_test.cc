#include "base/progress_line.h"

#include <gtest/gtest.h>

#include <utility>

namespace vek {
namespace {

TEST(ProgressLine, TellsWhatIsKnown) {
  const std::pair<WorkDone, const char *> cases[] = {
      {{.nr_done = 5, .nr_skipped = 2, .seconds = 2},
       "5 documents, 2 of them skipped, 2 a second"},
      {{.nr_total = 9, .seconds = 3}, "0 of 9 documents (0 %), 0 a second"},
      {{.nr_done = 10, .nr_total = 36610, .seconds = 1},
       "10 of 36610 documents (0 %), 10 a second, 1:01:00 left"},
      {{.nr_done = 199, .nr_total = 200, .seconds = 398},
       "199 of 200 documents (99 %), 0 a second, 0:00:02 left"},
      // A list may grow while it is read.
      {{.nr_done = 201, .nr_total = 200, .seconds = 1},
       "201 of 200 documents (100 %), 201 a second"}};
  for (const auto &[work, text] : cases)
    EXPECT_EQ(work.text(), text);
}

}  // namespace
}  // namespace vek

#include "check/findings.h"

#include <gtest/gtest.h>

#include <sstream>

namespace vek::checking {
namespace {

TEST(Findings, StandInTheOrderOfFilesAndLines) {
  Findings findings;
  EXPECT_EQ(findings.exit_status(), 0);
  findings.add("train", 12, Severity::warning, "b");
  EXPECT_EQ(findings.exit_status(), 1);
  findings.add("test", 3, Severity::stop, "d");
  findings.add("train", 12, Severity::warning, quoted("b\tc\x7F\xC3\xA9"));
  findings.add("train", 2, Severity::stop, "c");
  findings.add("a\x1B", 0, Severity::warning, "e");
  // The worst decides.
  EXPECT_EQ(findings.exit_status(), 2);
  std::ostringstream out;
  findings.print(out);
  EXPECT_EQ(out.str(),
            "train:2: stop: c\n"
            "train:12: warning: b\n"
            "train:12: warning: `b\\x09c\\x7F\xC3\xA9'\n"
            "test:3: stop: d\n"
            "a\\x1B: warning: e\n");
}

}  // namespace
}  // namespace vek::checking

#include "check/findings.h"

#include <gtest/gtest.h>

#include <sstream>

namespace vek::checking {
namespace {

std::string printed(const Findings &findings) {
  std::ostringstream out;
  findings.print(out);
  return out.str();
}

TEST(Findings, StandInTheOrderOfFilesAndLines) {
  Findings findings;
  findings.add("train", 12, Severity::warning, "b");
  findings.add("test", 3, Severity::stop, "d");
  findings.add("train", 12, Severity::warning, "a");
  findings.add("train", 2, Severity::stop, "c");
  findings.add("test", 0, Severity::warning, "e");
  EXPECT_EQ(printed(findings),
            "train:2: stop: c\n"
            "train:12: warning: b\n"
            "train:12: warning: a\n"
            "test: warning: e\n"
            "test:3: stop: d\n");
}

TEST(Findings, ShowControlCharactersAsNumbers) {
  Findings findings;
  findings.add("a\x1B", 1, Severity::warning, quoted("b\tc\x7F\xC3\xA9"));
  EXPECT_EQ(printed(findings), "a\\x1B:1: warning: `b\\x09c\\x7F\xC3\xA9'\n");
}

TEST(Findings, TheWorstDecidesTheStatus) {
  Findings findings;
  EXPECT_EQ(findings.exit_status(), 0);
  findings.add("train", 1, Severity::warning, "");
  EXPECT_EQ(findings.exit_status(), 1);
  findings.add("train", 1, Severity::stop, "");
  findings.add("train", 1, Severity::warning, "");
  EXPECT_EQ(findings.exit_status(), 2);
}

}  // namespace
}  // namespace vek::checking

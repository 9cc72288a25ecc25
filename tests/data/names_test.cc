#include "data/names.h"

#include <gtest/gtest.h>

namespace vek::keeping {
namespace {

TEST(Names, AreEscapedAndComeBack) {
  const std::pair<std::string, std::string> cases[] = {
      {"", ""},
      {"a b/c\xC3\xA9", "a b/c\xC3\xA9"},
      {"a\tb\n", "a\\x09b\\x0A"},
      {"\x1B[2J\x7F", "\\x1B[2J\\x7F"},
      {"\\x09\\", "\\\\x09\\\\"},
  };
  for (const auto &[name, text] : cases) {
    EXPECT_EQ(escaped(name), text);
    std::string back;
    EXPECT_TRUE(unescape(text, back));
    EXPECT_EQ(back, name);
  }
  std::string back;
  for (const char *text : {"\\", "a\\", "\\t", "\\x", "\\x1", "\\x1G", "\\x-1"})
    EXPECT_FALSE(unescape(text, back)) << text;
}

TEST(Names, DatesAreUtc) {
  EXPECT_EQ(date(1'000'000'000), "2001-09-09T01:46:40Z");
  EXPECT_EQ(date(0xFFFFFFFF), "2106-02-07T06:28:15Z");
}

}  // namespace
}  // namespace vek::keeping

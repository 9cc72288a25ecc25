#include "run/options.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/messages.h"

namespace vek {
namespace {

using testing::Eq;
using testing::ExitedWithCode;
using Words = std::vector<std::string>;

// What differs from an empty record.
std::string dump(const Options &record) {
  std::string text = "v" + std::to_string(record.verbose()) + " a" +
                     std::to_string(record.algorithm());
  text += record.poll() ? " poll" : "";
  text += record.xlearning() ? " xl" : "";
  text += record.xtesting() ? " xt" : "";
  const auto add = [&](const char *name, const std::string &value) {
    if (!value.empty())
      text += name + value;
  };
  add(" d=", record.data_directory());
  add(" i=", record.input_directory());
  add(" r=", record.rc_file());
  add(" e=", record.examples_directory());
  return text;
}

TEST(Options, FollowTheArguments) {
  struct Case {
    Words words;
    std::string record;
  };
  const std::vector<Case> cases = {
      {{"ex"}, "v0 a0 e=ex"},
      {{"--verbose", "--verbose", "-vv", "ex"}, "v4 a0 e=ex"},
      {{"-a", "Winnow", "ex"}, "v0 a0 e=ex"},
      {{"-a", "Rocchio", "ex"}, "v0 a1 e=ex"},
      {{"--algorithm", "SBC", "ex"}, "v0 a2 e=ex"},
      {{"-a", "S", "-a", "W", "ex"}, "v0 a0 e=ex"},
      {{"-p", "ex"}, "v0 a0 poll e=ex"},
      {{"--poll"}, "v0 a0 poll"},
      {{"-xl", "-xt", "ex"}, "v0 a0 xl xt e=ex"},
      {{"--xtesting", "--xlearning", "ex"}, "v0 a0 xl xt e=ex"},
      {{"-d", "one", "-i", "two", "-r", "three", "ex"},
       "v0 a0 d=one i=two r=three e=ex"},
      {{"--data", "1", "--input", "2", "--resource", "3", "--data", "./-4"},
       "v0 a0 poll d=./-4 i=2 r=3"},
      {{"-d", "", "", "ex"}, "v0 a0 e=ex"},
  };
  for (const Case &one : cases) {
    Options record;
    parse(record, one.words);
    EXPECT_EQ(dump(record), one.record) << testing::PrintToString(one.words);
  }
}

// What the whole runs leave: an argument that looks like an option, and options
// behind others.
TEST(Options, EndTheRunForErrors) {
  const std::string hint = "\nuse `vek -h' for help\n";
  const struct {
    Words words;
    std::string message;
  } cases[] = {
      {{"--algorithm", "-W"}, "ERROR: option `-a' needs an argument" + hint},
      {{"ex", "--input", "-"}, "ERROR: option `-i' needs an argument" + hint},
      {{"-pp"}, "ERROR: unknown option `-pp'" + hint},
      {{"-"}, "ERROR: unknown option `-'" + hint},
      {{"-%s"}, "ERROR: unknown option `-%s'" + hint},
  };
  for (const auto &[words, message] : cases) {
    EXPECT_EXIT(parse(options, words), ExitedWithCode(1), Eq(message));
  }
}

TEST(Options, CountTheLettersOfAnInvalidVerbosityAndGoOn) {
  Options record;
  EXPECT_EQ(screen([&] {
              parse(record, {"-verbose", "-vvx", "-v-v", "ex"});
            }),
            "ERROR: invalid option `-verbose'\n"
            "ERROR: invalid option `-vvx'\n"
            "ERROR: invalid option `-v-v'\n");
  EXPECT_EQ(dump(record), "v4 a0 e=ex");
}

}  // namespace
}  // namespace vek

#include "run/options.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "run/log.h"
#include "support/messages.h"

namespace vek {
namespace {

using testing::Eq;
using testing::ExitedWithCode;
using Words = std::vector<std::string>;

const std::string usage =
    "Usage: vek [ -h ] [ -v ] [ -p ] [ -V ] [ -a <W | R | S> ]\n"
    "           [ -d <data-directory> ] [ -i <input-directory> ]\n"
    "           [ -r <rc-file> ] [ <examples-directory> ]\n";

const std::string help =
    "Options are:\n"
    "    -h    --help           show help\n"
    "    -d    --data           specify data directory\n"
    "    -i    --input          specify input directory\n"
    "    -p    --poll           poll input directory for documents\n"
    "    -r    --resource       specify resource file\n"
    "    -v    --verbose        be verbose\n"
    "    -V    --Version        show version\n"
    "    -a    --algorithm      specify training algorithm\n"
    "    -xl   --xlearning      exclude learning (training) phase\n"
    "    -xt   --xtesting       exclude testing phase\n"
    "\n"
    "Arguments are:\n"
    "    <data-directory>       directory for storing profile data\n"
    "    <examples-directory>   directory with example documents\n"
    "    <input-directory>      directory to be polled for input documents\n"
    "    <W | R | S>            select which to apply: Winnow, Rocchio or SBC\n"
    "    <rc-file>              file with resource definitions\n"
    "\n";

const std::string hint = "use `vek -h' for help\n";

// What differs from an empty record.
std::string dump(const Options &record) {
  std::string text = "v" + std::to_string(record.verbose()) + " a" +
                     std::to_string(record.algorithm());
  if (record.poll())
    text += " poll";
  if (record.xlearning())
    text += " xl";
  if (record.xtesting())
    text += " xt";
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
      {{"-v", "ex"}, "v1 a0 e=ex"},
      {{"-vvv", "ex"}, "v3 a0 e=ex"},
      {{"-v", "ex", "-v", "-v"}, "v3 a0 e=ex"},
      {{"--verbose", "--verbose", "-vv", "ex"}, "v4 a0 e=ex"},
      {{"-a", "Winnow", "ex"}, "v0 a0 e=ex"},
      {{"-a", "Rocchio", "ex"}, "v0 a1 e=ex"},
      {{"--algorithm", "SBC", "ex"}, "v0 a2 e=ex"},
      {{"-a", "S", "-a", "W", "ex"}, "v0 a0 e=ex"},
      {{"-p", "ex"}, "v0 a0 poll e=ex"},
      {{"--poll"}, "v0 a0 poll"},
      {{"-v"}, "v1 a0 poll"},
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
    EXPECT_EQ(screen([&] { parse(record, one.words); }), "");
    EXPECT_EQ(dump(record), one.record) << testing::PrintToString(one.words);
  }
}

TEST(Options, EndTheRunForHelpAndForErrors) {
  struct Case {
    Words words;
    int status;
    std::string message;  // in the log too
    std::string further;  // on the screen only
  };
  const std::string a = "ERROR: option `-a' needs an argument\n";
  const std::string d = "ERROR: option `-d' needs an argument\n";
  const std::string i = "ERROR: option `-i' needs an argument\n";
  const std::string r = "ERROR: option `-r' needs an argument\n";
  const std::string letters = "ERROR: valid arguments to -a are W, R or S\n";
  const std::string twice = "ERROR: duplicate examples directory specified\n";
  const auto unknown = [](const std::string &option) {
    return "ERROR: unknown option `" + option + "'\n";
  };
  const std::vector<Case> cases = {
      {{}, 0, "", usage},
      {{"-h"}, 0, "", usage + help},
      {{"ex", "--help", "-x"}, 0, "", usage + help},
      {{"-a"}, 1, a, hint},
      {{"--algorithm", "-W"}, 1, a, hint},
      {{"-a", "w"}, 1, letters, hint},
      {{"-a", ""}, 1, letters, hint},
      {{"-d"}, 1, d, hint},
      {{"--data", "-x"}, 1, d, hint},
      {{"ex", "-i"}, 1, i, hint},
      {{"--input", "-", "ex"}, 1, i, hint},
      {{"-r"}, 1, r, hint},
      {{"--resource", "--poll"}, 1, r, hint},
      {{"-x"}, 1, unknown("-x"), hint},
      {{"-Vx", "-h"}, 1, unknown("-Vx"), hint},
      {{"-pp"}, 1, unknown("-pp"), hint},
      {{"--Verbose"}, 1, unknown("--Verbose"), hint},
      {{"-"}, 1, unknown("-"), hint},
      {{"-%s"}, 1, unknown("-%s"), hint},
      {{"one", "two", "-h"}, 1, twice, ""},
  };
  const TemporaryDirectory directory;
  log_file.open("vek.log");
  for (const Case &one : cases) {
    const std::size_t before = logged().size();
    EXPECT_EXIT(parse(options, one.words), ExitedWithCode(one.status),
                Eq(one.message + one.further))
        << testing::PrintToString(one.words);
    EXPECT_EQ(logged().substr(before), one.message);
  }
}

TEST(Options, ShowTheVersionInAtMostTwoLines) {
  for (const char *word : {"-V", "--Version"}) {
    EXPECT_EXIT(parse(options, {word, "-x"}), ExitedWithCode(0),
                "^[^\n]+\n([^\n]+\n)?$");
  }
}

TEST(Options, CountTheLettersOfAnInvalidVerbosityAndGoOn) {
  const TemporaryDirectory directory;
  log_file.open("vek.log");
  Options record;
  const std::string shown = screen([&] {
    parse(record, {"-verbose", "-vvx", "-v-v", "-d", "data", "ex"});
  });
  EXPECT_EQ(shown,
            "ERROR: invalid option `-verbose'\n"
            "ERROR: invalid option `-vvx'\n"
            "ERROR: invalid option `-v-v'\n");
  EXPECT_EQ(logged(), shown);
  EXPECT_EQ(dump(record), "v4 a0 d=data e=ex");
}

TEST(Options, LogABannerLineFromTheFirstVerbosityOn) {
  const TemporaryDirectory directory;
  log_file.open("vek.log");
  EXPECT_EQ(screen([] { parse(options, {"ex"}); }), "");
  EXPECT_EQ(logged(), "");
  options = Options();
  const std::string banner = screen([] { parse(options, {"-v", "ex"}); });
  EXPECT_EQ(logged(), banner);
  EXPECT_EQ(banner.find('\n'), banner.size() - 1);
}

TEST(Options, ReportPollingAtTheGivenLevel) {
  set_verbosity(2);
  EXPECT_EQ(screen([] { options.report_polling(2); }), "");
  screen([] { parse(options, {"-p"}); });
  EXPECT_EQ(screen([] { options.report_polling(3); }), "");
  EXPECT_EQ(screen([] { options.report_polling(2); }),
            "polling mode activated\n");
}

}  // namespace
}  // namespace vek

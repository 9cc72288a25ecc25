#include "analyse/options.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace vek::analysis {
namespace {

std::string read(const std::string &line, Options &options) {
  std::istringstream stream(line);
  std::vector<std::string> words;
  for (std::string word; stream >> word;)
    words.push_back(word);
  std::vector<char *> arguments;
  for (std::string &word : words)
    arguments.push_back(word.data());
  return read_options(arguments, options);
}

Options options_of(const std::string &line) {
  Options options;
  EXPECT_EQ(read(line, options), "") << line;
  return options;
}

std::string problem_of(const std::string &line) {
  Options options;
  return read(line, options);
}

TEST(Options, HaveTheirDefaults) {
  const Options options = options_of("");
  EXPECT_EQ(options.language_P, find_language("en"));
  EXPECT_EQ(options.terms, Terms::both);
  EXPECT_EQ(options.numbers, Numbers::drop);
  EXPECT_EQ(options.stop_file + options.to_directory + options.from_directory,
            "");
  EXPECT_FALSE(options.has_progress || options.wants_help ||
               options.wants_version);
}

TEST(Options, AreReadInAllTheirSpellings) {
  for (const char *line :
       {"-l de -t words -n class -s stop --to out --from in --progress",
        "-lde -twords -nclass -sstop --to=out --from=in --progress",
        "--from in --to out -l en -l german -n keep -n class -s stop -t words "
        "--progress"}) {
    const Options options = options_of(line);
    EXPECT_EQ(options.language_P, find_language("de"));
    EXPECT_EQ(options.terms, Terms::words);
    EXPECT_EQ(options.numbers, Numbers::as_class);
    EXPECT_EQ(options.stop_file, "stop");
    EXPECT_EQ(options.to_directory, "out");
    EXPECT_EQ(options.from_directory, "in");
    EXPECT_TRUE(options.has_progress);
  }
  EXPECT_TRUE(options_of("-h").wants_help);
  EXPECT_TRUE(options_of("--help").wants_help);
  EXPECT_TRUE(options_of("--version").wants_version);
  EXPECT_EQ(options_of("-l none").language_P, find_language("none"));
}

TEST(Options, AreRefusedWithTheReason) {
  struct Case {
    const char *line;
    const char *problem;
  };
  const Case cases[] = {
      {"-x", "unknown option '-x'"},
      {"file.txt", "unknown option 'file.txt'"},
      {"-", "unknown option '-'"},
      {"--", "unknown option '--'"},
      {"--too x", "unknown option '--too'"},
      {"-l", "'-l' needs an argument"},
      {"--to", "'--to' needs an argument"},
      {"--to=", "empty name for '--to'"},
      {"--progress=1", "'--progress' takes no argument"},
      {"-hx", "'-h' takes no argument"},
      {"-t all", "unknown terms 'all'; words, pairs or both"},
      {"-n no", "unknown treatment of numbers 'no'; drop, class or keep"},
      {"--from x", "'--from' goes with '--to' only"}};
  for (const Case &c : cases)
    EXPECT_EQ(problem_of(c.line), c.problem);
}

TEST(Options, ListTheLanguagesThatThereAre) {
  const std::string problem = problem_of("-l klingon");
  EXPECT_TRUE(problem.starts_with("unknown language 'klingon'; there are:\n"));
  for (const char *line :
       {"\ndutch (nl nld dut)\n", "\nfrench (fr fra fre)\n", "\nporter\n"}) {
    EXPECT_NE(problem.find(line), problem.npos) << line;
  }
}

TEST(Options, AreAllInTheUsage) {
  for (const char *name :
       {"-l LANG", "-t TERMS", "-s STOPFILE", "-n NUMBERS", "--to DIR",
        "--from DIR", "--progress", "-h", "--version"}) {
    EXPECT_NE(usage().find(name), std::string::npos) << name;
  }
}

}  // namespace
}  // namespace vek::analysis

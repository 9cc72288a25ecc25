#include "analyse/options.h"

#include <gtest/gtest.h>

#include <iterator>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace vek::analysis {
namespace {

// What is wrong with the line, or nothing.
std::string read(const std::string &line, Options &options) {
  std::istringstream stream(line);
  std::vector<std::string> words(std::istream_iterator<std::string>(stream),
                                 {});
  std::vector<char *> arguments;
  for (std::string &word : words)
    arguments.push_back(word.data());
  return read_options(arguments, options);
}

TEST(Options, AreReadInAllTheirSpellings) {
  for (const char *line :
       {"-l de -t words -n class -s stop --to out --from in --progress",
        "-lde -twords -nclass -sstop --to=out --from=in --progress",
        "--from in --to out -l en -l german -n keep -n class -s stop -t words "
        "--progress"}) {
    Options options;
    EXPECT_EQ(options.language_P, find_language("en"));
    EXPECT_EQ(options.terms, Terms::both);
    EXPECT_EQ(options.numbers, Numbers::drop);
    EXPECT_EQ(read(line, options), "") << line;
    EXPECT_EQ(options.language_P, find_language("de"));
    EXPECT_EQ(options.terms, Terms::words);
    EXPECT_EQ(options.numbers, Numbers::as_class);
    EXPECT_EQ(options.stop_file, "stop");
    EXPECT_EQ(options.to_directory, "out");
    EXPECT_EQ(options.from_directory, "in");
    EXPECT_TRUE(options.has_progress);
    EXPECT_EQ(read("--help", options), "");
    EXPECT_TRUE(options.wants_help);
  }
}

TEST(Options, AreRefusedWithTheReason) {
  const std::pair<const char *, const char *> cases[] = {
      {"-x", "unknown option '-x'"},
      {"file.txt", "unknown option 'file.txt'"},
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
  Options options;
  for (const auto &[line, problem] : cases)
    EXPECT_EQ(read(line, options), problem);
}

}  // namespace
}  // namespace vek::analysis

#include "analyse/options.h"

#include <gtest/gtest.h>

#include <iterator>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace vek::analysis {
namespace {

std::optional<int> read(const std::string &line, Options &options) {
  std::istringstream stream("vek-analyse " + line);
  const std::vector<std::string> words(
      std::istream_iterator<std::string>(stream), {});
  std::vector<const char *> arguments;
  for (const std::string &word : words)
    arguments.push_back(word == "''" ? "" : word.c_str());
  return read_options(static_cast<int>(arguments.size()), arguments.data(),
                      options);
}

TEST(Options, AreReadInAllTheirSpellings) {
  for (const char *line :
       {"-l de -t words -n class -s stop --to out --from in --progress",
        "-lde -twords -nclass -sstop --to=out --from=in --progress",
        "--from in --to out -l en -l german -n keep -n class -s stop -t words "
        "--progress --progress"}) {
    Options options;
    EXPECT_EQ(options.language_P, find_language("en"));
    EXPECT_EQ(options.terms, Terms::both);
    EXPECT_EQ(options.numbers, Numbers::drop);
    EXPECT_EQ(read(line, options), std::nullopt) << line;
    EXPECT_EQ(options.language_P, find_language("de"));
    EXPECT_EQ(options.terms, Terms::words);
    EXPECT_EQ(options.numbers, Numbers::as_class);
    EXPECT_EQ(options.stop_file, "stop");
    EXPECT_EQ(options.to_directory, "out");
    EXPECT_EQ(options.from_directory, "in");
    EXPECT_TRUE(options.has_progress);
  }
}

TEST(Options, AreRefusedWithTheReasonInOneLine) {
  const std::pair<const char *, const char *> cases[] = {
      {"-x", "unknown option '-x'"},
      {"file.txt", "unexpected argument 'file.txt'"},
      {"--too x", "unknown option '--too'"},
      {"-l", "-l: 1 required LANG missing"},
      {"--to", "--to: 1 required DIR missing"},
      {"--to= out", "'--to=' lacks its value"},
      {"--to ''", "--to: empty name"},
      {"-t all", "-t: all not in {both,pairs,words}"},
      {"-n no", "-n: no not in {class,drop,keep}"},
      {"--from x", "--from requires --to"}};
  for (const auto &[line, problem] : cases) {
    Options options;
    testing::internal::CaptureStderr();
    EXPECT_EQ(read(line, options), 2) << line;
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "vek-analyse: " + std::string(problem) + '\n');
  }
}

}  // namespace
}  // namespace vek::analysis

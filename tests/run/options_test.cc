#include "run/options.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace vek {
namespace {

// A line of words; a word '' is an empty one.
void parse(Options &record, const std::string &line) {
  std::istringstream stream("vek " + line);
  std::vector<std::string> words;
  for (std::string word; stream >> word;)
    words.push_back(word == "''" ? "" : word);
  std::vector<char *> arguments;
  for (std::string &word : words)
    arguments.push_back(word.data());
  record.parse_options(static_cast<int>(words.size()), arguments.data());
}

// What differs from an empty record.
std::string dump(const Options &record) {
  std::string text = "v" + std::to_string(record.verbose()) + " a" +
                     std::to_string(static_cast<int>(record.algorithm()));
  text += record.poll() ? " poll" : "";
  text += record.xlearning() ? " xl" : "";
  text += record.xtesting() ? " xt" : "";
  for (const std::string &name :
       {"d=" + record.data_directory(), "i=" + record.input_directory(),
        "r=" + record.rc_file(), "e=" + record.examples_directory()}) {
    if (name.size() > 2)
      text += ' ' + name;
  }
  return text;
}

TEST(Options, FollowTheArguments) {
  const std::pair<std::string, std::string> cases[] = {
      {"--verbose --verbose -vv ex", "v4 a0 e=ex"},
      {"-a Winnow ex", "v0 a0 e=ex"},
      {"-a Rocchio ex", "v0 a1 e=ex"},
      {"--algorithm SBC ex", "v0 a2 e=ex"},
      {"-a Linear ex", "v0 a3 e=ex"},
      {"-a S -a W ex", "v0 a0 e=ex"},
      {"-p ex", "v0 a0 poll e=ex"},
      {"--poll", "v0 a0 poll"},
      {"-xl -xt ex", "v0 a0 xl xt e=ex"},
      {"--xtesting --xlearning ex", "v0 a0 xl xt e=ex"},
      {"-d one -i two -r three ex", "v0 a0 d=one i=two r=three e=ex"},
      {"--data 1 --input 2 --resource 3 --data ./-4",
       "v0 a0 poll d=./-4 i=2 r=3"},
      {"-d '' '' ex", "v0 a0 e=ex"}};
  for (const auto &[line, record] : cases) {
    Options options;
    parse(options, line);
    EXPECT_EQ(dump(options), record) << line;
  }
}

}  // namespace
}  // namespace vek

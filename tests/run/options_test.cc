#include "run/options.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "support/messages.h"

namespace vek {
namespace {

// The words of a line; a word '' is an empty one.
std::vector<std::string> words_of(const std::string &line) {
  std::istringstream stream(line);
  std::vector<std::string> words;
  for (std::string word; stream >> word;)
    words.push_back(word == "''" ? "" : word);
  return words;
}

// What differs from an empty record.
std::string dump(const Options &record) {
  std::string text = "v" + std::to_string(record.verbose()) + " a" +
                     std::to_string(record.algorithm());
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
  const struct {
    std::string line, record;
    std::string messages = "";
  } cases[] = {
      {"ex", "v0 a0 e=ex"},
      {"--verbose --verbose -vv ex", "v4 a0 e=ex"},
      {"-a Winnow ex", "v0 a0 e=ex"},
      {"-a Rocchio ex", "v0 a1 e=ex"},
      {"--algorithm SBC ex", "v0 a2 e=ex"},
      {"-a S -a W ex", "v0 a0 e=ex"},
      {"-p ex", "v0 a0 poll e=ex"},
      {"--poll", "v0 a0 poll"},
      {"-xl -xt ex", "v0 a0 xl xt e=ex"},
      {"--xtesting --xlearning ex", "v0 a0 xl xt e=ex"},
      {"-d one -i two -r three ex", "v0 a0 d=one i=two r=three e=ex"},
      {"--data 1 --input 2 --resource 3 --data ./-4",
       "v0 a0 poll d=./-4 i=2 r=3"},
      {"-d '' '' ex", "v0 a0 e=ex"},
      // The letters count before the one that is wrong.
      {"-verbose -vvx -v-v ex", "v4 a0 e=ex",
       "ERROR: invalid option `-verbose'\nERROR: invalid option `-vvx'\n"
       "ERROR: invalid option `-v-v'\n"}};
  for (const auto &[line, record, messages] : cases) {
    Options options_of_line;
    const std::string told =
        screen([&, &words = line] { parse(options_of_line, words_of(words)); });
    EXPECT_EQ(dump(options_of_line), record) << line;
    EXPECT_EQ(told, messages) << line;
  }
}

// What the whole runs leave: an argument that looks like an option, and options
// behind others.
TEST(Options, EndTheRunForErrors) {
  const std::pair<std::string, std::string> cases[] = {
      {"--algorithm -W", "option `-a' needs an argument"},
      {"ex --input -", "option `-i' needs an argument"},
      {"-pp", "unknown option `-pp'"},
      {"-", "unknown option `-'"},
      {"-%s", "unknown option `-%s'"}};
  for (const auto &[line, message] : cases) {
    EXPECT_EXIT(parse(options, words_of(line)), testing::ExitedWithCode(1),
                testing::Eq("ERROR: " + message + "\nuse `vek -h' for help\n"));
  }
}

}  // namespace
}  // namespace vek

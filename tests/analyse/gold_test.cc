// Quality: the pairs of gold.txt against those that the analysis finds. The
// figures are those of today; a change that makes them worse has to say why,
// and one that makes them better raises them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <string>

#include "analysis_check.h"

namespace vek::analysis {
namespace {

// "[ head , modifier ]" for each pair.
using Pairs = std::multiset<std::string>;

struct Score {
  std::size_t nr_sentences = 0, nr_expected = 0, nr_found = 0, nr_right = 0;
};

Pairs expected_pairs(const std::string &text, const std::string &language) {
  Lexicon lexicon(*find_language(language), Numbers::drop);
  Pairs pairs;
  std::istringstream all(text);
  for (std::string pair; std::getline(all, pair, ';');) {
    std::istringstream words(pair);
    std::string head, modifier;
    words >> head >> modifier;
    head = lexicon.look_up(head).stem;
    modifier = lexicon.look_up(modifier).stem;
    EXPECT_FALSE(head.empty() || modifier.empty()) << pair;
    pairs.insert("[ " + head + " , " + modifier + " ]");
  }
  return pairs;
}

Pairs found_pairs(const std::string &text, const std::string &language) {
  std::istringstream analysis(
      TextAnalyser(language, Terms::pairs).analyse(text));
  Pairs pairs;
  for (std::string pair; std::getline(analysis >> std::ws, pair, ']');)
    pairs.insert(pair + ']');
  return pairs;
}

std::map<std::string, Score> score_by_language() {
  std::map<std::string, Score> scores;
  std::ifstream file(GOLD_FILE);
  std::string sentence;
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#')
      continue;
    if (!line.starts_with("    ")) {
      sentence = line;
      continue;
    }
    const std::string language = sentence.substr(0, 2);
    const Pairs expected = expected_pairs(line, language);
    const Pairs found = found_pairs(sentence.substr(4), language);
    Pairs right;
    std::ranges::set_intersection(expected, found,
                                  std::inserter(right, right.end()));
    Score &score = scores[language];
    ++score.nr_sentences;
    score.nr_expected += expected.size();
    score.nr_found += found.size();
    score.nr_right += right.size();
  }
  return scores;
}

// In per mille, rounded down.
TEST(Gold, PrecisionAndRecallStayWhereTheyAre) {
  const struct {
    const char *language;
    std::size_t nr_sentences, precision, recall;
  } floors[] = {{"en", 20, 573, 870},
                {"de", 18, 607, 944},
                {"nl", 18, 589, 970},
                {"fr", 18, 500, 800}};
  std::map<std::string, Score> scores = score_by_language();
  for (const auto &[language, nr_sentences, precision, recall] : floors) {
    const Score &score = scores[language];
    const std::size_t precise = 1000 * score.nr_right / score.nr_found;
    const std::size_t recalled = 1000 * score.nr_right / score.nr_expected;
    std::cout << language << ": precision " << precise << ", recall "
              << recalled << " per mille of " << score.nr_expected
              << " pairs\n";
    EXPECT_GE(score.nr_sentences, nr_sentences) << language;
    EXPECT_GE(precise, precision) << language;
    EXPECT_GE(recalled, recall) << language;
  }
}

}  // namespace
}  // namespace vek::analysis

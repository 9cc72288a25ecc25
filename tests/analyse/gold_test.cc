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

  void add(const Pairs &expected, const Pairs &found) {
    ++nr_sentences;
    nr_expected += expected.size();
    nr_found += found.size();
    Pairs right;
    std::ranges::set_intersection(expected, found,
                                  std::inserter(right, right.end()));
    nr_right += right.size();
  }
  // In per mille, rounded down.
  std::size_t precision() const { return 1000 * nr_right / nr_found; }
  std::size_t recall() const { return 1000 * nr_right / nr_expected; }
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
    scores[language].add(expected_pairs(line, language),
                         found_pairs(sentence.substr(4), language));
  }
  return scores;
}

TEST(Gold, PrecisionAndRecallStayWhereTheyAre) {
  struct Floor {
    const char *language;
    std::size_t nr_sentences, precision, recall;
  };
  const Floor floors[] = {{"en", 20, 573, 870},
                          {"de", 18, 607, 944},
                          {"nl", 18, 589, 970},
                          {"fr", 18, 500, 800}};
  std::map<std::string, Score> scores = score_by_language();
  for (const Floor &floor : floors) {
    const Score &score = scores[floor.language];
    std::cout << floor.language << ": precision " << score.precision()
              << ", recall " << score.recall() << " per mille of "
              << score.nr_expected << " pairs\n";
    EXPECT_GE(score.nr_sentences, floor.nr_sentences) << floor.language;
    EXPECT_GE(score.precision(), floor.precision) << floor.language;
    EXPECT_GE(score.recall(), floor.recall) << floor.language;
  }
}

}  // namespace
}  // namespace vek::analysis

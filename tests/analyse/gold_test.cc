// Quality: the pairs of gold.txt against those that the analysis finds. The
// figures are those of today; a change that makes them worse has to say why,
// and one that makes them better raises them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <string>

#include "analysis_check.h"

namespace vek::analysis {
namespace {

// "[ head , modifier ]" for each pair.
using Pairs = std::multiset<std::string>;

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

// In per mille, rounded down.
TEST(Gold, PrecisionAndRecallStayWhereTheyAre) {
  const struct {
    std::string language;
    std::size_t nr_sentences, precision, recall;
  } floors[] = {{"en", 20, 573, 870},
                {"de", 18, 607, 944},
                {"nl", 18, 589, 970},
                {"fr", 18, 500, 800}};
  for (const auto &[language, least_sentences, precision, recall] : floors) {
    std::size_t nr_sentences = 0, nr_expected = 0, nr_found = 0, nr_right = 0;
    std::ifstream file(GOLD_FILE);
    for (std::string line, pairs; std::getline(file, line);) {
      if (!line.starts_with(language + ": "))
        continue;
      std::getline(file, pairs);
      const Pairs expected = expected_pairs(pairs, language);
      const Pairs found = found_pairs(line.substr(4), language);
      Pairs right;
      std::ranges::set_intersection(expected, found,
                                    std::inserter(right, right.end()));
      ++nr_sentences;
      nr_expected += expected.size();
      nr_found += found.size();
      nr_right += right.size();
    }
    EXPECT_GE(nr_sentences, least_sentences) << language;
    EXPECT_GE(1000 * nr_right / nr_found, precision) << language;
    EXPECT_GE(1000 * nr_right / nr_expected, recall) << language;
  }
}

}  // namespace
}  // namespace vek::analysis

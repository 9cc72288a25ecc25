// Quality: the pairs of gold.txt against those that the analysis finds. The
// figures are those of today; a change that makes them worse has to say why,
// and one that makes them better raises them.
#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <iostream>
#include <map>
#include <set>
#include <sstream>
#include <string>

#include "analysis_check.h"

namespace vek::analysis {
namespace {

// "[ head , modifier ]" for each pair.
using Pairs = std::multiset<std::string>;

struct Sentence {
  std::string language;
  std::string text;
  std::string pairs;  // as in the file
};

std::vector<Sentence> read_gold() {
  std::ifstream file(GOLD_FILE);
  std::vector<Sentence> sentences;
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#')
      continue;
    if (line.starts_with("    ")) {
      sentences.back().pairs = line.substr(4);
    } else {
      sentences.push_back({line.substr(0, 2), line.substr(4), ""});
    }
  }
  return sentences;
}

Pairs expected_pairs(const std::string &text, Lexicon &lexicon) {
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
  std::string analysis = TextAnalyser(language, Terms::pairs).analyse(text);
  Pairs pairs;
  std::size_t begin = 0;
  for (std::size_t end = analysis.find(']'); end != analysis.npos;
       end = analysis.find(']', begin)) {
    pairs.insert(analysis.substr(begin, end + 1 - begin));
    begin = end + 2;
  }
  return pairs;
}

struct Score {
  std::size_t nr_sentences = 0;
  std::size_t nr_expected = 0;
  std::size_t nr_found = 0;
  std::size_t nr_right = 0;

  void add(const Pairs &expected, const Pairs &found) {
    ++nr_sentences;
    nr_expected += expected.size();
    nr_found += found.size();
    Pairs rest = expected;
    for (const std::string &pair : found) {
      const auto match = rest.find(pair);
      if (match == rest.end())
        continue;
      rest.erase(match);
      ++nr_right;
    }
  }
  // In per mille, rounded down.
  std::size_t precision() const { return 1000 * nr_right / nr_found; }
  std::size_t recall() const { return 1000 * nr_right / nr_expected; }
};

std::map<std::string, Score> score_by_language() {
  std::map<std::string, Score> scores;
  for (const Sentence &sentence : read_gold()) {
    Lexicon lexicon(*find_language(sentence.language), Numbers::drop);
    scores[sentence.language].add(
        expected_pairs(sentence.pairs, lexicon),
        found_pairs(sentence.text, sentence.language));
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

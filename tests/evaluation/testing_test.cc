#include "evaluation/testing.h"

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "support/collection_fixture.h"

namespace vek {
namespace {

std::string text_of(const Ranks &ranks) {
  std::ostringstream os;
  ranks.print("", os);
  std::string text = os.str();
  return text.substr(5, text.size() - 6);
}

TEST(Scores, AreScaledByAThresholdThatCanScale) {
  const struct {
    double score, threshold, scaled;
  } cases[] = {
      {3.0, 2.0, 1.5}, {-3.0, 2.0, -1.5}, {2.0, 2.0, 1.0},   {3.0, 0.0, 4.0},
      {0.0, 0.0, 1.0}, {-2.0, -2.0, 1.0}, {-1.0, -2.0, 2.0}, {-3.0, -2.0, 0.0},
  };
  for (const auto &one : cases) {
    params.set_scaling(true);
    EXPECT_EQ(scaled_score(one.score, one.threshold), one.scaled);
    params.set_scaling(false);
    EXPECT_EQ(scaled_score(one.score, one.threshold), one.score);
  }
}

class Classification : public CollectionTest {
 protected:
  Classification() {
    params.set_algorithm(Algorithm::rocchio);
    params.set_scaling(false);
  }

  // A class whose documents score `weight` for each time that they hold the
  // term, whatever their father.
  ClassData &make_class(const std::string &path, std::uint32_t term,
                        double weight, double threshold) {
    ClassData &data = at(path);
    data.profile[term].pos_weight = weight / std::log(2.0);
    data.profile.set_threshold(threshold);
    for (ClassData *father_P = data.father; father_P != nullptr;
         father_P = father_P->father) {
      father_P->nr_docs = 2;
      father_P->profile[term].df = 1;
    }
    return data;
  }

  // The classes with their scores, and " *" for a significant document.
  std::string classify(const std::vector<TermCount> &terms) {
    DocProfile doc = make_profile(terms);
    Ranks son_scores;
    score_sons(&top(), doc, son_scores);
    son_scores.sort();
    Ranks ranks;
    const bool significant = classify_document(&top(), doc, son_scores, ranks);
    return text_of(ranks) + (significant ? " *" : "");
  }
};

TEST_F(Classification, CutsByThresholdAndNumber) {
  const struct {
    std::vector<double> scores;  // of a, b and c, with thresholds of 1
    std::uint32_t min_ranks, max_ranks;
    std::string expected;
  } cases[] = {
      {{3, 2, 1.5}, 1, 1, "a:3 *"},
      {{3, 2, 1.5}, 0, 9, "a:3 b:2 c:1.5 *"},
      {{0.5, 2, 0.2}, 2, 9, "b:2 a:0.5 *"},
      {{0.5, 0.7, 0.2}, 1, 1, "b:0.7"},
      {{0.5, 0.7, 0.2}, 0, 9, ""},
      // On the threshold: kept, but not significant.
      {{0.5, 1.0, 1.0}, 0, 9, "b:1 c:1"},
      // The maximum is stronger than the minimum.
      {{3, 2, 1.5}, 3, 2, "a:3 b:2 *"},
      {{3, 2, 1.5}, 3, 0, " *"},
  };
  std::vector<ClassData *> sons = {&at("a"), &at("b"), &at("c")};
  for (const bool scaling : {true, false}) {
    params.set_scaling(scaling);
    for (const auto &one : cases) {
      params.set_min_ranks(one.min_ranks);
      params.set_max_ranks(one.max_ranks);
      Ranks given;
      for (std::size_t i = 0; i < 3; ++i)
        given.add(sons[i], one.scores[i]);
      DocProfile doc;
      Ranks ranks;
      const bool significant = classify_document(&top(), doc, given, ranks);
      EXPECT_EQ(text_of(ranks) + (significant ? " *" : ""), one.expected);
    }
  }
}

TEST_F(Classification, ComparesWithTheClassesOwnThresholdUnlessScaled) {
  make_class("a", 1, 3.0, 4.0);
  make_class("b", 1, 1.0, 0.5);
  EXPECT_EQ(classify({{1, 1}}), "a:3 *");
  params.set_scaling(true);
  EXPECT_EQ(classify({{1, 1}}), "b:2 *");
}

TEST_F(Classification, GivesLeavesOfAllLevels) {
  make_class("a", 1, 2.0, 1.0);
  make_class("a/x", 1, 0.75, 1.0);
  make_class("a/y", 2, 5.0, 1.0);
  make_class("b", 1, 0.25, 1.0);
  params.set_max_ranks(9);
  // A level looks at the thresholds of its own classes only: above a's sons the
  // bound for them is 0, so "a/y" stays in front of which "b" would go.
  params.set_min_ranks(1);
  EXPECT_EQ(classify({{1, 1}}), "a/x:0.75 *");
  params.set_min_ranks(2);
  EXPECT_EQ(classify({{1, 1}}), "a/x:0.75 b:0.25 a/y:0 *");
  params.set_min_ranks(0);
  EXPECT_EQ(classify({{1, 1}}), " *");
  EXPECT_EQ(classify({{2, 1}}), "a/y:5 *");
}

// A stored table can be that deep.
TEST_F(Classification, DescendsThroughAHundredThousandLevels) {
  std::uint32_t id = 0;
  for (int level = 0; level < 100000; ++level) {
    id = class_table.enter("x", id);
  }
  DocProfile doc;
  Ranks son_scores;
  score_sons(&top(), doc, son_scores);
  Ranks ranks;
  EXPECT_FALSE(classify_document(&top(), doc, son_scores, ranks));
  ASSERT_EQ(ranks.size(), 1U);
  ClassData *leaf_P = ranks[0].class_data_P;
  EXPECT_EQ(leaf_P->id, id);
  EXPECT_DEATH(classify_document(nullptr, doc, {}, ranks), "class_data_P != 0");
  EXPECT_DEATH(classify_document(leaf_P, doc, {}, ranks),
               "class_data_P->sons.size\\(\\) > 0");
}

// RS/RNS/NRS of a, b and c.
TEST_F(Classification, CountsHitsMissesAndWrongAssignments) {
  const struct {
    std::vector<TermCount> terms;
    std::vector<const char *> filed;
    std::uint32_t max_ranks;
    std::string counts;
  } cases[] = {
      {{{1, 1}}, {"a"}, 1, "1/0/0 0/0/0 0/0/0"},
      {{{1, 1}}, {"b"}, 1, "0/0/1 0/1/0 0/0/0"},
      // Filed twice in one class.
      {{{1, 1}}, {"a", "a"}, 1, "1/1/0 0/0/0 0/0/0"},
      {{{1, 2}, {2, 2}}, {"c", "a"}, 3, "1/0/0 0/0/1 0/1/0"},
      // Not significant: all missed, and nothing assigned, whatever is left.
      {{{3, 1}}, {"a", "c"}, 3, "0/1/0 0/0/0 0/1/0"},
  };
  make_class("a", 1, 2.0, 1.0);
  make_class("b", 2, 2.0, 1.0);
  make_class("c", 3, 0.5, 1.0);
  params.set_min_ranks(1);
  for (const auto &one : cases) {
    const std::string name = "t" + std::to_string(&one - cases);
    store(name, one.terms);
    DocumentMap::ClassList filed;
    for (const char *path : one.filed)
      filed.push_back(&at(path));
    params.set_max_ranks(one.max_ranks);
    ConfusionMatrix matrix;
    std::ostringstream file;
    test_document(&top(), name, filed, matrix, file);
    std::string counts;
    for (const std::uint32_t id : {1U, 2U, 3U}) {
      counts += (counts.empty() ? "" : " ") +
                std::to_string(matrix.nr_correct(id)) + '/' +
                std::to_string(matrix.nr_missed(id)) + '/' +
                std::to_string(matrix.nr_wrong(id));
    }
    EXPECT_EQ(counts, one.counts) << name;
  }
}

TEST_F(Classification, WritesARankFileOverWhatStoodThere) {
  // Without sons there is nothing to test.
  test("t", top());
  test_classes();
  make_class("a", 1, 2.0, 1.0);
  store("t", {{1, 1}});
  write_text("examples/rank0.tmp", std::string(500, 'x'));
  write_text("examples/rank0.dat", "of an earlier run");
  set_verbosity(0);
  test_classes();
  EXPECT_EQ(read_text("examples/rank0.dat"), "t.txt a:2\n");
  EXPECT_FALSE(std::filesystem::exists("examples/rank0.tmp"));
}

TEST_F(Classification, LogsEachTenthOfTheTest) {
  at("a");
  for (int i = 10; i < 32; ++i) {
    store("t" + std::to_string(i), {});
    test("t" + std::to_string(i), top());
  }
  std::ostringstream file;
  test_class(&top(), file);
  const std::string lines = log_lines("Testing on <top> ");
  EXPECT_TRUE(lines.starts_with("Testing on <top> 10% complete\n"));
  EXPECT_TRUE(lines.ends_with("Testing on <top> 110% complete\n"));
}

}  // namespace
}  // namespace vek

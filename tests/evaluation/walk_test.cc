#include "evaluation/walk.h"

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "base/messages.h"
#include "support/collection_fixture.h"

namespace vek {
namespace {

class WalkTest : public CollectionTest, protected WalkObserver {
 protected:
  WalkTest() { params.scaling = false; }

  // A class whose documents score `weight` for each time that they hold the
  // term, whatever their father.
  void make_class(const std::string &path, std::uint32_t term, double weight,
                  double threshold) {
    ClassData &data = at(path);
    data.profile[term].pos_weight = weight / std::log(2.0);
    data.profile.set_threshold(threshold);
    for (ClassData *father_P = data.father; father_P != nullptr;
         father_P = father_P->father) {
      father_P->nr_docs = 2;
      father_P->profile[term].df = 1;
    }
  }

  // The classes with their scores, and "*" for a significant document.
  std::string classify(DocProfile doc, const Ranks &scores_of_sons) {
    Ranks ranks;
    const bool significant =
        Walk(pos_weight_sum, params)
            .classify(top(), doc, scores_of_sons, ranks, this);
    return text_of(ranks) + (significant ? "*" : "");
  }
  std::string classify(DocProfile doc) {
    Ranks ranks;
    Walk(pos_weight_sum, params).score_sons(top(), doc, ranks);
    return classify(doc, ranks);
  }

  // The steps, a line each.
  std::string steps;

 private:
  std::string text_of(const Ranks &ranks) const {
    const std::string line = ranks.line("", classes);
    return line.substr(5, line.size() - 6) + ' ';
  }
  std::string text_of(const Ranking &ranking) const {
    Ranks ranks;
    ranks.push_back(ranking);
    return text_of(ranks);
  }
  void scored(const ClassData &father, const Ranks &ranks) override {
    steps += classes.full_name(father.id) + " has " + text_of(ranks) + '\n';
  }
  void entered(const ClassData &, const Ranking &ranking,
               WeightType threshold) override {
    steps += text_of(ranking) + formatted("by %g\n", threshold);
  }
  void cut(const ClassData &father, const Ranking &ranking, Cut reason,
           WeightType least) override {
    steps += classes.full_name(father.id) + " drops " + text_of(ranking) +
             (reason == Cut::max_ranks ? "\n" : formatted("for %g\n", least));
  }
};

TEST_F(WalkTest, CutsByThresholdAndNumber) {
  const struct {
    std::vector<double> scores;  // of a, b and c, with thresholds of 1
    std::uint32_t min_ranks, max_ranks;
    std::string expected;
  } cases[] = {
      {{3, 2, 1.5}, 1, 1, "a:3 *"},
      {{3, 2, 1.5}, 0, 9, "a:3 b:2 c:1.5 *"},
      {{0.5, 2, 0.2}, 2, 9, "b:2 a:0.5 *"},
      {{0.5, 0.7, 0.2}, 0, 9, " "},
      // On the threshold: kept, but not significant.
      {{0.5, 1.0, 1.0}, 0, 9, "b:1 c:1 "},
      // The maximum is stronger than the minimum.
      {{3, 2, 1.5}, 3, 2, "a:3 b:2 *"},
      {{3, 2, 1.5}, 3, 0, " *"},
  };
  const ClassData *sons[] = {&at("a"), &at("b"), &at("c")};
  for (const auto &one : cases) {
    params.min_ranks = one.min_ranks;
    params.max_ranks = one.max_ranks;
    Ranks given;
    for (std::size_t i = 0; i < 3; ++i)
      given.add(sons[i], one.scores[i]);
    EXPECT_EQ(classify({}, given), one.expected);
  }
}

TEST_F(WalkTest, GivesLeavesOfAllLevelsAndTellsItsSteps) {
  make_class("a", 1, 2.0, 1.5);
  make_class("a/x", 1, 0.75, 1.0);
  make_class("a/y", 2, 5.0, 1.0);
  make_class("b", 1, 0.25, 0.5);
  const std::string on_the_way =
      "top has a:2 b:0.25 \n"
      "a:2 by 1.5\n"
      "a has a/x:0.75 a/y:0 \n"
      "a/x:0.75 by 1\n"
      "a/y:0 by 1\n";
  // A level looks at the thresholds of its own classes only: above a's sons the
  // bound for them is 0, so "a/y" stays in front of which "b" would go.
  const struct {
    std::uint32_t min_ranks, max_ranks;
    std::string expected, in_a, in_top;
  } cases[] = {
      {2, 9, "a/x:0.75 b:0.25 a/y:0 *", "", ""},
      {2, 1, "a/x:0.75 *", "a drops a/y:0 \n", "top drops b:0.25 \n"},
      {1, 9, "a/x:0.75 *", "a drops a/y:0 for 1\n",
       "top drops b:0.25 for 0.5\n"},
  };
  for (const auto &one : cases) {
    params.min_ranks = one.min_ranks;
    params.max_ranks = one.max_ranks;
    steps.clear();
    EXPECT_EQ(classify(make_profile({{1, 1}})), one.expected);
    EXPECT_EQ(steps, on_the_way + one.in_a + "b:0.25 by 0.5\n" + one.in_top);
  }
  // In units of the thresholds.
  params.scaling = true;
  EXPECT_EQ(classify(make_profile({{1, 3}, {2, 1}})), "a/y:5 a/x:2.25 b:1.5 *");
}

// A stored table can be that deep.
TEST_F(WalkTest, DescendsThroughAHundredThousandLevels) {
  std::uint32_t id = 0;
  for (int level = 0; level < 100000; ++level)
    id = classes.enter("x", id);
  Ranks scores_of_sons, ranks;
  scores_of_sons.add(top().sons[0], 2.0);
  DocProfile doc;
  EXPECT_TRUE(
      Walk(pos_weight_sum, params).classify(top(), doc, scores_of_sons, ranks));
  EXPECT_EQ(ranks.at(0).class_data_P->id, id);
}

}  // namespace
}  // namespace vek

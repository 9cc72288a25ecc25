#include "evaluation/judge.h"

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "base/textio.h"
#include "support/collection_fixture.h"

namespace vek {
namespace {

// a with the sons a/x and a/y, b with its only son b/z.
class JudgeTest : public CollectionTest {
 protected:
  JudgeTest() {
    for (const char *path : {"a/x", "a/y", "b/z"})
      at(path);
    params.walk = WalkKind::path;
    judging.classes.resize(classes.size());
    // Scores are logits.
    for (ClassJudging &one : judging.classes) {
      one.calibration.factor = 1.0;
      one.calibration.offset = 0.0;
    }
  }
  // By the scores of a, a/x, a/y, b and b/z; and what is assigned.
  std::string judge(const std::vector<WeightType> &row_scores) {
    std::vector<WeightType> row(classes.size());
    const char *const paths[] = {"a", "a/x", "a/y", "b", "b/z"};
    for (std::size_t i = 0; i < row_scores.size(); ++i)
      row[at(paths[i]).id] = row_scores[i];
    Judge one(classes, pos_weight_sum, params, judging);
    Answer answer;
    one.judge_scores(row, answer);
    std::string text = answer.significant ? "" : "no ";
    for (const Ranking &ranking : one.assigned(answer)) {
      text += classes.full_name(ranking.class_data_P->id) + ':';
      append_real(text, ranking.score, 3);
      text += ' ';
    }
    return text;
  }

  Judging judging;
};

TEST_F(JudgeTest, ComparesLeavesByTheirWholePath) {
  params.max_ranks = 3;
  // a/x is best among its brothers, and yet b/z is the answer.
  EXPECT_EQ(judge({-1, 1, 0, 1, -9}), "b/z:0.881 ");
  EXPECT_EQ(judge({1, 2, -2, -1, 0}), "a/x:0.865 ");
  judging.classes[at("a/x").id].threshold = 0.3;
  judging.classes[at("a/y").id].threshold = 0.3;
  EXPECT_EQ(judge({2, 0, 0, -2, 0}), "a/x:0.491 a/y:0.491 ");
  params.max_ranks = 1;
  EXPECT_EQ(judge({2, 0, 0, -2, 0}), "a/x:0.491 ");
  // Each by itself.
  judging.share = false;
  params.max_ranks = 3;
  EXPECT_EQ(judge({2, 2, 2, 2, 0}), "b/z:0.881 a/x:0.776 a/y:0.776 ");
  // A score that is no number is a leaf's worst.
  EXPECT_EQ(judge({2, std::numeric_limits<double>::quiet_NaN(), 2, -2, 0}),
            "a/y:0.776 ");
}

TEST_F(JudgeTest, LetsAClassHearItsSons) {
  judging.classes[at("a").id].calibration.inclusion = 1.0;
  EXPECT_EQ(judge({0, 3, 3, 0, 0}), "no ");
  judging.classes[at("a/x").id].threshold = 0.4;
  EXPECT_EQ(judge({0, 3, 3, 0, 0}), "a/x:0.488 ");
}

// As a test list can name them in a run that does not learn.
TEST_F(JudgeTest, KnowsNothingOfClassesThatCameLater) {
  params.max_ranks = 3;
  // b hears the sons of its only son.
  judging.classes.resize(classes.size() + 2);
  for (const char *path : {"b/z/v", "b/z/w"})
    judging.classes[at(path).id].calibration.offset = 0.0;
  judging.classes[at("b").id].calibration.factors_of_sons = {0.0, 0.0};
  judging.classes[at("a/x").id].threshold = 0.3;
  const std::string before = judge({1, 2, -2, 1, 0});
  EXPECT_EQ(before, "a/x:0.491 ");
  judging.algorithm = Algorithm::rocchio;
  const std::string text = judging.text();
  for (const char *path : {"c", "b/new", "b/z/new", "a/new/new"})
    at(path);
  EXPECT_EQ(judge({1, 2, -2, 1, 0}), before);
  Judging read;
  EXPECT_TRUE(read.parse(text, classes));
  EXPECT_EQ(read, judging);
}

TEST_F(JudgeTest, GivesTheBestClassIfAskedTo) {
  EXPECT_EQ(judge({0, 0, 0, 0.1, 0}), "b/z:0.525 ");
  judging.classes[at("b/z").id].threshold = 0.6;
  EXPECT_EQ(judge({0, 0, 0, 0.1, 0}), "no ");
  params.insignificant = Insignificant::best;
  EXPECT_EQ(judge({0, 0, 0, 0.1, 0}), "no b/z:0.525 ");
  params.min_ranks = 0;
  EXPECT_EQ(judge({0, 0, 0, 0.1, 0}), "no ");
}

TEST_F(JudgeTest, TakesSharesOfScoresWhereNothingWasLearnt) {
  judging = {};
  for (const char *path : {"a", "b", "a/x", "a/y", "b/z"})
    at(path).profile.set_threshold(2.0);
  // a has 4 of 5 parts, a/x 9 of 10.
  EXPECT_EQ(judge({4, 6, 2, 2, -1}), "a/x:0.72 ");
  EXPECT_EQ(judge({2, 1, -5, 1, 1}), "no ");
  params.insignificant = Insignificant::best;
  EXPECT_EQ(judge({2, 1, -5, 1, 1}), "no a/x:0.8 ");
  EXPECT_EQ(judge({0, 0, 0, 0, 0}), "no b/z:0.5 ");
}

TEST_F(JudgeTest, IsKeptAsText) {
  judging.nr_parts = 5;
  judging.share = false;
  judging.classes[2].calibration.slopes = {0.1, 1.0 / 3, 0.0};
  judging.classes[3].threshold = 1e-3;
  judging.algorithm = Algorithm::rocchio;
  judging.classes[1].calibration.factors_of_sons = {0.5, -2.0};
  const std::string text = judging.text();
  Judging read;
  EXPECT_TRUE(read.parse(text, classes));
  EXPECT_EQ(read, judging);
  EXPECT_FALSE(read.parse(text, ClassTable()));
  EXPECT_EQ(read, Judging());
  const std::pair<const char *, const char *> changes[] = {
      {"judging 2", "judging 3"},
      {"\t0\t6\t1\n", "\t2\t6\t1\n"},
      {"\t0\t6\t1\n", "\t0\t6\t4\n"},
      {"\t2\t0.5\t-2", "\t1\t0.5"},
      {"\t2\t0.5\t-2", "\t2\t0.5\t"},
      {"0.1", "nan"},
      {"0.001", "-0.001"},
      {"0.001", "2"}};
  for (const auto &[from, to] : changes) {
    std::string damaged = text;
    damaged.replace(damaged.find(from), std::string(from).size(), to);
    EXPECT_FALSE(read.parse(damaged, classes)) << from;
  }
  EXPECT_FALSE(read.parse(text + "1", classes));
  // Without algorithm and factors of sons.
  std::string older = "vek-judging 1\n5\t1\t6\n";
  for (int i = 0; i < 6; ++i)
    older += "0\t-1\t1\t1\t1\t-2\t0\t0.5\n";
  ASSERT_TRUE(read.parse(older, classes));
  EXPECT_FALSE(read.algorithm);
  // Numbers of any size make no score that is no number.
  judging.classes[2].calibration.slopes = {1e308, 1e308, 1e308};
  judging.classes[2].calibration.intercept = 1e308;
  judging.classes[2].calibration.inclusion = -1e308;
  ASSERT_TRUE(read.parse(judging.text(), classes));
  const Calibration &curve = read.classes[2].calibration;
  EXPECT_TRUE(std::abs(curve.logit(100.0, 30.0)) <= 60.0);
  EXPECT_FALSE(read.parse(text.substr(0, text.size() - 4), classes));
}

}  // namespace
}  // namespace vek

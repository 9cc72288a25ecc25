#include "evaluation/calibration.h"

#include <cmath>
#include <limits>
#include <vector>

#include "base/exponential.h"
#include "support/collection_fixture.h"

namespace vek {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

// Documents whose probability is that of the logit at their score.
template <class Logit>
CalibrationColumn draw(unsigned seed, std::size_t nr_docs, Logit logit) {
  Dice dice(seed);
  CalibrationColumn column;
  for (std::size_t i = 0; i < nr_docs; ++i) {
    const double score = dice(10000) / 1000.0 - 5.0;
    column.scores.push_back(score);
    column.is_member.push_back(dice(100000) / 1e5 < logistic(logit(score)));
  }
  return column;
}

double largest_error(const Calibration &curve, double (*logit)(double)) {
  double worst = 0.0;
  for (double score = -4.5; score <= 4.5; score += 0.1) {
    worst = std::max(worst, std::abs(logistic(curve.logit(score, 0.0)) -
                                     logistic(logit(score))));
  }
  return worst;
}

TEST(Calibration, FindsTheCurveThatTheDocumentsFollow) {
  const auto straight = [](double score) { return 1.5 * score - 1.0; };
  const auto bent = [](double score) {
    return score < 0.0 ? 3.0 * score - 1.0 : 0.7 * score - 1.0;
  };
  CalibrationColumn column = draw(1, 100000, straight);
  EXPECT_LT(largest_error(fit_logistic(column), straight), 0.01);
  EXPECT_LT(largest_error(fit_sons({{column}}, false)[0], straight), 0.015);
  column = draw(2, 100000, bent);
  EXPECT_LT(largest_error(fit_sons({{column}}, false)[0], bent),
            0.9 * largest_error(fit_logistic(column), bent));
}

// What is predicted adds up to what there is, for each class: the condition
// that the intercept of a maximum fulfils.
TEST(Calibration, SharesTheProbabilityAmongBrothers) {
  Dice dice(3);
  std::vector<CalibrationColumn> columns(3);
  const std::size_t nr_docs = 3000;
  for (std::size_t i = 0; i < nr_docs; ++i) {
    const std::uint32_t own = dice(10) < 6 ? 0 : 1 + dice(2);
    for (std::uint32_t son = 0; son < 3; ++son) {
      columns[son].scores.push_back(dice(1000) / 500.0 + (son == own ? 1 : 0));
      columns[son].is_member.push_back(son == own);
    }
  }
  const std::vector<Calibration> curves = fit_sons(columns, true);
  double sums[3] = {};
  double actual[3] = {};
  for (std::size_t i = 0; i < nr_docs; ++i) {
    double values[3];
    for (std::size_t son = 0; son < 3; ++son) {
      values[son] = curves[son].logit(columns[son].scores[i], 0.0);
      actual[son] += columns[son].is_member[i];
    }
    logits_to_probabilities(values, true);
    EXPECT_NEAR(values[0] + values[1] + values[2], 1.0, 1e-12);
    for (std::size_t son = 0; son < 3; ++son)
      sums[son] += values[son];
  }
  for (std::size_t son = 0; son < 3; ++son)
    EXPECT_NEAR(sums[son], actual[son], 3.0) << son;
}

TEST(Calibration, HearsTheSons) {
  Dice dice(4);
  CalibrationColumn column;
  for (int i = 0; i < 4000; ++i) {
    const bool is_member = dice(2) == 0;
    column.scores.push_back(dice(1000) / 1000.0);  // tells nothing
    column.inclusive.push_back(dice(1000) / 250.0 + (is_member ? 2.0 : 0.0));
    column.is_member.push_back(is_member);
  }
  const Calibration curve = fit_sons({{column}}, false)[0];
  EXPECT_GT(curve.inclusion, 0.5);
  EXPECT_LT(curve.logit(0.5, 0.0), curve.logit(0.5, 5.0));
}

// One son speaks for the class, the other one against it; their units differ.
TEST(Calibration, HearsEachSonByAFactorOfItsOwn) {
  Dice dice(5);
  CalibrationColumn column;
  column.scores_of_sons.resize(2);
  for (int i = 0; i < 4000; ++i) {
    const bool is_member = dice(2) == 0;
    const double sign = is_member ? 1.0 : -1.0;
    column.scores.push_back(dice(1000) / 1000.0);  // tells nothing
    column.is_member.push_back(is_member);
    column.scores_of_sons[0].push_back(dice(1000) / 500.0 + sign + 7.0);
    column.scores_of_sons[1].push_back(50.0 * (dice(1000) / 500.0 - sign));
  }
  const Calibration curve = fit_sons({{column}}, false)[0];
  int nr_right = 0;
  for (std::size_t i = 0; i < column.scores.size(); ++i) {
    const double sons[] = {column.scores_of_sons[0][i],
                           column.scores_of_sons[1][i]};
    const double logit = curve.logit(column.scores[i], 0.0, sons);
    nr_right += (logit > 0.0) == (column.is_member[i] != 0) ? 1 : 0;
  }
  EXPECT_GT(nr_right, 3700);
  EXPECT_NEAR(curve.factors_of_sons[0] / curve.factors_of_sons[1], -50.0, 10.0);
}

TEST(Calibration, HoldsWhereThereIsLittleToFit) {
  const struct {
    CalibrationColumn column;
    double least, most;  // the logit at a score of 1
  } cases[] = {
      {{}, Calibration::hopeless, Calibration::hopeless},
      {{{1, 2, 3}, {}, {0, 0, 0}},
       Calibration::hopeless,
       Calibration::hopeless},
      {{{1}, {}, {1}}, -1.0, 4.0},
      {{{1, 1, 1, 1}, {}, {1, 0, 1, 0}}, -0.5, 0.5},
      // The mean of these is another number, by its last digit.
      {{{.2, .2, .2, .2, .2, .2}, {}, {1, 0, 0, 0, 0, 0}}, -3.0, 0.0},
      {{{.2, .2, .2, .2, .2, .2, .2}, {}, {0, 0, 0, 0, 0, 0, 1}}, -3.0, 0.0},
      // The wrong way round: the score says nothing.
      {{{0, 1, 2, 3}, {}, {1, 1, 0, 0}}, -0.5, 0.5},
      {{{infinity, 1, std::nan(""), 0}, {}, {1, 1, 0, 0}}, -3.0, 6.0},
      {{{1e308, -1e308, 1}, {}, {1, 0, 0}}, -60.0, 60.0},
  };
  for (const auto &one : cases) {
    for (const bool share : {false, true}) {
      const CalibrationColumn columns[] = {one.column, one.column};
      for (const Calibration &curve : fit_sons(columns, share)) {
        const double logit = curve.logit(1.0, 0.0);
        EXPECT_TRUE(logit >= one.least && logit <= one.most)
            << &one - cases << ' ' << share << ' ' << logit;
        EXPECT_LT(curve.logit(std::nan(""), 0.0), -10.0);
      }
    }
  }
}

TEST(BreakEven, LetsInAsManyAsThereAre) {
  const struct {
    CalibrationColumn column;
    double point;
  } cases[] = {
      {{{3, 2, 1, 0}, {}, {1, 1, 0, 0}}, 1.5},
      {{{3, 2, 1, 0}, {}, {1, 0, 1, 0}}, 1.5},
      {{{5, 4}, {}, {1, 1}}, 4},
      {{{5, infinity, 1}, {}, {0, 1, 1}}, 3},
      {{{5}, {}, {0}}, infinity},
      {{}, infinity},
  };
  for (const auto &one : cases)
    EXPECT_EQ(break_even(one.column), one.point) << &one - cases;
}

}  // namespace
}  // namespace vek

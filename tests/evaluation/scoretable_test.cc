#include "evaluation/scoretable.h"

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "support/collection_fixture.h"
#include "support/plain_threshold.h"

namespace vek {
namespace {

using Values = std::vector<WeightType>;

ScoreTable make_table(const Values &pos, const Values &neg) {
  ScoreTable table;
  table.pos = pos;
  table.neg = neg;
  table.complete();
  return table;
}

// "none", or the threshold by its bits.
std::string threshold_of(const ScoreTable &table) {
  return table.has_threshold() ? exact(table.determine_threshhold()) : "none";
}

TEST(ScoreTable, PutsTheThresholdWhereBothSidesErrAlike) {
  const struct {
    Values pos, neg;
    double threshold;
  } cases[] = {
      {{2, 3, 4}, {1, 2}, 3.0 * (2.0 + 1.0 / 3.0) / 3},
      {{5}, {1}, 4.0},
      // Edges count from 0, not from the lowest score.
      {{10, 11}, {9, 9.5}, 2.0 * (1.0 + 2.0 / 3.0) / 2},
      {{-3, -2}, {-5, -4}, 0.75},
      // An edge at which both are equal is the upper one.
      {{1, 3, 3, 4}, {0, 1, 2}, 2.0},
  };
  for (const auto &[pos, neg, threshold] : cases)
    EXPECT_EQ(threshold_of(make_table(pos, neg)), exact(threshold));
}

TEST(ScoreTable, HasNoThresholdWhereNothingCrosses) {
  const double infinity = std::numeric_limits<double>::infinity();
  const double largest = std::numeric_limits<double>::max();
  const double nan = std::nan("");
  const std::vector<ScoreTable> tables = {
      make_table({}, {1}),
      make_table({1}, {}),
      make_table({1}, {1}),
      make_table({2, 2, 2}, {2, 2}),
      make_table({1, 1}, {3}),
      make_table({1, nan, 2}, {0}),
      make_table({1, 2}, {nan, 0, nan}),
      make_table({1, infinity}, {0}),
      make_table({1, 2}, {0, -infinity}),
      // Finite, but not their width.
      make_table({largest}, {-largest}),
  };
  for (const ScoreTable &table : tables)
    EXPECT_FALSE(table.has_threshold());
  EXPECT_DEATH(tables[0].determine_threshhold(), "pos.size\\(\\)");
  EXPECT_DEATH(tables[1].determine_threshhold(), "neg.size\\(\\)");
}

TEST(ScoreTable, AgreesWithThePlainThresholdToTheLastBit) {
  Dice dice(3);
  int nr_without = 0;
  for (int round = 0; round < 2000; ++round) {
    // Few different values make ties; the shift makes them all negative, mixed
    // or far above 0.
    const std::uint32_t nr_values = 1 + dice(dice(3) == 0 ? 2 : 40);
    const double shift = (int(dice(5)) - 2) * 10.0;
    const std::uint32_t spread = 1 + 3 * dice(2);
    const double scale = dice(2) == 0 ? 1.0 : 1.0 / 3.0;
    Values pos;
    Values neg;
    for (std::uint32_t k = 1 + dice(25); k-- > 0;) {
      pos.push_back((dice(nr_values) + shift) * scale);
    }
    for (std::uint32_t k = 1 + dice(50); k-- > 0;) {
      neg.push_back((dice(nr_values) + shift - dice(spread)) * scale);
    }
    const auto expected = PlainThreshold::threshold(pos, neg);
    EXPECT_EQ(threshold_of(make_table(pos, neg)),
              expected ? exact(*expected) : "none")
        << "round " << round;
    nr_without += expected ? 0 : 1;
  }
  EXPECT_GT(nr_without, 10);
}

using LeafThresholds = CollectionTest;

TEST_F(LeafThresholds, ComeFromAllDocumentsRead) {
  params.set_algorithm(Algorithm::rocchio);
  store("d1", {{1, 1}});
  store("d2", {{1, 2}, {2, 1}});
  store("d3", {{3, 1}});
  train("d1", at("a"));
  train("d2", at("a/x"));
  train("d2", at("b"));
  train("d3", at("b"));
  at("untrained");
  gather();
  for (const char *path : {"a", "a/x", "b", "untrained"}) {
    at(path).profile[1].pos_weight = 1.0 / std::log(3.0 / 2);
    at(path).profile.set_threshold(0.5);
  }
  for (const char *name : {"d3", "d1", "d2"})
    data_base.get(name)->weigh(0);
  set_leaf_thresholds();
  // Of a father when asked for.
  ScoreTable().collect(&at("a"));
  scores.close();
  EXPECT_EQ(read_text("scores.dat"),
            "b + 0 2 \nb - 1 \n"
            "untrained + \nuntrained - 0 1 2 \n"
            "x + 2 \nx - 0 1 \n"
            "a + 1 2 \na - 0 \n");
  EXPECT_EQ(log_lines("Class "),
            "Class b threshhold 1.000000\n"
            "Class untrained threshhold 0.500000\n"
            "Class x threshhold 2.000000\n");
}

}  // namespace
}  // namespace vek

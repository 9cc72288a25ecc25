#include "evaluation/thresholds.h"

#include <cmath>
#include <limits>
#include <optional>
#include <vector>

#include "support/collection_fixture.h"

namespace vek {
namespace {

using Values = std::vector<WeightType>;
using Threshold = std::optional<WeightType>;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double largest = std::numeric_limits<double>::max();

Threshold threshold_of(const Values &pos, const Values &neg) {
  ScoreTable table;
  table.pos = pos;
  table.neg = neg;
  table.complete();
  return table.threshold();
}

TEST(ScoreTable, HasItsThresholdWhereMissesAndWrongAssignmentsCross) {
  const struct {
    Values pos, neg;
    Threshold expected;
  } cases[] = {
      {{2, 3, 4}, {1, 2}, 3.0 * (2.0 + 1.0 / 3.0) / 3},
      {{-1, 1}, {-1, 2}, 0.5},
      {{2, 2}, {0}, 1.0},
      {{0}, {0, 0}, 0.0},
      {{0}, {-1, -1, -1}, 0.75},
      {{1, 2}, {1, 2}, 0.75},
      {{1, 3, 3, 4, 6, 8, 9}, {0, 0, 1, 2, 2, 4, 5, 5}, 9.0 * 3.0 / 7},
      {{-2, -1, 1, 2, 2.5}, {-8, -5, -3, -2, 0, 1}, 1.26},
      {{0.5, 1.25, 2, 2, 3.5}, {0, 0.75, 1.5, 1.5}, 1.4},
      // They never cross.
      {{0, 0}, {0}, {}},
      {{20, 20}, {23}, {}},
      {{}, {1}, {}},
      {{1}, {}, {}},
      // Scores without bounds, and finite ones whose width is not.
      {{1, std::nan(""), 2}, {0}, {}},
      {{1, infinity}, {0}, {}},
      {{1, 2}, {0, -infinity}, {}},
      {{largest}, {-largest}, {}},
  };
  for (const auto &[pos, neg, expected] : cases) {
    EXPECT_EQ(threshold_of(pos, neg), expected)
        << testing::PrintToString(pos) << testing::PrintToString(neg);
  }
}

using LeafThresholds = CollectionTest;

TEST_F(LeafThresholds, ComeFromAllDocumentsRead) {
  train("d1", {{1, 1}}, {"a"});
  train("d2", {{1, 2}, {2, 1}}, {"a/x", "b"});
  train("d3", {{3, 1}}, {"b"});
  gather();
  for (const char *path : {"a", "a/x", "b", "untrained"}) {
    at(path).profile[1].pos_weight = 1.0 / std::log(3.0 / 2);
    at(path).profile.set_threshold(0.5);
  }
  for (const char *name : {"d3", "d1", "d2"})
    documents.get(name)->weigh(top(), params);
  set_leaf_thresholds(classes, documents.cache(), pos_weight_sum, params,
                      scores, messages);
  EXPECT_EQ(scores.str(),
            "b + 0 2 \nb - 1 \n"
            "untrained + \nuntrained - 0 1 2 \n"
            "x + 2 \nx - 0 1 \n");
  EXPECT_EQ(at("a/x").profile.threshold(), 2.0);
  EXPECT_EQ(at("untrained").profile.threshold(), 0.5);
}

}  // namespace
}  // namespace vek

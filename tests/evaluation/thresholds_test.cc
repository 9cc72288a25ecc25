#include "evaluation/thresholds.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <iterator>
#include <limits>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "support/collection_fixture.h"

namespace vek {
namespace {

using Values = std::vector<WeightType>;
using Threshold = std::optional<WeightType>;

Threshold threshold_of(const Values &pos, const Values &neg) {
  ScoreTable table;
  table.pos = pos;
  table.neg = neg;
  table.complete();
  return table.threshold();
}

// The same for finite scores, said plainly and only to be compared with.
Threshold plain_threshold(const Values &pos, const Values &neg) {
  const auto count = [](const Values &values, double low, double high) {
    return std::ranges::count_if(
        values, [&](WeightType x) { return low <= x && x < high; });
  };
  const auto n = std::ssize(pos);
  const WeightType min = std::min(pos.front(), neg.front());
  const WeightType max = std::max(pos.back(), neg.back());
  const WeightType w = max - min;
  const auto edge = [&](long i, double first, double last) {
    return i == 0 ? first : i == n ? last : (double(i) * w) / double(n);
  };
  std::map<long, long> below, above;
  for (long i = 1; i <= n; ++i) {
    below[i] = below[i - 1] +
               count(pos, edge(i - 1, min, max), edge(i, min, max + DBL_MIN));
  }
  for (long i = n - 1; i >= 0; --i) {
    above[i] = above[i + 1] +
               count(neg, edge(i, min - DBL_MIN, max), edge(i + 1, min, max));
  }
  long first = 0, last = n;
  while (last - first > 1) {
    const long middle = (first + last) / 2;
    (above[middle] > below[middle] ? first : last) = middle;
  }
  const auto a = double(above[first] - below[first]);
  const auto b = double(below[last] - above[last]);
  if (a + b == 0.0)
    return {};
  return (w * (double(first) + a / (a + b))) / double(n);
}

// All ascending lists of up to `most` of the numbers 0 to 3, moved and scaled.
std::vector<Values> all_lists(std::size_t most, double shift, double scale) {
  std::vector<Values> lists = {{}};
  for (std::size_t i = 0; i < lists.size(); ++i) {
    for (int k = 0; k < 4 && lists[i].size() < most; ++k) {
      const double next = (k + shift) * scale;
      if (!lists[i].empty() && next < lists[i].back())
        continue;
      lists.push_back(lists[i]);
      lists.back().push_back(next);
    }
  }
  lists.erase(lists.begin());
  return lists;
}

TEST(ScoreTable, AgreesWithThePlainThresholdForAllSmallTables) {
  int nr_without = 0;
  // All negative, on both sides, and far above 0; also with fractions.
  for (const double shift : {-9.0, -1.0, 0.0, 20.0}) {
    for (const double scale : {1.0, 1.0 / 3.0}) {
      const std::vector<Values> neg_lists = all_lists(4, shift, scale);
      for (const Values &pos : all_lists(6, shift, scale)) {
        for (const Values &neg : neg_lists) {
          const Threshold expected = plain_threshold(pos, neg);
          ASSERT_EQ(threshold_of(pos, neg), expected);
          nr_without += expected ? 0 : 1;
        }
      }
    }
  }
  EXPECT_GT(nr_without, 10);
  // Worked out by hand: edges stand at 0, 1, 2 and 3.
  EXPECT_EQ(threshold_of({2, 3, 4}, {1, 2}), 3.0 * (2.0 + 1.0 / 3.0) / 3);
}

TEST(ScoreTable, HasNoThresholdOfScoresWithoutBounds) {
  const double infinity = std::numeric_limits<double>::infinity();
  const double largest = std::numeric_limits<double>::max();
  const std::pair<Values, Values> tables[] = {
      {{}, {1}},
      {{1}, {}},
      {{1, std::nan(""), 2}, {0}},
      {{1, infinity}, {0}},
      {{1, 2}, {0, -infinity}},
      // Finite, but not their width.
      {{largest}, {-largest}},
  };
  for (const auto &[pos, neg] : tables)
    EXPECT_FALSE(threshold_of(pos, neg));
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
  EXPECT_EQ(messages.lines("Class "),
            "Class b threshhold 1.000000\n"
            "Class untrained threshhold 0.500000\n"
            "Class x threshhold 2.000000\n");
}

}  // namespace
}  // namespace vek

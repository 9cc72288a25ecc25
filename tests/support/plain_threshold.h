// The threshold of a class said plainly, on multisets: only there to be
// compared with.
#ifndef VEK_TESTS_SUPPORT_PLAIN_THRESHOLD_H_
#define VEK_TESTS_SUPPORT_PLAIN_THRESHOLD_H_

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <map>
#include <optional>
#include <set>
#include <vector>

#include "run/helpers.h"

namespace vek {

struct PlainThreshold {
  using Scores = std::multiset<WeightType>;

  static int count_scores(const Scores &values, WeightType low,
                          WeightType high) {
    return static_cast<int>(std::ranges::count_if(
        values, [&](WeightType x) { return low <= x && x < high; }));
  }

  // Nothing where no threshold can be computed.
  static std::optional<WeightType> threshold(
      const std::vector<WeightType> &pos_values,
      const std::vector<WeightType> &neg_values) {
    const auto is_finite = [](WeightType x) { return std::isfinite(x); };
    if (pos_values.empty() || neg_values.empty() ||
        !std::ranges::all_of(pos_values, is_finite) ||
        !std::ranges::all_of(neg_values, is_finite))
      return {};
    const Scores pos(pos_values.begin(), pos_values.end());
    const Scores neg(neg_values.begin(), neg_values.end());
    const int n = static_cast<int>(pos.size());
    const WeightType max_score = std::max(*pos.rbegin(), *neg.rbegin());
    const WeightType min_score = std::min(*pos.begin(), *neg.begin());
    const WeightType w = max_score - min_score;
    std::map<int, int> below;
    std::map<int, int> above;
    WeightType low = min_score;
    for (int i = 1; i <= n; ++i) {
      const WeightType high = i == n ? max_score + DBL_MIN : (i * w) / n;
      below[i] = below[i - 1] + count_scores(pos, low, high);
      low = high;
    }
    WeightType high = max_score;
    for (int i = n - 1; i >= 0; --i) {
      low = i == 0 ? min_score - DBL_MIN : (i * w) / n;
      above[i] = above[i + 1] + count_scores(neg, low, high);
      high = low;
    }
    int first = 0;
    int last = n;
    while (last - first > 1) {
      const int middle = (first + last) / 2;
      (above[middle] > below[middle] ? first : last) = middle;
    }
    const double a = above[first] - below[first];
    const double b = below[last] - above[last];
    if (a + b == 0.0)
      return {};
    const double x = first + a / (a + b);
    return ((max_score - min_score) * x) / n;
  }
};

}  // namespace vek

#endif  // VEK_TESTS_SUPPORT_PLAIN_THRESHOLD_H_

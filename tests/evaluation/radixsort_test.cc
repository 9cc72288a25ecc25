#include "evaluation/radixsort.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace vek {
namespace {

TEST(RadixSort, OrdersAsComparingDoes) {
  std::mt19937_64 random(5);
  for (const std::size_t size : {0U, 1U, 511U, 512U, 513U, 5000U}) {
    // Any bits; ordinary sizes with ties; all alike; limits among them.
    for (int kind = 0; kind < 4; ++kind) {
      std::vector<WeightType> values(size);
      for (WeightType &value : values) {
        do {
          value = kind == 0   ? std::bit_cast<double>(random())
                  : kind == 1 ? static_cast<double>(random() % 2000) / 7 - 100
                  : kind == 2 ? 1.5
                              : std::ldexp(random() % 2 == 0 ? 1.0 : -1.0,
                                           static_cast<int>(random() % 2100));
        } while (std::isnan(value));
      }
      if (size > 2)
        values[1] = -std::numeric_limits<double>::infinity();
      std::vector<WeightType> expected = values;
      std::ranges::sort(expected);
      radix_sort(values);
      EXPECT_EQ(values, expected);
    }
  }
}

}  // namespace
}  // namespace vek

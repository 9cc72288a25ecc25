#include "evaluation/radixsort.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <random>
#include <vector>

namespace vek {
namespace {

TEST(RadixSort, OrdersAsComparingDoes) {
  std::mt19937_64 random(5);
  for (const std::size_t size : {0U, 1U, 511U, 512U, 513U, 5000U}) {
    // Any bits; ordinary sizes with ties; all alike.
    for (int kind = 0; kind < 3; ++kind) {
      std::vector<WeightType> values(size);
      for (WeightType &value : values) {
        const double any = std::bit_cast<double>(random());
        value = kind == 1   ? static_cast<double>(random() % 2000) / 7 - 100
                : kind == 2 ? 1.5
                            : (std::isnan(any) ? -0x1p-1074 : any);
      }
      std::vector<WeightType> expected = values;
      std::ranges::sort(expected);
      radix_sort(values);
      EXPECT_EQ(values, expected);
    }
  }
}

}  // namespace
}  // namespace vek

#include "base/exponential.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace vek {
namespace {

TEST(Exponential, IsRightToTwoUnitsInTheLastPlace) {
  double worst = 0.0;
  for (double x = -699.9; x < 700.0; x += 0.0371) {
    const double exact = std::exp(x);
    worst = std::max(worst, std::abs(exponential(x) / exact - 1.0));
  }
  EXPECT_LT(worst, 2 * std::numeric_limits<double>::epsilon());
  EXPECT_EQ(exponential(0.0), 1.0);
}

TEST(Exponential, HasEnds) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(exponential(1e9), exponential(700.0));
  EXPECT_EQ(exponential(-infinity), exponential(-700.0));
  EXPECT_EQ(exponential(std::nan("")), exponential(-700.0));
  EXPECT_EQ(logistic(infinity), 1.0);
  EXPECT_EQ(logistic(0.0), 0.5);
  EXPECT_GT(logistic(-infinity), 0.0);
}

}  // namespace
}  // namespace vek

#include "base/textio.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <random>
#include <string>

namespace vek {
namespace {

void check(double value, int precision) {
  char expected[64];
  std::snprintf(expected, sizeof expected, "%.*g", precision, value);
  std::string text;
  append_real(text, value, precision);
  ASSERT_EQ(text, expected);
}

TEST(AppendReal, WritesWhatPrintfWrites) {
  std::mt19937_64 random(7);
  for (const int precision : {1, 2, 5, 6, 9}) {
    for (const double value :
         {0.0, -0.0, 0.0001, 0.00009999999, 999999.4, 999999.5, 1e6, 99999.95,
          0.9999995, 0x1.fffffffffffffp1023, 0x1p-1074})
      check(value, precision);
    for (int i = 0; i < 40000; ++i) {
      // Any bits; halves of the last digit; about powers of ten.
      const double any = std::bit_cast<double>(random());
      const double power = std::pow(10.0, static_cast<int>(random() % 30) - 15);
      check(std::isfinite(any) ? any : 0.0, precision);
      check(static_cast<double>(random() % 20000000) / 2e6, precision);
      check(power * (1.0 - static_cast<double>(random() % 9) * 0x1.0p-53),
            precision);
    }
  }
}

}  // namespace
}  // namespace vek

#include "run/textio.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdio>
#include <limits>
#include <random>
#include <string>

namespace vek {
namespace {

std::string by_printf(double value, int precision) {
  char text[64];
  std::snprintf(text, sizeof text, "%.*g", precision, value);
  return text;
}

std::string by_us(double value, int precision) {
  std::string text;
  append_real(text, value, precision);
  return text;
}

TEST(AppendReal, WritesWhatPrintfWrites) {
  std::mt19937_64 random(7);
  for (const int precision : {1, 2, 5, 6, 9}) {
    for (int i = 0; i < 40000; ++i) {
      // Any bits; ordinary sizes; halves of the last digit; powers of ten.
      const double any = std::bit_cast<double>(random());
      const double ordinary =
          static_cast<double>(random() % 2000000000) / 1e6 - 500.0;
      const double half = static_cast<double>(random() % 20000000) / 2e6;
      const double power = std::pow(10.0, static_cast<int>(random() % 30) - 15);
      const double near =
          power * (1.0 - static_cast<double>(random() % 9) * 0x1.0p-53);
      for (const double value : {any, ordinary, half, power, near}) {
        if (!std::isfinite(value))
          continue;
        ASSERT_EQ(by_us(value, precision), by_printf(value, precision));
      }
    }
  }
}

TEST(AppendReal, KnowsTheLimits) {
  for (const double value : {0.0, -0.0, 1.0, 0.0001, 0.00009999999, 999999.0,
                             999999.4, 999999.5, 999999.6, 1e6, 99999.95, 0.5,
                             0.9999995, std::numeric_limits<double>::max(),
                             std::numeric_limits<double>::denorm_min()}) {
    EXPECT_EQ(by_us(value, 6), by_printf(value, 6));
    EXPECT_EQ(by_us(value, 5), by_printf(value, 5));
  }
}

TEST(FieldReader, TakesNumbersThatFit) {
  FieldReader fields(" 7\t-3\n4294967295 4294967296 1e3 nan 1x inf 0x1 ");
  std::uint32_t number = 0;
  std::int32_t small = 0;
  double real = 0.0;
  EXPECT_TRUE(fields.read(number));
  EXPECT_TRUE(fields.read(small));
  EXPECT_EQ(small, -3);
  EXPECT_TRUE(fields.read(number));
  EXPECT_EQ(number, 4294967295U);
  EXPECT_FALSE(fields.read(number));
  EXPECT_TRUE(fields.read(real));
  EXPECT_EQ(real, 1000.0);
  EXPECT_FALSE(fields.read(real));
  EXPECT_FALSE(fields.read(number));
  EXPECT_FALSE(fields.read(real));
  EXPECT_FALSE(fields.read(real));
  EXPECT_TRUE(fields.at_end());
  EXPECT_FALSE(fields.read(number));
}

}  // namespace
}  // namespace vek

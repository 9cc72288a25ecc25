#include "base/textio.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>
#include <string>
#include <vector>

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
    for (const double value : {0.0, -0.0, 1.0, 0.0001, 0.00009999999, 999999.0,
                               999999.4, 999999.5, 999999.6, 1e6, 99999.95, 0.5,
                               0.9999995, std::numeric_limits<double>::max(),
                               std::numeric_limits<double>::denorm_min()})
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

TEST(FieldReader, TakesNumbersThatFit) {
  FieldReader fields(" 7\t-3\n4294967295 4294967296 1e3 nan 1x inf 0x1 ");
  const auto take = [&](auto value) {
    return fields.read(value) ? std::to_string(value) : "-";
  };
  const std::uint32_t number = 0;
  const std::int32_t small = 0;
  const double real = 0.0;
  EXPECT_EQ((std::vector<std::string>{take(number), take(small), take(number),
                                      take(number), take(real), take(real),
                                      take(number), take(real), take(real)}),
            (std::vector<std::string>{"7", "-3", "4294967295", "-",
                                      "1000.000000", "-", "-", "-", "-"}));
  EXPECT_TRUE(fields.at_end());
  EXPECT_EQ(take(number), "-");
}

}  // namespace
}  // namespace vek

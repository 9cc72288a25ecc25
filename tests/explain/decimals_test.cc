#include "explain/decimals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace vek::explaining {
namespace {

TEST(Column, AddsUpAsItStands) {
  using enum Column::Precision;
  const struct {
    double total;
    Column::Precision precision;
    std::vector<double> parts;
    std::vector<std::string> texts;
    std::string total_text;
    std::string rest;
  } cases[] = {
      // As doubles, 0.1 + 0.2 is more than 0.3.
      {0.3,
       exact,
       {0.1, 0.2},
       {"0.100000000000000", "0.200000000000000"},
       "0.300000000000000",
       "0.000000000000000"},
      {0.1 + 0.2,
       exact,
       {0.1, 0.2},
       {"0.10000000000000000", "0.20000000000000000"},
       "0.30000000000000004",
       "0.00000000000000004"},
      {2.0,
       readable,
       {2.0 / 3, 2.0 / 3},
       {"0.66667", "0.66667"},
       "2.00000",
       "0.66666"},
      {-123456.789,
       readable,
       {0.00004, -0.00004},
       {"0.0000", "0.0000"},
       "-123456.7890",
       "-123456.7890"},
      {0.00123456789,
       readable,
       {1.0},
       {"1.00000000"},
       "0.00123457",
       "-0.99876543"},
      {0.0, readable, {}, {}, "0.000000", "0.000000"},
      // Digits that the double has and its shortest text has not.
      {-273.5901586143706,
       exact,
       {},
       {},
       "-273.590158614370600",
       "-273.590158614370600"},
      {1e22,
       readable,
       {1e22},
       {"10000000000000000000000.0000"},
       "10000000000000000000000.0000",
       "0.0000"},
      {1.0,
       readable,
       {HUGE_VAL, -HUGE_VAL, NAN},
       {"inf", "-inf", "nan"},
       "1.00000",
       ""},
      {NAN, exact, {1.0}, {"1.000000"}, "nan", ""},
  };
  for (const auto &[total, precision, parts, texts, total_text, rest] : cases) {
    const Column column(total, precision);
    std::vector<std::string> written;
    for (const double part : parts)
      written.push_back(column.text(part));
    EXPECT_EQ(written, texts) << total;
    EXPECT_EQ(column.text(total), total_text);
    EXPECT_EQ(column.rest(parts), rest) << total;
  }
}

}  // namespace
}  // namespace vek::explaining

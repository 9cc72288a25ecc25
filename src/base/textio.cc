#include "base/textio.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace vek {
namespace {

// With six digits a number fits into the eight bytes of Characters, and a
// scaled value below 10^6 has ten digits of fraction left in a double.
constexpr int largest_short_precision = 6;
constexpr std::array<double, 11> powers_of_ten = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5,
                                                  1e6, 1e7, 1e8, 1e9, 1e10};

double power_of_ten(int exponent) {
  return powers_of_ten[static_cast<std::size_t>(exponent)];
}

std::uint32_t whole_power_of_ten(int exponent) {
  constexpr std::array<std::uint32_t, 7> powers = {1,     10,     100,    1000,
                                                   10000, 100000, 1000000};
  return powers[static_cast<std::size_t>(exponent)];
}

// Characters in a number, the first in its lowest byte.
using Characters = std::uint64_t;

// Both digits of each number below 100; the tens lie in the lower byte, which
// comes first in memory.
constexpr std::array<std::uint16_t, 100> digit_pairs = [] {
  std::array<std::uint16_t, 100> pairs = {};
  for (std::uint16_t i = 0; i < 100; ++i)
    pairs[i] = static_cast<std::uint16_t>(('0' + i / 10) | ('0' + i % 10) << 8);
  return pairs;
}();

// Writes eight characters, whatever they are worth.
void put_characters(char *out_P, Characters characters) {
  if constexpr (std::endian::native == std::endian::big)
    characters = __builtin_bswap64(characters);
  std::memcpy(out_P, &characters, sizeof characters);
}

// scores.dat has a number for each document and class, nearly all of an
// ordinary size, and the general conversion would take a quarter of a run.
// Scaling such a number to an integer of `precision` digits is off by far less
// than a millionth, so that rounding is safe unless the value lies that close
// to a half. Null if the number needs the general conversion.
char *put_short_real(char *out_P, double value, int precision) {
  // %g writes smaller and larger numbers with an exponent.
  if (!(value >= 1e-4 && value < power_of_ten(precision)))
    return nullptr;
  // Of the first digit. Next to a power of ten it may be either side's: the
  // digits round to that power in both cases.
  int exponent = -1;
  if (value < 1.0) {
    exponent -= (value < 1e-1 ? 1 : 0) + (value < 1e-2 ? 1 : 0) +
                (value < 1e-3 ? 1 : 0);
  } else {
    while (value >= power_of_ten(exponent + 1))
      ++exponent;
  }
  const double scaled = value * power_of_ten(precision - 1 - exponent);
  auto number = static_cast<std::uint32_t>(scaled);
  const double rest = scaled - number;
  if (std::abs(rest - 0.5) < 1e-6)
    return nullptr;
  number += rest > 0.5 ? 1 : 0;
  if (number >= whole_power_of_ten(precision)) {
    number /= 10;
    if (++exponent >= precision)
      return nullptr;
  }
  // Always six digits from here on; the zeros at the end are cut off below.
  number *= whole_power_of_ten(largest_short_precision - precision);
  const Characters digits = Characters{digit_pairs[number / 10000]} |
                            Characters{digit_pairs[number / 100 % 100]} << 16 |
                            Characters{digit_pairs[number % 100]} << 32;
  // The last digit that is not '0' (0x30) ends the number: the exclusive or
  // leaves 0 for each '0', and the highest byte that is not 0 belongs to that
  // digit.
  const int nr_digits =
      std::max(1, (71 - std::countl_zero(digits ^ 0x303030303030)) / 8);
  if (exponent < 0) {
    std::memcpy(out_P, "0.000", 5);
    // As many zeros stay as the exponent wants; the digits overwrite the
    // others.
    put_characters(out_P + 1 - exponent, digits);
    return out_P + 1 - exponent + nr_digits;
  }
  const int nr_whole = exponent + 1;
  put_characters(out_P, digits);
  if (nr_digits <= nr_whole)
    return out_P + nr_whole;
  out_P[nr_whole] = '.';
  put_characters(out_P + nr_whole + 1, digits >> (8 * nr_whole));
  return out_P + nr_digits + 1;
}

}  // namespace

char *put_real(char *out_P, double value, int precision) {
  // A frequent score. -0.0 is "-0", as with printf.
  if (value == 0.0 && !std::signbit(value)) {
    *out_P = '0';
    return out_P + 1;
  }
  if (precision <= largest_short_precision) {
    // Written in any case; a positive number overwrites it.
    *out_P = '-';
    char *const end_P = put_short_real(out_P + (value < 0.0 ? 1 : 0),
                                       std::abs(value), precision);
    if (end_P != nullptr)
      return end_P;
  }
  return std::to_chars(out_P, out_P + real_room, value,
                       std::chars_format::general, precision)
      .ptr;
}

double as_written(double value) {
  char digits[real_room];
  const char *const end_P = put_real(digits, value);
  double read_back = value;
  std::from_chars(digits, end_P, read_back);
  return read_back;
}

bool take_line(std::string_view &rest, std::string_view &line) {
  if (rest.empty())
    return false;
  const std::size_t end = rest.find('\n');
  line = rest.substr(0, end);
  rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  return true;
}

std::string_view line_at(std::string_view text, std::size_t number) {
  std::string_view line;
  for (std::size_t i = 0; i <= number; ++i) {
    if (!take_line(text, line))
      return {};
  }
  return line;
}

std::size_t count_lines(std::string_view text) {
  std::size_t nr_lines = 0;
  std::string_view line;
  while (take_line(text, line)) {
    ++nr_lines;
  }
  return nr_lines;
}

}  // namespace vek

#include "run/textio.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace vek {
namespace {

constexpr int largest_short_precision = 6;
constexpr std::array<double, 11> powers_of_ten = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5,
                                                  1e6, 1e7, 1e8, 1e9, 1e10};

// The exponent of the first decimal digit, for a value that %g writes without
// an exponent. A value next to a power of ten may get either side's: its
// digits round to that power in both cases. Added up, because which power comes
// next cannot be foreseen.
int decimal_exponent(double value) {
  if (value < 1.0) {
    return -1 - (value < 1e-1 ? 1 : 0) - (value < 1e-2 ? 1 : 0) -
           (value < 1e-3 ? 1 : 0);
  }
  int exponent = 0;
  while (value >= powers_of_ten[static_cast<std::size_t>(exponent) + 1])
    ++exponent;
  return exponent;
}

constexpr std::array<std::uint32_t, 7> whole_powers_of_ten = {
    1, 10, 100, 1000, 10000, 100000, 1000000};

// Characters are held in a number, the first in its lowest byte.
using Characters = std::uint64_t;
constexpr Characters six_zeros = 0x303030303030;

// Both digits of each number below 100.
constexpr std::array<std::uint16_t, 100> digit_pairs = [] {
  std::array<std::uint16_t, 100> pairs = {};
  for (std::uint16_t i = 0; i < 100; ++i) {
    pairs[i] = static_cast<std::uint16_t>(('0' + i / 10) | ('0' + i % 10) << 8);
  }
  return pairs;
}();

// Writes eight characters, whatever they are worth.
void put_characters(char *out_P, Characters characters) {
  if constexpr (std::endian::native == std::endian::big)
    characters = __builtin_bswap64(characters);
  std::memcpy(out_P, &characters, sizeof characters);
}

// Writes the number with the six digits of `number`, of which the first stands
// for 10^exponent, without trailing zeros, and returns its end. Groups of bytes
// are moved, what is too much of them lies behind the end.
char *put_digits(char *out_P, std::uint32_t number, int exponent) {
  const Characters digits = Characters{digit_pairs[number / 10000]} |
                            Characters{digit_pairs[number / 100 % 100]} << 16 |
                            Characters{digit_pairs[number % 100]} << 32;
  // The last that is no zero ends them.
  const int nr_digits =
      std::max(1, (71 - std::countl_zero(digits ^ six_zeros)) / 8);
  if (exponent < 0) {
    std::memcpy(out_P, "0.000", 5);
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

// Score files hold a number for each document and class, nearly all of an
// ordinary size. Scaling such a number to an integer of `precision` digits is
// off by far less than a millionth, so that rounding is safe unless it lies
// that near to a half. Null if the number needs the long way.
char *put_short_real(char *out_P, double value, int precision) {
  const double limit = powers_of_ten[static_cast<std::size_t>(precision)];
  // %g writes smaller and larger numbers with an exponent.
  if (!(value >= 1e-4 && value < limit))
    return nullptr;
  int exponent = decimal_exponent(value);
  const double scaled =
      value * powers_of_ten[static_cast<std::size_t>(precision - 1 - exponent)];
  auto number = static_cast<std::uint32_t>(scaled);
  const double rest = scaled - number;
  if (std::abs(rest - 0.5) < 1e-6)
    return nullptr;
  if (rest > 0.5)
    ++number;
  const auto nr_missing =
      static_cast<std::size_t>(largest_short_precision - precision);
  number *= whole_powers_of_ten[nr_missing];
  if (number >= whole_powers_of_ten[largest_short_precision]) {
    number /= 10;
    if (++exponent >= precision)
      return nullptr;
  }
  return put_digits(out_P, number, exponent);
}

}  // namespace

char *put_real(char *out_P, double value, int precision) {
  if (value == 0.0 && !std::signbit(value)) {
    *out_P = '0';
    return out_P + 1;
  }
  if (precision <= largest_short_precision) {
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

}  // namespace vek

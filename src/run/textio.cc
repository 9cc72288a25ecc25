#include "run/textio.h"

#include <array>
#include <cstdint>

namespace vek {
namespace {

constexpr int largest_short_precision = 6;
constexpr std::array<double, 11> powers_of_ten = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5,
                                                  1e6, 1e7, 1e8, 1e9, 1e10};

// The exponent of the first decimal digit, for a value that %g writes without
// an exponent. A value next to a power of ten may get either side's: its
// digits round to that power in both cases.
int decimal_exponent(double value) {
  int exponent = 0;
  if (value >= 1.0) {
    while (value >= powers_of_ten[static_cast<std::size_t>(exponent) + 1]) {
      ++exponent;
    }
    return exponent;
  }
  constexpr std::array<double, 4> negative_powers = {1e-1, 1e-2, 1e-3, 1e-4};
  while (value < negative_powers[static_cast<std::size_t>(exponent)]) {
    ++exponent;
  }
  return -exponent - 1;
}

// Writes the digits of `number`, which has `precision` of them, the first one
// standing for 10^exponent, without trailing zeros.
void append_digits(std::string &out, std::uint32_t number, int precision,
                   int exponent) {
  std::array<char, largest_short_precision> digits = {};
  for (int i = precision; i-- > 0; number /= 10) {
    digits[static_cast<std::size_t>(i)] = static_cast<char>('0' + number % 10);
  }
  int nr_digits = precision;
  while (nr_digits > 1 &&
         digits[static_cast<std::size_t>(nr_digits) - 1] == '0') {
    --nr_digits;
  }
  if (exponent < 0) {
    out += "0.";
    out.append(static_cast<std::size_t>(-exponent - 1), '0');
    out.append(digits.data(), static_cast<std::size_t>(nr_digits));
    return;
  }
  const int nr_whole = exponent + 1;
  out.append(digits.data(), static_cast<std::size_t>(nr_whole));
  if (nr_digits > nr_whole) {
    out += '.';
    out.append(digits.data() + nr_whole,
               static_cast<std::size_t>(nr_digits - nr_whole));
  }
}

// Score files hold a number for each document and class, nearly all of an
// ordinary size. Scaling such a number to an integer of `precision` digits is
// off by far less than a millionth, so that rounding is safe unless it lies
// that near to a half. False if the number needs the long way.
bool append_short_real(std::string &out, double value, int precision) {
  const double limit = powers_of_ten[static_cast<std::size_t>(precision)];
  // %g writes smaller and larger numbers with an exponent.
  if (!(value >= 1e-4 && value < limit))
    return false;
  int exponent = decimal_exponent(value);
  const double scaled =
      value * powers_of_ten[static_cast<std::size_t>(precision - 1 - exponent)];
  auto number = static_cast<std::uint32_t>(scaled);
  const double rest = scaled - number;
  if (std::abs(rest - 0.5) < 1e-6)
    return false;
  if (rest > 0.5)
    ++number;
  if (number >= limit) {
    number /= 10;
    if (++exponent >= precision)
      return false;
  }
  append_digits(out, number, precision, exponent);
  return true;
}

}  // namespace

void append_real(std::string &out, double value, int precision) {
  if (value == 0.0 && !std::signbit(value)) {
    out += '0';
    return;
  }
  if (precision <= largest_short_precision) {
    const std::size_t before = out.size();
    if (value < 0.0)
      out += '-';
    if (append_short_real(out, std::abs(value), precision))
      return;
    out.resize(before);
  }
  std::array<char, 40> digits = {};
  const auto result =
      std::to_chars(digits.data(), digits.data() + digits.size(), value,
                    std::chars_format::general, precision);
  out.append(digits.data(), result.ptr);
}

}  // namespace vek

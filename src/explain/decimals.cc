#include "explain/decimals.h"

#include <algorithm>
#include <boost/multiprecision/cpp_int.hpp>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <string_view>

namespace vek::explaining {
namespace {

// Digits before the point, sign and point.
constexpr std::size_t room_before = 320;
constexpr int readable_digits = 6;
constexpr int least_decimals = 4;
// So that parts are told apart also below a total of few digits.
constexpr int least_exact_decimals = 15;

std::string shortest(double value) {
  std::string text(2 * room_before + 100, '\0');
  const auto result = std::to_chars(text.data(), text.data() + text.size(),
                                    value, std::chars_format::fixed);
  text.resize(static_cast<std::size_t>(result.ptr - text.data()));
  return text;
}

int decimals_in(std::string_view text) {
  const std::size_t point = text.find('.');
  return point == std::string_view::npos
             ? 0
             : static_cast<int>(text.size() - point - 1);
}

int decimals_for_reader(double value) {
  if (value == 0.0)
    return readable_digits;
  const int exponent =
      static_cast<int>(std::floor(std::log10(std::abs(value))));
  return std::max(readable_digits - 1 - exponent, least_decimals);
}

}  // namespace

Column::Column(double total, Precision precision)
    : total_(total),
      nr_decimals_(
          !std::isfinite(total) ? readable_digits
          : precision == Precision::exact
              ? std::max(decimals_in(shortest(total)), least_exact_decimals)
              : decimals_for_reader(total)) {}

std::string Column::text(double value) const {
  if (std::isnan(value))
    return "nan";
  if (std::isinf(value))
    return value < 0.0 ? "-inf" : "inf";
  std::string text = shortest(value);
  const int nr_own = decimals_in(text);
  if (nr_own <= nr_decimals_) {
    // Zeros, and not the digits by which the text differs from the double.
    if (nr_own == 0 && nr_decimals_ > 0)
      text += '.';
    text.append(static_cast<std::size_t>(nr_decimals_ - nr_own), '0');
  } else {
    const auto result =
        std::to_chars(text.data(), text.data() + text.size(), value,
                      std::chars_format::fixed, nr_decimals_);
    text.resize(static_cast<std::size_t>(result.ptr - text.data()));
  }
  const bool is_zero = text.find_first_not_of("-0.") == std::string::npos;
  if (is_zero && text.starts_with('-'))
    text.erase(0, 1);
  return text;
}

std::string Column::rest(std::span<const double> parts) const {
  using Integer = boost::multiprecision::cpp_int;
  bool is_finite = std::isfinite(total_);
  const auto units = [&](double value) {
    is_finite = is_finite && std::isfinite(value);
    if (!is_finite)
      return Integer(0);
    std::string digits = text(value);
    std::erase(digits, '.');
    const bool is_negative = digits.starts_with('-');
    // A zero in front would make it an octal number.
    digits.erase(0, digits.find_first_not_of("-0"));
    const Integer number(digits.empty() ? "0" : digits);
    return is_negative ? Integer(-number) : number;
  };
  Integer rest = units(total_);
  for (const double part : parts)
    rest -= units(part);
  if (!is_finite)
    return {};
  const bool is_negative = rest < 0;
  std::string digits = (is_negative ? Integer(-rest) : rest).str();
  const auto nr_decimals = static_cast<std::size_t>(nr_decimals_);
  if (digits.size() <= nr_decimals)
    digits.insert(0, nr_decimals + 1 - digits.size(), '0');
  if (nr_decimals > 0)
    digits.insert(digits.size() - nr_decimals, 1, '.');
  return (is_negative ? "-" : "") + digits;
}

}  // namespace vek::explaining

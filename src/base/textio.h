// Numbers as text, the same on every machine: C locale, no state of a stream.
#ifndef VEK_BASE_TEXTIO_H_
#define VEK_BASE_TEXTIO_H_

#include <charconv>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <string>
#include <string_view>
#include <system_error>

namespace vek {

// Significant digits of doubles in files and reports, a stream's default.
inline constexpr int default_precision = 6;

template <std::integral Number>
void append_number(std::string &out, Number value) {
  char digits[24];
  const auto result = std::to_chars(digits, digits + sizeof digits, value);
  out.append(digits, result.ptr);
}

// Writes what printf's %.<precision>g prints, precision from 1 to 17, and
// returns the end. No text is longer than longest_real; but `out_P` must have
// real_room bytes, since what lies behind the end may be overwritten.
inline constexpr std::size_t longest_real = 24;
inline constexpr std::size_t real_room = 40;
char *put_real(char *out_P, double value, int precision = default_precision);

inline void append_real(std::string &out, double value,
                        int precision = default_precision) {
  char digits[real_room];
  out.append(digits, put_real(digits, value, precision));
}

// The shortest text that reads back as the same double.
inline void append_exact_real(std::string &out, double value) {
  char digits[40];
  const auto result = std::to_chars(digits, digits + sizeof digits, value);
  out.append(digits, result.ptr);
}

// The number that append_real() writes.
double as_written(double value);

// Cuts the next line off `rest`, without its line end, which the last one may
// lack. Returns false if there is none.
bool take_line(std::string_view &rest, std::string_view &line);

// The line of that number, from 0; empty if there is none.
std::string_view line_at(std::string_view text, std::size_t number);

// How many lines take_line() will find.
std::size_t count_lines(std::string_view text);

// Takes white-space separated fields from the front of a text.
class FieldReader {
 public:
  explicit FieldReader(std::string_view text) : rest_(text) {}

  // Reads the next field as a number of that type; false if there is none,
  // if the field is anything else, or if the number does not fit.
  template <std::integral Number>
  bool read(Number &value) {
    const std::string_view field = take();
    const char *end = field.data() + field.size();
    const auto result = std::from_chars(field.data(), end, value);
    return !field.empty() && result.ec == std::errc() && result.ptr == end;
  }

  // The same for a double. What is not finite must be spelled as the functions
  // above write it.
  bool read(double &value) {
    const std::string_view field = take();
    const char *end = field.data() + field.size();
    const auto result = std::from_chars(field.data(), end, value);
    return !field.empty() && result.ec == std::errc() && result.ptr == end &&
           (std::isfinite(value) || field == "inf" || field == "-inf" ||
            field == "nan" || field == "-nan");
  }

  void skip_space() {
    std::size_t start = 0;
    while (start < rest_.size() && is_space(rest_[start]))
      ++start;
    rest_.remove_prefix(start);
  }

  // Nothing but white space is left.
  bool at_end() {
    skip_space();
    return rest_.empty();
  }

  // What has not been read yet; the caller may set it further on.
  std::string_view rest() const { return rest_; }
  void set_rest(std::string_view rest) { rest_ = rest; }

 private:
  // Not by the library's search for one of several characters, which calls a
  // function for each: a model is read in a third less time.
  static bool is_space(char character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
  }

  std::string_view take() {
    skip_space();
    std::size_t end = 0;
    while (end < rest_.size() && !is_space(rest_[end]))
      ++end;
    const std::string_view field = rest_.substr(0, end);
    rest_.remove_prefix(field.size());
    return field;
  }

  std::string_view rest_;
};

}  // namespace vek

#endif  // VEK_BASE_TEXTIO_H_

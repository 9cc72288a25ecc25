#include "base/messages.h"

#include <array>
#include <cstdio>

#include "base/helpers.h"

namespace vek {

std::string formatted(const char *format, ...) {
  std::va_list values;
  va_start(values, format);
  std::string text = formatted_list(format, values);
  va_end(values);
  return text;
}

std::string formatted_list(const char *format, std::va_list values) {
  // Messages are made between a failure and the report of its errno.
  const KeepErrno keep;
  std::array<char, 1024> text = {};
  std::vsnprintf(text.data(), text.size(), format, values);
  return text.data();
}

}  // namespace vek

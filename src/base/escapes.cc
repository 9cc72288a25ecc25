#include "base/escapes.h"

#include <charconv>
#include <cstddef>

namespace vek {

std::string escaped(std::string_view text) {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string out;
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte == '\\') {
      out += "\\\\";
    } else if (byte < 0x20 || byte == 0x7F) {
      out += "\\x";
      out += digits[byte / 16];
      out += digits[byte % 16];
    } else {
      out += character;
    }
  }
  return out;
}

bool unescape(std::string_view text, std::string &name) {
  name.clear();
  while (!text.empty()) {
    std::size_t length = 1;
    unsigned char byte = static_cast<unsigned char>(text.front());
    if (text.starts_with("\\\\")) {
      length = 2;
    } else if (byte == '\\') {
      length = 4;
      if (text.size() < length || text[1] != 'x')
        return false;
      const char *end_P = text.data() + length;
      if (std::from_chars(text.data() + 2, end_P, byte, 16).ptr != end_P)
        return false;
    }
    name += static_cast<char>(byte);
    text.remove_prefix(length);
  }
  return true;
}

}  // namespace vek

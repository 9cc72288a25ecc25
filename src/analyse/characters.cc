#include "analyse/characters.h"

#include <utf8proc.h>

#include <cstring>

namespace vek::analysis {
namespace {

constexpr std::int32_t replacement = 0xFFFD;

constexpr std::array<CharKind, 256> make_ascii_kinds() {
  std::array<CharKind, 256> kinds{};
  for (std::size_t c = 'a'; c <= 'z'; ++c)
    kinds[c] = CharKind::letter;
  for (std::size_t c = 'A'; c <= 'Z'; ++c)
    kinds[c] = CharKind::letter;
  for (std::size_t c = '0'; c <= '9'; ++c)
    kinds[c] = CharKind::digit;
  for (std::size_t c = 0x80; c <= 0xFF; ++c)
    kinds[c] = CharKind::high_byte;
  kinds[' '] = kinds['\t'] = kinds['\r'] = kinds['\v'] = CharKind::blank;
  kinds['\n'] = CharKind::line_end;
  kinds['\f'] = CharKind::paragraph_end;
  kinds['-'] = CharKind::hyphen;
  kinds['\''] = CharKind::inner_mark;
  kinds['.'] = CharKind::full_stop;
  kinds['!'] = kinds['?'] = CharKind::sentence_end;
  kinds[','] = CharKind::comma;
  kinds[':'] = CharKind::colon;
  return kinds;
}

// Characters whose kind does not follow from their Unicode category: most
// punctuation is in one category, which says nothing about sentences.
CharKind special_kind(std::int32_t character) {
  switch (character) {
    case 0x0085:  // next line
    case 0x2028:  // line separator
      return CharKind::line_end;
    case 0x2029:
      return CharKind::paragraph_end;
    case 0x200B:  // zero width space, put between words
      return CharKind::blank;
    case 0x2010:
    case 0x2011:
      return CharKind::hyphen;
    case 0x00B7:  // Catalan l·l
    case 0x02BC:
    case 0x05F4:  // Hebrew and Yiddish abbreviations
    case 0x2019:
      return CharKind::inner_mark;
    case 0x2026:
    case 0x203C:
    case 0x203D:
    case 0x2047:
    case 0x2048:
    case 0x2049:
    case 0x061F:  // Arabic question mark
    case 0x06D4:  // Arabic full stop
    case 0x0589:  // Armenian full stop
    case 0x0964:  // danda
    case 0x0965:
    case 0x3002:
    case 0xFF01:
    case 0xFF0E:
    case 0xFF1F:
      return CharKind::sentence_end;
    default:
      return CharKind::other;
  }
}

CharKind category_kind(std::int32_t character) {
  switch (utf8proc_category(character)) {
    case UTF8PROC_CATEGORY_LU:
    case UTF8PROC_CATEGORY_LL:
    case UTF8PROC_CATEGORY_LT:
    case UTF8PROC_CATEGORY_LM:
    case UTF8PROC_CATEGORY_LO:
      return CharKind::letter;
    case UTF8PROC_CATEGORY_MN:
    case UTF8PROC_CATEGORY_MC:
    case UTF8PROC_CATEGORY_ME:
      return CharKind::mark;
    case UTF8PROC_CATEGORY_ND:
      return CharKind::digit;
    case UTF8PROC_CATEGORY_CF:
      return CharKind::invisible;
    case UTF8PROC_CATEGORY_ZS:
      return CharKind::blank;
    default:
      return CharKind::other;
  }
}

CharKind find_kind(std::int32_t character) {
  if (character < 0)
    return CharKind::other;
  if (character < 0x80) {
    return ascii_kinds[static_cast<std::size_t>(character)];
  }
  // The exceptions first. CharKind::other is free to mean "none of them": no
  // special character is of that kind.
  const CharKind special = special_kind(character);
  return special != CharKind::other ? special : category_kind(character);
}

// The characters of one and two bytes, which hold all of the Latin, Greek,
// Cyrillic, Hebrew and Arabic that is in daily use.
std::array<CharKind, 0x800> make_low_kinds() {
  std::array<CharKind, 0x800> kinds{};
  for (std::size_t c = 0; c < kinds.size(); ++c) {
    kinds[c] = find_kind(static_cast<std::int32_t>(c));
  }
  return kinds;
}

unsigned char byte_at(std::string_view text, std::size_t i) {
  return static_cast<unsigned char>(text[i]);
}

bool is_continuation(std::string_view text, std::size_t i) {
  return (byte_at(text, i) & 0xC0) == 0x80;
}

// Bytes of the valid character at the begin of `text`, which is not empty; less
// than 1 if there is none. Then `value` means nothing.
std::ptrdiff_t decode(std::string_view text, std::int32_t &value) {
  return utf8proc_iterate(
      reinterpret_cast<const utf8proc_uint8_t *>(text.data()),
      static_cast<utf8proc_ssize_t>(text.size()), &value);
}

// Most text is ASCII, bytes without their upper bit: eight at a time.
std::size_t skip_ascii(std::string_view text, std::size_t i) {
  std::uint64_t block = 0;
  while (i + sizeof block <= text.size()) {
    // Copied, since the bytes are not aligned. The order of bytes does not
    // matter to the test.
    std::memcpy(&block, text.data() + i, sizeof block);
    if ((block & 0x8080808080808080U) != 0)
      break;
    i += sizeof block;
  }
  while (i < text.size() && byte_at(text, i) < 0x80)
    ++i;
  return i;
}

// What Windows-1252 has at 0x80 to 0x9F; the rest is as in Unicode.
constexpr std::array<std::int32_t, 32> windows_1252_middle = {
    0x20AC, replacement, 0x201A,      0x0192, 0x201E, 0x2026, 0x2020,
    0x2021, 0x02C6,      0x2030,      0x0160, 0x2039, 0x0152, replacement,
    0x017D, replacement, replacement, 0x2018, 0x2019, 0x201C, 0x201D,
    0x2022, 0x2013,      0x2014,      0x02DC, 0x2122, 0x0161, 0x203A,
    0x0153, replacement, 0x017E,      0x0178};

std::int32_t windows_1252_character(unsigned char byte) {
  if (byte < 0x80 || byte >= 0xA0)
    return byte;
  return windows_1252_middle[byte - 0x80U];
}

}  // namespace

const std::array<CharKind, 256> ascii_kinds = make_ascii_kinds();

CharKind kind_of(std::int32_t character) {
  // Made at the first call and not when the program starts, so that no other
  // object's start depends on it.
  static const std::array<CharKind, 0x800> low_kinds = make_low_kinds();
  if (character >= 0 && character < 0x800) {
    return low_kinds[static_cast<std::size_t>(character)];
  }
  return find_kind(character);
}

Character first_character(std::string_view text) {
  std::int32_t value = 0;
  const std::ptrdiff_t size = decode(text, value);
  if (size < 1)
    // One byte on, so that the next valid character is found again.
    return {replacement, 1};
  return {value, static_cast<std::size_t>(size)};
}

void append_utf8(std::string &text, std::int32_t character) {
  if (!utf8proc_codepoint_valid(character))
    return;
  std::array<utf8proc_uint8_t, 4> bytes{};
  const utf8proc_ssize_t size = utf8proc_encode_char(character, bytes.data());
  text.append(bytes.begin(), bytes.begin() + size);
}

std::string_view cut_at_character(std::string_view text, std::size_t limit) {
  if (text.size() <= limit)
    return text;
  // At most three steps in valid UTF-8; in other bytes the cut may go to 0.
  while (limit > 0 && is_continuation(text, limit))
    --limit;
  return text.substr(0, limit);
}

std::size_t valid_utf8_size(std::string_view text) {
  std::size_t i = 0;
  std::int32_t value = 0;
  while (true) {
    i = skip_ascii(text, i);
    if (i == text.size())
      return i;
    const std::ptrdiff_t size = decode(text.substr(i), value);
    if (size < 1)
      return i;
    i += static_cast<std::size_t>(size);
  }
}

void append_windows_1252(std::string &text, std::string_view bytes) {
  for (const char byte : bytes) {
    append_utf8(text, windows_1252_character(static_cast<unsigned char>(byte)));
  }
}

}  // namespace vek::analysis

#include "analyse/normalise.h"

#include <utf8proc.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

#include "analyse/characters.h"

namespace vek::analysis {
namespace {

using Characters = std::span<utf8proc_int32_t>;

// A character decomposes into at most four in its canonical decomposition, and
// each takes at least a byte of the word.
using Workspace = std::array<utf8proc_int32_t, 4 * longest_raw_word>;

constexpr auto nfc =
    static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE);

bool is_ascii(std::string_view text) {
  return std::none_of(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0x80) != 0;
  });
}

char small_ascii(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

std::string small_ascii_letters(std::string_view raw) {
  std::string word(raw);
  std::transform(word.begin(), word.end(), word.begin(), small_ascii);
  return word;
}

bool is_apostrophe(utf8proc_int32_t character) {
  return character == 0x2019 || character == 0x02BC;
}

// The visible characters of `raw`, with one kind of apostrophe.
std::string without_variants(std::string_view raw) {
  std::string text;
  while (!raw.empty()) {
    const Character character = first_character(raw);
    raw.remove_prefix(character.size);
    if (kind_of(character.value) == CharKind::invisible)
      continue;
    append_utf8(text, is_apostrophe(character.value) ? '\'' : character.value);
  }
  return text;
}

// The characters of `text` in NFC, in `space`. Empty if that fails.
Characters composed(std::string_view text, Workspace &space) {
  utf8proc_ssize_t size = utf8proc_decompose(
      reinterpret_cast<const utf8proc_uint8_t *>(text.data()),
      static_cast<utf8proc_ssize_t>(text.size()), space.data(),
      static_cast<utf8proc_ssize_t>(space.size()), nfc);
  // The library returns the size that it would need, and may not have written
  // all.
  if (size < 0 || size > static_cast<utf8proc_ssize_t>(space.size()))
    return {};
  size = utf8proc_normalize_utf32(space.data(), size, nfc);
  return Characters(space).first(
      static_cast<std::size_t>(std::max<utf8proc_ssize_t>(size, 0)));
}

utf8proc_int32_t small_letter(utf8proc_int32_t character, Casing casing) {
  // Its small form is the dotless i; Unicode's simple mapping knows no
  // language.
  if (casing == Casing::dotless_i && character == 'I')
    return 0x0131;
  return utf8proc_tolower(character);
}

std::string composed_text(std::string_view text, Casing casing,
                          Workspace &space) {
  std::string word;
  for (const utf8proc_int32_t character : composed(text, space)) {
    append_utf8(word, small_letter(character, casing));
  }
  return word;
}

}  // namespace

std::string normalise_word(std::string_view raw, Casing casing) {
  raw = cut_at_character(raw, longest_raw_word);
  // The short way for most words: ASCII has no variants and nothing to compose.
  if (is_ascii(raw) && casing == Casing::usual)
    return small_ascii_letters(raw);
  Workspace space;
  // Twice, because a small letter may compose with a mark where its capital
  // did not.
  const std::string word = composed_text(without_variants(raw), casing, space);
  return composed_text(cut_at_character(word, longest_raw_word), casing, space);
}

bool has_capital(std::string_view raw) {
  if (raw.empty())
    return false;
  const std::int32_t first = first_character(raw).value;
  return utf8proc_tolower(first) != first;
}

}  // namespace vek::analysis

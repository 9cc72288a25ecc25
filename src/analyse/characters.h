// Characters: decoding from UTF-8, the check of a whole text, and the few
// kinds of characters that the tokeniser tells apart. Knows no words.
#ifndef VEK_ANALYSE_CHARACTERS_H_
#define VEK_ANALYSE_CHARACTERS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vek::analysis {

enum class CharKind : std::uint8_t {
  other,          // breaks up a sentence, and means nothing else
  letter,         //
  mark,           // combining; part of a word behind its first letter
  digit,          // decimal, of any script
  invisible,      // soft hyphen, joiners, direction marks: as if not there
  blank,          //
  line_end,       // two in a row end a paragraph
  paragraph_end,  //
  hyphen,         //
  inner_mark,     // apostrophe and its like: in a word only between letters
  full_stop,      //
  sentence_end,   // the other signs that end a sentence
  comma,          //
  colon,          //
  high_byte,      // in ascii_kinds only: the byte is part of a longer character
};

// The kinds of single bytes; from 0x80 on they are high_byte.
extern const std::array<CharKind, 256> ascii_kinds;

CharKind kind_of(std::int32_t character);

// A character in a text: its value and how many bytes it takes, at least 1.
// A byte that belongs to no valid character is U+FFFD of one byte.
struct Character {
  std::int32_t value;
  std::size_t size;
};

// The first character of `text`, which must not be empty.
Character first_character(std::string_view text);

// Appends `character` as UTF-8. A value that is no character appends nothing.
void append_utf8(std::string &text, std::int32_t character);

// `text` without what lies behind its first `limit` bytes, and without the
// character that would be cut in two there.
std::string_view cut_at_character(std::string_view text, std::size_t limit);

// How many bytes of `text` are valid UTF-8, up to the first one that is not, or
// that begins a character of which the end is missing.
std::size_t valid_utf8_size(std::string_view text);

// Appends `bytes`, read as Windows-1252, as UTF-8: at most three bytes for
// each one. The five bytes without a meaning there become U+FFFD.
void append_windows_1252(std::string &text, std::string_view bytes);

}  // namespace vek::analysis

#endif  // VEK_ANALYSE_CHARACTERS_H_

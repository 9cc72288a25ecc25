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

// The kinds of the single bytes. All from 0x80 on are high_byte.
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

// Whether a text that comes in pieces is UTF-8. Characters may be cut by the
// pieces.
class Utf8Check {
 public:
  void add(std::string_view piece);

  // False as soon as a byte was wrong.
  bool good_so_far() const { return good_; }

  // All was right, and the last character is whole.
  bool good() const { return good_ && nr_kept_ == 0; }

 private:
  std::size_t complete_kept_character(std::string_view piece);

  bool good_ = true;
  // The begin of a character that the last piece cut.
  std::array<char, 4> kept_{};
  std::size_t nr_kept_ = 0;
};

// Appends `bytes`, read as Windows-1252, as UTF-8: at most three bytes for
// each one. The five bytes without a meaning there become U+FFFD.
void append_windows_1252(std::string &text, std::string_view bytes);

}  // namespace vek::analysis

#endif  // VEK_ANALYSE_CHARACTERS_H_

// The one form of a word: NFC, small letters, one kind of apostrophe, nothing
// invisible.
#ifndef VEK_ANALYSE_NORMALISE_H_
#define VEK_ANALYSE_NORMALISE_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace vek::analysis {

// A word is looked at up to this many bytes of its text as written. Enough for
// the longest word that is kept, also if it is written in decomposed letters.
inline constexpr std::size_t longest_raw_word = 255;

enum class Casing { usual, dotless_i };

// The normal form of a word of UTF-8 of at most longest_raw_word bytes. It can
// be empty, and it can be longer than `raw`. What is no UTF-8 gives an empty
// word.
std::string normalise_word(std::string_view raw, Casing casing);

// The word begins with a capital letter.
bool has_capital(std::string_view raw);

}  // namespace vek::analysis

#endif  // VEK_ANALYSE_NORMALISE_H_

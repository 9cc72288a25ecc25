// What the analysis needs to know of a word: filled and remembered by the
// Lexicon, turned into text by the AnalysisWriter.
#ifndef VEK_ANALYSE_WORD_H_
#define VEK_ANALYSE_WORD_H_

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vek::analysis {

// No word of an analysis is longer, in bytes.
inline constexpr std::size_t longest_word = 64;

enum class WordKind : std::uint8_t {
  content,
  function,
  number_class,  // a number that only counts as one, whatever its value
  dropped,       // a number that is left out
};

// The parts that a function word can play; several at once.
using FunctionFlags = std::uint8_t;
inline constexpr FunctionFlags is_function = 1;
inline constexpr FunctionFlags is_article = 2;
inline constexpr FunctionFlags is_of = 4;
inline constexpr FunctionFlags is_genitive_article = 8;

struct Word {
  WordKind kind = WordKind::dropped;
  // Of the word itself; 0 unless kind is function.
  FunctionFlags function = 0;
  // Of the function word that was cut off its front, as in l'école; 0 if none.
  FunctionFlags elided = 0;
  bool has_capital = false;
  // What is written for the word; empty unless kind is content.
  std::string_view stem = {};
};

}  // namespace vek::analysis

#endif  // VEK_ANALYSE_WORD_H_

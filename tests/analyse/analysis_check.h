// For the tests and the fuzzer: a text's analysis in one call, and whether it
// is one that a parser of the analysis language takes without an error.
#ifndef VEK_TESTS_ANALYSE_ANALYSIS_CHECK_H_
#define VEK_TESTS_ANALYSE_ANALYSIS_CHECK_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "analyse/analysis_writer.h"
#include "analyse/characters.h"
#include "analyse/document.h"
#include "analyse/language.h"
#include "analyse/lexicon.h"
#include "analyse/output.h"
#include "analyse/tokeniser.h"

namespace vek::analysis {

class MemorySource : public ByteSource {
 public:
  explicit MemorySource(std::string_view bytes) : bytes_(bytes) {}

  std::ptrdiff_t read(std::uint64_t offset, char *to,
                      std::size_t size) override {
    const std::size_t begin = std::min<std::size_t>(offset, bytes_.size());
    return static_cast<std::ptrdiff_t>(bytes_.substr(begin).copy(to, size));
  }

 private:
  std::string_view bytes_;
};

// All that stands between a text and its analysis, but for files.
class TextAnalyser {
 public:
  // Small, because tests make many analysers.
  struct Sizes {
    std::size_t buffer = DocumentReader::usual_buffer;
    std::size_t nr_known = 1024;
  };

  explicit TextAnalyser(std::string_view language, Terms terms = Terms::both,
                        Numbers numbers = Numbers::drop)
      : TextAnalyser(language, terms, numbers, Sizes{}) {}

  TextAnalyser(std::string_view language, Terms terms, Numbers numbers,
               Sizes sizes)
      : language_(*find_language(language)),
        lexicon_(language_, numbers, sizes.nr_known),
        writer_(language_, terms, lexicon_, output_),
        tokeniser_({.colon_in_words = language_.ending_mark == ':',
                    .has_final_apostrophe = language_.has_final_apostrophe},
                   writer_),
        reader_(sizes.buffer) {}

  std::string analyse(std::string_view text) {
    MemorySource source(text);
    writer_.start();
    if (!reader_.read(source, tokeniser_))
      return "not read";
    writer_.finish();
    return output_.take();
  }

 private:
  const Language &language_;
  Lexicon lexicon_;
  StringOutput output_;
  AnalysisWriter writer_;
  Tokeniser tokeniser_;
  DocumentReader reader_;
};

inline bool is_word_byte(char c) {
  constexpr std::string_view special = "\",[]{}|\\\x7F";
  return static_cast<unsigned char>(c) > ' ' && special.find(c) == special.npos;
}

// Reads an analysis by the rules of its language, and by nothing else:
//
//   text   nothing, or items with a blank or a line end between them and a
//          line end behind the last
//   item   a word, or "[ " word " , " word " ]"
//   word   1 to 64 bytes of valid UTF-8 in which nothing has a meaning of its
//          own: none of " , [ ] { } | \ and no blank or control character
inline bool is_valid_analysis(std::string_view text) {
  const auto accept = [&](std::string_view begin) {
    const bool is_there = text.starts_with(begin);
    text.remove_prefix(is_there ? begin.size() : 0);
    return is_there;
  };
  const auto word = [&] {
    const std::size_t size = static_cast<std::size_t>(
        std::ranges::find_if_not(text, is_word_byte) - text.begin());
    const bool is_good = size > 0 && size <= longest_word &&
                         valid_utf8_size(text.substr(0, size)) == size;
    text.remove_prefix(size);
    return is_good;
  };
  if (text.empty())
    return true;
  while (accept("[ ") ? word() && accept(" , ") && word() && accept(" ]")
                      : word()) {
    if (text == "\n")
      return true;
    if (!accept(" ") && !accept("\n"))
      return false;
  }
  return false;
}

}  // namespace vek::analysis

#endif  // VEK_TESTS_ANALYSE_ANALYSIS_CHECK_H_

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
    std::size_t cache = 1024;
  };

  explicit TextAnalyser(std::string_view language, Terms terms = Terms::both,
                        Numbers numbers = Numbers::drop)
      : TextAnalyser(language, terms, numbers, Sizes{}) {}

  TextAnalyser(std::string_view language, Terms terms, Numbers numbers,
               Sizes sizes)
      : language_(*find_language(language)),
        lexicon_(language_, numbers, sizes.cache),
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

// Reads an analysis by the rules of its language, and by nothing else:
//
//   text   nothing, or items with a blank or a line end between them and a
//          line end behind the last
//   item   a word, or "[ " word " , " word " ]"
//   word   1 to 64 bytes of valid UTF-8 in which nothing has a meaning of its
//          own: none of " , [ ] { } | \ and no blank or control character
class AnalysisCheck {
 public:
  explicit AnalysisCheck(std::string_view text) : rest_(text) {}

  bool is_valid() {
    if (rest_.empty())
      return true;
    while (item()) {
      if (rest_ == "\n")
        return true;
      if (!accept(" ") && !accept("\n"))
        return false;
    }
    return false;
  }

 private:
  bool accept(std::string_view text) {
    if (!rest_.starts_with(text))
      return false;
    rest_.remove_prefix(text.size());
    return true;
  }

  bool item() {
    if (!accept("[ "))
      return word();
    return word() && accept(" , ") && word() && accept(" ]");
  }

  static bool is_word_byte(char c) {
    constexpr std::string_view special = "\",[]{}|\\\x7F";
    return static_cast<unsigned char>(c) > ' ' &&
           special.find(c) == special.npos;
  }

  bool word() {
    std::size_t size = 0;
    while (size < rest_.size() && is_word_byte(rest_[size]))
      ++size;
    Utf8Check check;
    check.add(rest_.substr(0, size));
    rest_.remove_prefix(size);
    return size > 0 && size <= longest_word && check.good();
  }

  std::string_view rest_;
};

inline bool is_valid_analysis(std::string_view text) {
  return AnalysisCheck(text).is_valid();
}

}  // namespace vek::analysis

#endif  // VEK_TESTS_ANALYSE_ANALYSIS_CHECK_H_

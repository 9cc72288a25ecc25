// For the tests and the fuzzer: a text's analysis in one call, and whether it
// is one that a parser of the analysis language takes without an error.
#ifndef VEK_TESTS_ANALYSE_ANALYSIS_CHECK_H_
#define VEK_TESTS_ANALYSE_ANALYSIS_CHECK_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <regex>
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

// Small, because tests make many analysers.
struct Sizes {
  std::size_t buffer = DocumentReader::usual_buffer;
  std::size_t nr_known = 1024;
};

// All that stands between a text and its analysis, but for files.
class TextAnalyser {
 public:
  explicit TextAnalyser(std::string_view language, Terms terms = Terms::both,
                        Numbers numbers = Numbers::drop, Sizes sizes = {})
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

// Reads an analysis by the rules of its language, and by nothing else: words
// and pairs with a blank or a line end behind each and a line end behind the
// last. A word has 1 to 64 bytes of valid UTF-8 in which nothing has a meaning
// of its own.
inline bool is_valid_analysis(std::string_view text) {
  const std::string word = R"([^\x00- ",[\]{}|\\\x7F]{1,64})";
  static const std::regex item('(' + word + "|\\[ " + word + " , " + word +
                               " \\])[ \n]");
  const char *at = text.data();
  const char *const end = at + text.size();
  for (std::cmatch match; at != end; at = match[0].second) {
    if (!std::regex_search(at, end, match, item,
                           std::regex_constants::match_continuous)) {
      return false;
    }
  }
  return valid_utf8_size(text) == text.size() &&
         (text.empty() || text.back() == '\n');
}

}  // namespace vek::analysis

#endif  // VEK_TESTS_ANALYSE_ANALYSIS_CHECK_H_

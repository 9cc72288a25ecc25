// Turns the words of a text into its analysis: each content word for itself,
// and the pairs of head and modifier that it makes with the words before it.
#ifndef VEK_ANALYSE_ANALYSIS_WRITER_H_
#define VEK_ANALYSE_ANALYSIS_WRITER_H_

#include <array>
#include <cstddef>
#include <string_view>

#include "analyse/language.h"
#include "analyse/lexicon.h"
#include "analyse/output.h"
#include "analyse/tokeniser.h"
#include "analyse/word.h"

namespace vek::analysis {

enum class Terms { words, pairs, both };

// The text that is written, on a line for each sentence:
//
//   word                 for each content word, in the order of the text
//   [ head , modifier ]  for each pair, behind its second word
//
// A pair is two content words next to each other, or two with a word for "of"
// between them, which an article may follow.
class AnalysisWriter : public WordSink {
 public:
  // All four must live as long as the writer.
  AnalysisWriter(const Language &language, Terms terms, Lexicon &lexicon,
                 Output &output);

  // Forgets the text before. To be called at the start of each text.
  void start();

  void word(std::string_view raw, Gap gap) override;

  // Writes the end of the text.
  void finish();

 private:
  // A content word, kept for the pair that the next one may make with it.
  class Kept {
   public:
    void set(const Word &word);
    std::string_view stem() const { return {text_.data(), size_}; }
    bool has_capital() const { return has_capital_; }

   private:
    std::array<char, longest_word> text_{};
    std::size_t size_ = 0;
    bool has_capital_ = false;
  };

  // What stands before the next word; kept_ is the content word meant.
  enum class Before {
    nothing,
    content_word,
    of,                // content word, "of"
    genitive_article,  // content word with a capital, genitive article
    of_article,        // content word, "of", article
  };

  void content_word(const Word &word);
  void function_word(FunctionFlags flags);
  Before behind_function_word(FunctionFlags flags) const;
  void pair_with(const Word &word);
  void write_separator();
  void write_word(std::string_view stem);
  void write_pair(std::string_view head, std::string_view modifier);

  const HeadSide head_side_;
  const Terms terms_;
  Lexicon &lexicon_;
  Output &output_;
  Before before_ = Before::nothing;
  Kept kept_;
  bool is_empty_ = true;
  bool is_new_sentence_ = false;
};

}  // namespace vek::analysis

#endif  // VEK_ANALYSE_ANALYSIS_WRITER_H_

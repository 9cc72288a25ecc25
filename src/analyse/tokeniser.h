// Finds the words of a text and tells how they stand to each other. Knows no
// language but for the few signs that TokeniserRules names.
#ifndef VEK_ANALYSE_TOKENISER_H_
#define VEK_ANALYSE_TOKENISER_H_

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "analyse/characters.h"

namespace vek::analysis {

// What stands between a word and the one before it.
enum class Gap : std::uint8_t {
  adjacent,  // nothing but blanks and one line end, or nothing but a hyphen
  broken,    // anything else
  sentence,  // the end of a sentence or a paragraph; the begin of the text
};

// Takes the words of a text in their order.
class WordSink {
 public:
  virtual ~WordSink() = default;

  // `raw` is UTF-8, begins with a letter or a digit and is valid during the
  // call. A word that is longer than any that matters may be cut.
  virtual void word(std::string_view raw, Gap gap) = 0;
};

struct TokeniserRules {
  // A colon between two letters is part of the word.
  bool colon_in_words = false;
  // An apostrophe behind a final s is as if not there.
  bool has_final_apostrophe = false;
};

// The words, tried in this order at each letter and digit:
//
//   number        a digit, then digits, letters, marks, and full stops and
//                 commas that have a digit behind them
//   abbreviation  single letters with full stops between them; the last full
//                 stop belongs to it but is not handed over
//   word          a letter, then letters, marks, digits, and inner marks
//                 (apostrophe, middle dot, a colon if the rules say so) that
//                 have a letter behind them
//
// Invisible characters go with the word that they are in. Everything else
// stands between the words.
class Tokeniser {
 public:
  // With fewer bytes left, feed() waits for the next piece.
  static constexpr std::size_t look_ahead = 1024;

  Tokeniser(TokeniserRules rules, WordSink &sink);

  // Forgets the text before. To be called at the start of each text.
  void start();

  // Reads `text` and returns how many bytes were read; the caller gives the
  // others again, with more behind them. All are read if `is_last`. The words
  // do not depend on how a text is cut into pieces.
  std::size_t feed(std::string_view text, bool is_last);

 private:
  enum class RunKind { number, word };
  // What was seen behind the last word.
  enum class Between { nothing, blank, hyphen, hyphen_line, broken, sentence };

  std::size_t step(std::string_view rest);
  std::size_t fast_word(std::string_view rest);
  std::size_t abbreviation(std::string_view rest);
  std::size_t run(std::string_view rest, RunKind kind);
  std::size_t continue_run(std::string_view rest);
  std::size_t extension(std::string_view rest) const;
  void deliver(std::string_view raw);
  void separator(CharKind kind);
  void line_end();

  const TokeniserRules rules_;
  WordSink &sink_;
  RunKind run_kind_ = RunKind::word;
  // The word handed over last is longer than what was read of it; its rest is
  // skipped.
  bool in_long_run_ = false;
  Between between_ = Between::sentence;
  unsigned nr_line_ends_ = 0;
  bool behind_s_ = false;
};

}  // namespace vek::analysis

#endif  // VEK_ANALYSE_TOKENISER_H_

#include "analyse/analysis_writer.h"

namespace vek::analysis {

AnalysisWriter::AnalysisWriter(const Language &language, Terms terms,
                               Lexicon &lexicon, Output &output)
    : head_side_(language.head_side),
      terms_(terms),
      lexicon_(lexicon),
      output_(output) {}

void AnalysisWriter::Kept::set(const Word &word) {
  // A copy: a stem is valid only until the next word is looked up.
  size_ = word.stem.copy(text_.data(), text_.size());
  has_capital_ = word.has_capital;
}

void AnalysisWriter::start() {
  before_ = Before::nothing;
  is_empty_ = true;
}

void AnalysisWriter::word(std::string_view raw, Gap gap) {
  if (gap != Gap::adjacent)
    before_ = Before::nothing;
  if (gap == Gap::sentence)
    is_new_sentence_ = true;
  const Word word = lexicon_.look_up(raw);
  // In l'école the article stands before the noun, as in two words.
  if (word.elided != 0)
    function_word(word.elided);
  switch (word.kind) {
    case WordKind::content:
      content_word(word);
      break;
    case WordKind::function:
      function_word(word.function);
      break;
    case WordKind::number_class:
      if (terms_ != Terms::pairs)
        write_word(number_token);
      before_ = Before::nothing;
      break;
    case WordKind::dropped:
      before_ = Before::nothing;
      break;
  }
}

void AnalysisWriter::content_word(const Word &word) {
  if (terms_ != Terms::pairs)
    write_word(word.stem);
  if (terms_ == Terms::words)
    return;
  pair_with(word);
  kept_.set(word);
  before_ = Before::content_word;
}

void AnalysisWriter::pair_with(const Word &word) {
  switch (before_) {
    case Before::nothing:
      break;
    case Before::content_word:
      if (head_side_ == HeadSide::right) {
        write_pair(word.stem, kept_.stem());
      } else {
        write_pair(kept_.stem(), word.stem);
      }
      break;
    // "Mitglied der Partei" is a pair, but "Partei, der viele" is none: only
    // nouns have capitals where such articles are.
    case Before::genitive_article:
      if (word.has_capital)
        write_pair(kept_.stem(), word.stem);
      break;
    case Before::of:
    case Before::of_article:
      write_pair(kept_.stem(), word.stem);
      break;
  }
}

void AnalysisWriter::function_word(FunctionFlags flags) {
  before_ = behind_function_word(flags);
}

AnalysisWriter::Before AnalysisWriter::behind_function_word(
    FunctionFlags flags) const {
  switch (before_) {
    case Before::content_word:
      if ((flags & is_of) != 0)
        return Before::of;
      if ((flags & is_genitive_article) != 0 && kept_.has_capital()) {
        return Before::genitive_article;
      }
      return Before::nothing;
    case Before::of:
      return (flags & is_article) != 0 ? Before::of_article : Before::nothing;
    default:
      return Before::nothing;
  }
}

void AnalysisWriter::write_separator() {
  if (!is_empty_)
    output_.put(is_new_sentence_ ? '\n' : ' ');
  is_empty_ = false;
  is_new_sentence_ = false;
}

void AnalysisWriter::write_word(std::string_view stem) {
  write_separator();
  output_.put(stem);
}

void AnalysisWriter::write_pair(std::string_view head,
                                std::string_view modifier) {
  write_separator();
  output_.put("[ ");
  output_.put(head);
  output_.put(" , ");
  output_.put(modifier);
  output_.put(" ]");
}

void AnalysisWriter::finish() {
  // A line for each sentence keeps the text readable; to its parser line ends
  // are blanks.
  if (!is_empty_)
    output_.put('\n');
}

}  // namespace vek::analysis

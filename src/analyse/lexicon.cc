#include "analyse/lexicon.h"

#include <libstemmer.h>

#include <algorithm>
#include <cstddef>

#include "analyse/characters.h"
#include "analyse/normalise.h"

namespace vek::analysis {
namespace {

// Bytes for a word and its stem, more than the average of any language. If they
// do not suffice, words are only forgotten earlier.
constexpr std::size_t known_word_bytes = 20;

Casing casing_of(const Language &language) {
  return language.has_dotless_i ? Casing::dotless_i : Casing::usual;
}

// Takes the next word off `text`, which is empty afterwards if there was none.
std::string_view next_word(std::string_view &text) {
  constexpr std::string_view blanks = " \t\r\n\v\f";
  text.remove_prefix(std::min(text.size(), text.find_first_not_of(blanks)));
  const std::string_view word = text.substr(0, text.find_first_of(blanks));
  text.remove_prefix(word.size());
  return word;
}

std::string without_comments(std::string_view text) {
  std::string rest;
  bool in_comment = false;
  for (const char c : text) {
    if (c == '#')
      in_comment = true;
    if (c == '\n')
      in_comment = false;
    if (!in_comment)
      rest += c;
  }
  return rest;
}

}  // namespace

Lexicon::Lexicon(const Language &language, Numbers numbers,
                 std::size_t nr_known)
    : language_(language),
      numbers_(numbers),
      stemmer_P_(*language.name == '\0'
                     ? nullptr
                     : sb_stemmer_new(language.name, "UTF_8"),
                 sb_stemmer_delete),
      most_known_(nr_known) {
  // The usual 100 000 words then fit into 2^17 places, and not 2^18.
  known_.max_load_factor(0.8F);

  known_text_.reserve(most_known_ * known_word_bytes + 2 * longest_raw_word);
  std::string_view endings = language.endings;
  while (!endings.empty())
    endings_.emplace_back(next_word(endings));
  const FunctionWords &words = language.words;
  add_words(words.others, is_function);
  add_words(words.articles, is_function | is_article);
  add_words(words.of, is_function | is_of);
  add_words(words.genitive_articles, is_function | is_genitive_article);
}

Lexicon::~Lexicon() = default;

bool Lexicon::has_stemmer() const {
  return *language_.name == '\0' || stemmer_P_ != nullptr;
}

void Lexicon::add_words(std::string_view list, FunctionFlags flags) {
  for (std::string_view word = next_word(list); !word.empty();
       word = next_word(list)) {
    // Lists are in normal form already, a user's file need not be.
    const std::string text = normalise_word(word, casing_of(language_));
    function_words_[text] =
        static_cast<FunctionFlags>(function_words_[text] | flags);
  }
}

void Lexicon::add_stop_words(std::string_view text) {
  add_words(without_comments(text), is_function);
}

FunctionFlags Lexicon::function_flags(std::string_view text) const {
  const auto found = function_words_.find(std::string(text));
  return found == function_words_.end() ? FunctionFlags{0} : found->second;
}

Word Lexicon::look_up(std::string_view raw) {
  // Here and not behind the search, so that two words that differ only behind
  // the limit are one.
  raw = cut_at_character(raw, longest_raw_word);
  const auto found = known_.find(raw);
  if (found == known_.end()) {
    const Word word = classify(raw);
    remember(raw, word);
    return word;
  }
  const Known &known = found->second;
  const std::string_view text = found->first;
  return {known.kind,
          known.function,
          known.elided,
          known.has_capital,
          {text.data() + text.size(), known.stem_size}};
}

void Lexicon::remember(std::string_view raw, const Word &word) {
  const std::size_t room = known_text_.capacity() - known_text_.size();
  // To forget all is simpler than to know which were used last, and costs
  // little: the frequent words are back at once.
  if (known_.size() == most_known_ || raw.size() + word.stem.size() > room) {
    known_.clear();
    known_text_.clear();
  }
  // `word.stem` is in stem_ and not in known_text_, so clearing has not touched
  // it.
  const std::size_t begin = known_text_.size();
  known_text_.append(raw).append(word.stem);
  known_.emplace(std::string_view(known_text_).substr(begin, raw.size()),
                 Known{word.kind, word.function, word.elided, word.has_capital,
                       static_cast<std::uint8_t>(word.stem.size())});
}

Word Lexicon::classify(std::string_view raw) {
  if (kind_of(first_character(raw).value) == CharKind::digit)
    return number(raw);
  const std::string normal = normalise_word(raw, casing_of(language_));
  std::string_view text = normal;
  Word word;
  word.has_capital = has_capital(raw);
  word.elided = cut_elision(text);
  word.function = function_flags(text);
  // Endings only from what is no function word as it stands: "can't" may be
  // listed itself, and without its ending be another word.
  if (word.function == 0) {
    cut_endings(text);
    word.function = function_flags(text);
  }
  word.kind = word.function != 0 ? WordKind::function : WordKind::content;
  if (word.kind == WordKind::content)
    word.stem = stem(text);
  return word;
}

Word Lexicon::number(std::string_view raw) {
  Word word;
  switch (numbers_) {
    case Numbers::drop:
      word.kind = WordKind::dropped;
      break;
    case Numbers::as_class:
      word.kind = WordKind::number_class;
      break;
    case Numbers::keep:
      stem_ = normalise_word(raw, casing_of(language_));
      // A comma would end the word in the analysis, and one writer's full stop
      // is another one's comma.
      std::replace(stem_.begin(), stem_.end(), ',', '.');
      word.kind = WordKind::content;
      word.stem = cut_at_character(stem_, longest_word);
      break;
  }
  return word;
}

// Takes elided function words off the front of `text`, unless all of it is a
// function word as it stands. Returns the flags of the last one.
FunctionFlags Lexicon::cut_elision(std::string_view &text) const {
  FunctionFlags flags = 0;
  while (function_flags(text) == 0) {
    const std::size_t end = text.find('\'');
    if (end == std::string_view::npos || end + 1 == text.size())
      break;
    const FunctionFlags elided = function_flags(text.substr(0, end + 1));
    if (elided == 0)
      break;
    flags = elided;
    text.remove_prefix(end + 1);
  }
  return flags;
}

void Lexicon::cut_endings(std::string_view &text) const {
  const char mark = language_.ending_mark;
  const std::size_t end = mark == '\0' ? text.npos : text.find(mark);
  if (end != text.npos && end > 0)
    text = text.substr(0, end);
  cut_listed_ending(text);
}

void Lexicon::cut_listed_ending(std::string_view &text) const {
  for (const std::string &ending : endings_) {
    if (text.size() > ending.size() && text.ends_with(ending)) {
      text.remove_suffix(ending.size());
      return;
    }
  }
}

// An abbreviation like u.s is left as it is: its letters are not a word's. No
// stemmer is known to make a word longer, but nothing forbids it.
std::string_view Lexicon::stem(std::string_view text) {
  stem_ = cut_at_character(text, longest_word);
  if (stemmer_P_ == nullptr || text.find('.') != text.npos)
    return stem_;
  const sb_symbol *result_P = sb_stemmer_stem(
      stemmer_P_.get(), reinterpret_cast<const sb_symbol *>(stem_.data()),
      static_cast<int>(stem_.size()));
  const int size = sb_stemmer_length(stemmer_P_.get());
  if (result_P == nullptr || size <= 0)
    return stem_;
  stem_.assign(reinterpret_cast<const char *>(result_P),
               static_cast<std::size_t>(size));
  return cut_at_character(stem_, longest_word);
}

}  // namespace vek::analysis

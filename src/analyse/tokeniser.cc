#include "analyse/tokeniser.h"

#include <algorithm>

namespace vek::analysis {
namespace {

// A word is handed over when it has this length, and what follows is skipped.
constexpr std::size_t longest_run = 512;

// Letters of an abbreviation, so that its end is seen in the bytes at hand.
constexpr std::size_t longest_abbreviation = 16;

CharKind byte_kind(char c) {
  return ascii_kinds[static_cast<unsigned char>(c)];
}

struct Seen {
  CharKind kind;
  std::size_t size;
};

// The first character of `text`. Nothing is of kind other, and 0 bytes long.
Seen look(std::string_view text) {
  if (text.empty())
    return {CharKind::other, 0};
  const CharKind kind = byte_kind(text[0]);
  if (kind != CharKind::high_byte)
    return {kind, 1};
  const Character character = first_character(text);
  return {kind_of(character.value), character.size};
}

Seen look(std::string_view text, std::size_t position) {
  return look(text.substr(std::min(position, text.size())));
}

bool goes_on_in_word(CharKind kind) {
  return kind == CharKind::letter || kind == CharKind::mark ||
         kind == CharKind::digit || kind == CharKind::invisible;
}

// Behind a run of plain letters these need no second look.
bool ends_plain_word(CharKind kind) {
  switch (kind) {
    case CharKind::blank:
    case CharKind::line_end:
    case CharKind::comma:
    case CharKind::hyphen:
    case CharKind::other:
    case CharKind::sentence_end:
      return true;
    default:
      return false;
  }
}

}  // namespace

Tokeniser::Tokeniser(TokeniserRules rules, WordSink &sink)
    : rules_(rules), sink_(sink) {}

void Tokeniser::start() {
  in_long_run_ = false;
  between_ = Between::sentence;
  nr_line_ends_ = 0;
  behind_s_ = false;
}

std::size_t Tokeniser::feed(std::string_view text, bool is_last) {
  // A step looks at no more than look_ahead bytes, so with that many it decides
  // as it would with the whole text: where a piece ends changes no word.
  const std::size_t kept = is_last ? 1 : look_ahead;
  std::size_t position = 0;
  while (text.size() - position >= kept) {
    position += step(text.substr(position));
  }
  return position;
}

// Reads one word, or one character between words. Returns its bytes.
std::size_t Tokeniser::step(std::string_view rest) {
  if (in_long_run_)
    return continue_run(rest);
  const Seen seen = look(rest);
  switch (seen.kind) {
    case CharKind::letter: {
      // In this order: the most frequent case first, and an abbreviation before
      // the word that its first letter would be.
      if (const std::size_t size = fast_word(rest); size > 0)
        return size;
      if (const std::size_t size = abbreviation(rest); size > 0)
        return size;
      return run(rest, RunKind::word);
    }
    case CharKind::digit:
      return run(rest, RunKind::number);
    default:
      separator(seen.kind);
      return seen.size;
  }
}

// A word of ASCII letters with a plain end behind it, which is what most words
// are. Returns 0 if the word needs a closer look.
std::size_t Tokeniser::fast_word(std::string_view rest) {
  const std::size_t limit = std::min(rest.size(), longest_run);
  std::size_t size = 0;
  while (size < limit && byte_kind(rest[size]) == CharKind::letter)
    ++size;
  if (size == 0 || size == limit)
    return 0;
  const CharKind next = byte_kind(rest[size]);
  // One letter with a full stop may begin an abbreviation.
  if (!ends_plain_word(next) && (next != CharKind::full_stop || size == 1)) {
    return 0;
  }
  deliver(rest.substr(0, size));
  return size;
}

// Letter, full stop, letter, and so on. A letter that begins a longer word ends
// it: J.Smith holds no abbreviation. Returns 0 if there is none.
std::size_t Tokeniser::abbreviation(std::string_view rest) {
  std::size_t end = 0;  // behind the last letter
  std::size_t position = 0;
  for (std::size_t nr_letters = 0; nr_letters < longest_abbreviation;
       ++nr_letters) {
    const Seen letter = look(rest, position);
    if (letter.kind != CharKind::letter)
      break;
    const Seen next = look(rest, position + letter.size);
    if (goes_on_in_word(next.kind))
      break;
    end = position + letter.size;
    position = end + 1;
    if (next.kind != CharKind::full_stop)
      break;
  }
  const std::string_view raw = rest.substr(0, end);
  if (raw.find('.') == raw.npos)
    return 0;
  deliver(raw);
  // Its last full stop goes with it, so that it ends no sentence.
  return look(rest, end).kind == CharKind::full_stop ? end + 1 : end;
}

std::size_t Tokeniser::run(std::string_view rest, RunKind kind) {
  run_kind_ = kind;
  std::size_t size = look(rest).size;
  while (size < longest_run) {
    const std::size_t more = extension(rest.substr(size));
    if (more == 0)
      break;
    size += more;
  }
  in_long_run_ = size >= longest_run;
  deliver(rest.substr(0, size));
  return size;
}

std::size_t Tokeniser::continue_run(std::string_view rest) {
  const std::size_t size = extension(rest);
  in_long_run_ = size > 0;
  return size;
}

// Bytes of the character at the begin of `rest` if the run goes on with it,
// else 0.
std::size_t Tokeniser::extension(std::string_view rest) const {
  const Seen seen = look(rest);
  if (goes_on_in_word(seen.kind))
    return seen.size;
  const CharKind next = look(rest, seen.size).kind;
  switch (seen.kind) {
    case CharKind::colon:
      return rules_.colon_in_words && next == CharKind::letter ? seen.size : 0;
    case CharKind::inner_mark:
      return next == CharKind::letter ? seen.size : 0;
    case CharKind::full_stop:
    case CharKind::comma:
      return run_kind_ == RunKind::number && next == CharKind::digit ? seen.size
                                                                     : 0;
    default:
      return 0;
  }
}

void Tokeniser::deliver(std::string_view raw) {
  Gap gap = Gap::adjacent;
  if (between_ == Between::broken)
    gap = Gap::broken;
  if (between_ == Between::sentence)
    gap = Gap::sentence;
  between_ = Between::nothing;
  nr_line_ends_ = 0;
  behind_s_ = raw.back() == 's' || raw.back() == 'S';
  sink_.word(raw, gap);
}

void Tokeniser::separator(CharKind kind) {
  switch (kind) {
    case CharKind::invisible:
      return;
    case CharKind::blank:
      if (between_ == Between::nothing)
        between_ = Between::blank;
      if (between_ == Between::hyphen)
        between_ = Between::broken;
      return;
    case CharKind::line_end:
      line_end();
      return;
    case CharKind::paragraph_end:
    case CharKind::full_stop:
    case CharKind::sentence_end:
      between_ = Between::sentence;
      return;
    case CharKind::hyphen:
      if (between_ == Between::nothing) {
        between_ = Between::hyphen;
        return;
      }
      break;
    case CharKind::inner_mark:
      if (between_ == Between::nothing && behind_s_ &&
          rules_.has_final_apostrophe) {
        return;
      }
      break;
    default:
      break;
  }
  // The end of a sentence outweighs all that follows it up to the next word.
  if (between_ != Between::sentence)
    between_ = Between::broken;
}

void Tokeniser::line_end() {
  // An empty line ends a paragraph, blanks in it or not.
  if (++nr_line_ends_ == 2)
    between_ = Between::sentence;
  if (between_ == Between::nothing)
    between_ = Between::blank;
  if (between_ == Between::hyphen)
    between_ = Between::hyphen_line;
}

}  // namespace vek::analysis

#include "params/scanner.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <limits>
#include <locale>
#include <sstream>
#include <system_error>
#include <utility>

#include "base/helpers.h"

namespace vek {
namespace {

// What a byte can be part of, as bits.
using ByteClass = std::uint8_t;
constexpr ByteClass blank = 1;
constexpr ByteClass digit = 2;
constexpr ByteClass group = 4;   // inside a digit group
constexpr ByteClass letter = 8;  // of an identifier
constexpr ByteClass word = 16;   // of a word, without escape pairs

constexpr bool is_one_of(unsigned byte, std::string_view characters) {
  for (const char character : characters) {
    if (byte == static_cast<unsigned char>(character))
      return true;
  }
  return false;
}

constexpr ByteClass class_of(unsigned byte) {
  unsigned bits = 0;
  const bool is_digit = byte >= '0' && byte <= '9';
  const bool is_upper = byte >= 'A' && byte <= 'Z';
  const bool is_lower = byte >= 'a' && byte <= 'z';
  if (is_one_of(byte, "\t\v\f\r\n "))
    bits |= blank;
  if (is_digit)
    bits |= digit;
  if (is_digit || byte == ',')
    bits |= group;
  if (is_upper || is_lower || byte == '_')
    bits |= letter;
  // Bytes from 0x80 on are of words, so that any 8-bit character set will do.
  if (byte > ' ' && !is_one_of(byte, "\",[]{|}\\"))
    bits |= word;
  return static_cast<ByteClass>(bits);
}

// Made at compile time: a byte costs one look into a table.
constexpr std::array<ByteClass, 256> make_byte_classes() {
  std::array<ByteClass, 256> classes{};
  for (unsigned byte = 0; byte < classes.size(); ++byte) {
    classes[byte] = class_of(byte);
  }
  return classes;
}

constexpr std::array<ByteClass, 256> byte_classes = make_byte_classes();

bool is_in(ByteClass bits, char character) {
  return (byte_classes[static_cast<unsigned char>(character)] & bits) != 0;
}

// The end of the run of such bytes at `from_P`.
const char *run_end(ByteClass bits, const char *from_P, const char *end_P) {
  while (from_P != end_P && is_in(bits, *from_P))
    ++from_P;
  return from_P;
}

// The three below return `from_P` if nothing of their kind stands there.

const char *group_end(const char *from_P, const char *end_P) {
  if (from_P == end_P || !is_in(digit, *from_P))
    return from_P;
  const char *last_P = run_end(group, from_P, end_P);
  // This ends at the latest at the first byte, which is a digit.
  while (last_P[-1] == ',')
    --last_P;
  return last_P;
}

const char *exponent_end(const char *from_P, const char *end_P) {
  // An e without digits behind it is not taken: it begins an identifier.
  if (from_P == end_P || (*from_P != 'e' && *from_P != 'E'))
    return from_P;
  const char *digits_P = from_P + 1;
  if (digits_P != end_P && (*digits_P == '+' || *digits_P == '-'))
    ++digits_P;
  const char *last_P = group_end(digits_P, end_P);
  return last_P == digits_P ? from_P : last_P;
}

// What follows the whole part of a rational.
const char *fraction_end(const char *from_P, const char *end_P) {
  if (from_P == end_P || *from_P != '.')
    return from_P;
  const char *last_P = group_end(from_P + 1, end_P);
  return last_P == from_P + 1 ? from_P : exponent_end(last_P, end_P);
}

const char *word_end(const char *from_P, const char *end_P) {
  for (;;) {
    from_P = run_end(word, from_P, end_P);
    const bool pair = end_P - from_P >= 2 && *from_P == '\\';
    if (!pair || from_P[1] == '\n')
      return from_P;
    from_P += 2;
  }
}

// The text of a string between its opening quote and the end of its match: up
// to the first quote that is not the second half of a backslash pair. The
// match itself may go on behind that, since it knows no pairs.
std::string_view string_text(std::string_view match) {
  std::size_t place = 0;
  while (place < match.size() && match[place] != '"') {
    place += match[place] == '\\' ? 2 : 1;
  }
  return match.substr(0, place);
}

constexpr std::size_t longest_keyword = 15;

static_assert(std::ranges::is_sorted(keyword_table, {}, &Keyword::text));
static_assert(std::ranges::all_of(keyword_table, [](const Keyword &keyword) {
  return keyword.text.size() <= longest_keyword;
}));

// Letters only, so that one bit tells the cases apart; '_' becomes DEL, which
// is as far from any keyword.
char lower_case(char character) {
  return static_cast<char>(character | 0x20);
}

Token::Code identifier_code(std::string_view text) {
  if (text.size() > longest_keyword)
    return Token::identifier;
  std::array<char, longest_keyword> buffer = {};
  std::ranges::transform(text, buffer.begin(), lower_case);
  const std::string_view name(buffer.data(), text.size());
  const auto place =
      std::ranges::lower_bound(keyword_table, name, {}, &Keyword::text);
  const bool found = place != keyword_table.end() && place->text == name;
  return found ? place->code : Token::identifier;
}

}  // namespace

Scanner::Scanner(Mode mode, std::string_view input, const char *file_name,
                 Messages &messages)
    : next_P_(input.data()),
      end_P_(input.data() + input.size()),
      file_name_(file_name),
      messages_(messages),
      mode_(mode) {
  advance();
}

void Scanner::advance() {
  if (mode_ == Mode::document) {
    while (!take_document_token()) {
    }
  } else {
    while (!take_resource_token()) {
    }
  }
}

bool Scanner::take_document_token() {
  skip_blanks();
  if (next_P_ == end_P_)
    return take(Token::end, end_P_);
  if (*next_P_ == '"')
    return take_string();
  // One code for both kinds of word, so that the longer match is all there is
  // to decide.
  const char *last_P = word_end(next_P_, end_P_);
  if (is_in(digit, *next_P_)) {
    // A group can be the longer one, because a comma ends a word: 1,000.
    last_P = std::max(last_P, group_end(next_P_, end_P_));
  }
  return last_P == next_P_ ? take_character() : take(Token::word, last_P);
}

bool Scanner::take_resource_token() {
  skip_blanks_and_comments();
  if (next_P_ == end_P_)
    return take(Token::end, end_P_);
  if (*next_P_ == '"')
    return take_string();
  // No identifier can begin as a number does, so the order is free.
  return take_identifier() || take_number() || take_character();
}

bool Scanner::take_identifier() {
  const char *last_P = run_end(letter, next_P_, end_P_);
  if (last_P == next_P_)
    return false;
  return take(identifier_code({next_P_, last_P}), last_P);
}

bool Scanner::take_number() {
  const char *whole_end_P = group_end(next_P_, end_P_);
  const char *last_P = fraction_end(whole_end_P, end_P_);
  if (last_P == next_P_)
    return false;
  return take(last_P == whole_end_P ? Token::integer : Token::rational, last_P);
}

bool Scanner::take_string() {
  const char *const open_P = next_P_;
  const char *match_end_P = open_P;  // behind the last quote that can close it
  for (const char *place_P = open_P + 1; place_P != end_P_; ++place_P) {
    if (*place_P == '\n') {
      lexical_error("unterminated string constant");
      next_P_ = place_P;
      return false;
    }
    if (*place_P != '"')
      continue;
    match_end_P = place_P + 1;
    // A quote without a backslash ends every match that can be.
    if (place_P[-1] != '\\')
      break;
  }
  if (match_end_P == open_P)
    return take_character();
  take(Token::string, match_end_P);
  text_ = string_text({open_P + 1, match_end_P});
  return true;
}

bool Scanner::take_character() {
  // Signed on every machine, which a plain char is not: a byte above 0x7F has a
  // negative code.
  return take(static_cast<signed char>(*next_P_), next_P_ + 1);
}

bool Scanner::take(int code, const char *end_P) {
  token_ = code;
  text_ = std::string_view(next_P_, end_P);
  next_P_ = end_P;
  return true;
}

void Scanner::skip_blanks() {
  for (; next_P_ != end_P_ && is_in(blank, *next_P_); ++next_P_) {
    if (*next_P_ == '\n')
      ++line_;
  }
}

bool Scanner::skip_comment() {
  if (on_last_line_ || next_P_ == end_P_ || *next_P_ != '#')
    return false;
  const char *line_end_P = std::find(next_P_, end_P_, '\n');
  on_last_line_ = line_end_P == end_P_;
  // The LF is left to the blanks, which count it.
  if (!on_last_line_)
    next_P_ = line_end_P;
  return !on_last_line_;
}

void Scanner::skip_blanks_and_comments() {
  do {
    skip_blanks();
  } while (skip_comment());
}

std::uint32_t Scanner::int_value() const {
  std::uint32_t value = 0;
  const char *const last_P = text_.data() + text_.size();
  // It stops at the comma by itself.
  const auto result = std::from_chars(text_.data(), last_P, value);
  return result.ec == std::errc::result_out_of_range
             ? std::numeric_limits<std::uint32_t>::max()
             : value;
}

double Scanner::real_value() const {
  const KeepErrno keep;
  std::istringstream digits{std::string(text_.substr(0, text_.find(',')))};
  digits.imbue(std::locale::classic());
  double value = 0.0;
  // A stream sets the greatest double and fails if a number is too large, but
  // takes one that is too small for 0.
  const bool too_large = !(digits >> value) && value > 0.0;
  return too_large ? std::numeric_limits<double>::infinity() : value;
}

void Scanner::parse_error(const char *message) {
  if (in_error_)
    return;
  ++nr_errors_;
  const std::string found(at_end() ? "<EOF>" : text());
  report(formatted("file %s: line %u: before `%s': parse error: %s", file_name_,
                   line_, found.c_str(), message));
  in_error_ = true;
}

void Scanner::lexical_error(const char *message) {
  report(formatted("file %s: line %u: %s", file_name_, line_, message));
}

void Scanner::report(const std::string &text) {
  ++nr_reports_;
  if (mode_ == Mode::resource || nr_reports_ <= max_shown_errors)
    messages_.error(text);
}

void Scanner::report_hidden_errors() const {
  if (mode_ == Mode::document && nr_reports_ > max_shown_errors) {
    messages_.error(formatted("file %s: %u errors, of which %u are shown",
                              file_name_, nr_reports_, max_shown_errors));
  }
}

void Scanner::skip_to(int code) {
  while (!is(code) && !at_end())
    advance();
  in_error_ = false;
}

}  // namespace vek

// The scanner of the two small languages that vek reads: resource files and
// analysis text. It is the base of their parsers and carries what both need:
// one token of lookahead, the line number, the report of an error and the
// recovery from it.
//
// Input is memory with a length. A token's text is a view of that memory, no
// token has a limit of its length, and the time is linear in the length of the
// input, whatever stands in it. Bytes are all alike to the scanner; it knows no
// character set.
//
// Lexical rules. The longest match wins, and among matches of one length the
// first in the table. A blank is a tab, vertical tab, form feed, carriage
// return, space or LF. A digit group is [0-9]([0-9,]*[0-9])?, so that 1,000 is
// one and the comma of 12, is not part of one.
//
//   both modes
//     white space    a run of blanks                              skipped
//     string         "([^"\n]|\\[^\n])*"                          258
//     unterminated   "([^"\n]|\\[^\n])* before LF       message, no token
//   resource mode also
//     comment        #[^\n]*\n                                    skipped
//     rational       group? . group ([eE][+-]? group)?            260
//     integer        group                                        259
//     identifier     [A-Za-z_]+             its keyword's code, or 256
//   document mode also
//     bracket        one of [ ] { } |                     its own code
//     number word    group                                        257
//     word           a run of word characters and pairs \\[^\n]   257
//   last in both
//     any other character but LF                          its own code
//
// A word character is any byte above 0x20 but " , [ ] { | } and \.
//
// What follows from the longest match:
// - A quote directly behind a backslash does not end a string as long as the
//   line has a quote without one, and before an LF it does not end it at all:
//   "ab\" and "ab\\" before LF are unterminated. At the end of the input the
//   last quote behind a backslash does end it.
// - A comment needs its LF: in a last line without one, # is a character.
// - An opening quote without any other quote before the end of the input is
//   a character.
#ifndef VEK_PARAMS_SCANNER_H_
#define VEK_PARAMS_SCANNER_H_

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/messages.h"

namespace vek {

// The token codes above the characters, which stand for themselves: a byte's
// code is its value as a signed char, so it is negative above 0x7F. A byte 0
// is a token of code 0, which parsers take for the end.
struct Token {
  enum Code : int {
    end = 0,
    identifier = 256,  // no keyword; resource mode
    word = 257,        // document mode; backslashes stay in its text
    string = 258,      // its text is what stands between the quotes
    integer = 259,
    rational = 260,
    // The keywords of resource files. Missing numbers are not in use.
    on = 261,
    off = 262,
    general = 263,
    winnow = 264,
    sbc = 265,
    rocchio = 266,
    training = 267,
    maxranks = 268,
    minranks = 269,
    termselection = 270,
    none = 271,
    docfreq = 272,
    termfreq = 273,
    tfidf = 274,
    uncertainty = 275,
    infogain = 276,
    analyser_command = 277,  // "analyser"; the plain name is that of an object
    datadirectory = 278,
    inputdirectory = 279,
    filedirectory = 280,
    alpha = 281,
    beta = 282,
    incremental = 283,
    save = 284,
    strength = 285,
    boolean = 286,  // "bool"
    freq = 287,
    ltc = 288,
    sqrt = 289,
    normalize = 290,
    cosine = 291,
    linear = 292,
    vector = 293,
    thetaplus = 295,
    thetamin = 296,
    pivoted = 297,
    gamma = 298,
    fparameter = 299,
    maxiters = 300,
    negativeweights = 301,
    maxsignif = 302,
    winnowfilter = 303,  // known as a word, but no section accepts it
    laplace = 304,
    selectivity = 307,
    scaling = 308,
    heldout = 309,
    walk = 310,
    steps = 311,
    path = 312,
    insignificant = 313,
    best = 314,
    cost = 315,
    loss = 316,
    hinge = 317,
    squared = 318,
    logistic = 319,
    analysertimeout = 320,
    predictions = 321,
  };
};

// A keyword as it stands in a resource file, in lower case.
struct Keyword {
  std::string_view text;
  Token::Code code;
};

// All keywords, ordered by their text.
inline constexpr std::array keyword_table = {
    Keyword{"alpha", Token::alpha},
    Keyword{"analyser", Token::analyser_command},
    Keyword{"analysertimeout", Token::analysertimeout},
    Keyword{"best", Token::best},
    Keyword{"beta", Token::beta},
    Keyword{"bool", Token::boolean},
    Keyword{"cosine", Token::cosine},
    Keyword{"cost", Token::cost},
    Keyword{"datadirectory", Token::datadirectory},
    Keyword{"docfreq", Token::docfreq},
    Keyword{"filedirectory", Token::filedirectory},
    Keyword{"fparameter", Token::fparameter},
    Keyword{"freq", Token::freq},
    Keyword{"gamma", Token::gamma},
    Keyword{"general", Token::general},
    Keyword{"heldout", Token::heldout},
    Keyword{"hinge", Token::hinge},
    Keyword{"incremental", Token::incremental},
    Keyword{"infogain", Token::infogain},
    Keyword{"inputdirectory", Token::inputdirectory},
    Keyword{"insignificant", Token::insignificant},
    Keyword{"laplace", Token::laplace},
    Keyword{"linear", Token::linear},
    Keyword{"logistic", Token::logistic},
    Keyword{"loss", Token::loss},
    Keyword{"ltc", Token::ltc},
    Keyword{"maxiters", Token::maxiters},
    Keyword{"maxranks", Token::maxranks},
    Keyword{"maxsignif", Token::maxsignif},
    Keyword{"minranks", Token::minranks},
    Keyword{"negativeweights", Token::negativeweights},
    Keyword{"none", Token::none},
    Keyword{"normalize", Token::normalize},
    Keyword{"off", Token::off},
    Keyword{"on", Token::on},
    Keyword{"path", Token::path},
    Keyword{"pivoted", Token::pivoted},
    Keyword{"predictions", Token::predictions},
    Keyword{"rocchio", Token::rocchio},
    Keyword{"save", Token::save},
    Keyword{"sbc", Token::sbc},
    Keyword{"scaling", Token::scaling},
    Keyword{"selectivity", Token::selectivity},
    Keyword{"sqrt", Token::sqrt},
    Keyword{"squared", Token::squared},
    Keyword{"steps", Token::steps},
    Keyword{"strength", Token::strength},
    Keyword{"termfreq", Token::termfreq},
    Keyword{"termselection", Token::termselection},
    Keyword{"tfidf", Token::tfidf},
    Keyword{"thetamin", Token::thetamin},
    Keyword{"thetaplus", Token::thetaplus},
    Keyword{"training", Token::training},
    Keyword{"uncertainty", Token::uncertainty},
    Keyword{"vector", Token::vector},
    Keyword{"walk", Token::walk},
    Keyword{"winnow", Token::winnow},
    Keyword{"winnowfilter", Token::winnowfilter},
};

class Scanner {
 public:
  enum class Mode { resource, document };

  // Reads the first token, so that a message can come out here. `input`, which
  // needs no terminating 0, `file_name`, which messages give, and the place for
  // messages must outlive the scanner.
  Scanner(Mode mode, std::string_view input, const char *file_name,
          Messages &messages);
  Scanner(const Scanner &) = delete;
  Scanner &operator=(const Scanner &) = delete;

  // Reads the next token. At the end of the input it stays there.
  void advance();

  // The code of the current token.
  int token() const { return token_; }
  bool is(int code) const { return token_ == code; }
  bool at_end() const { return token_ == Token::end; }
  // Goes on to the next token if the current one is `code`; returns whether.
  bool accept(int code) {
    if (token_ != code)
      return false;
    advance();
    return true;
  }
  // accept(), with a parse_error() if it fails.
  bool expect(int code, const char *message) {
    if (accept(code))
      return true;
    parse_error(message);
    return false;
  }

  // The text of the current token, valid as long as the input. Empty at the
  // end.
  std::string_view text() const { return text_; }
  // The number at the start of text(), up to the first comma: 1,000 is 1, as
  // 1,000.5 is. For number tokens; a text that starts with no digit gives 0.
  // Saturates at the greatest number of 32 bits.
  std::uint32_t int_value() const;
  // Infinity if the number is too large for a double.
  double real_value() const;

  // The line on which the current token ends; the first one is 1.
  std::uint32_t line() const { return line_; }

  // Reports `message` as an error before the current token, and counts it.
  // Does nothing while an earlier error waits for recovery.
  void parse_error(const char *message);
  // Reports `message` at the current line. Neither counts nor asks for
  // recovery.
  void lexical_error(const char *message);
  // An error was reported and recovery is pending.
  bool has_error() const { return in_error_; }
  void clear_error() { in_error_ = false; }
  // Recovery: goes on to the next token `code`, which stays unread, or to the
  // end, then clears the error. Does not move if the current token is `code`.
  void skip_to(int code);
  // Parse errors so far.
  std::uint32_t nr_errors() const { return nr_errors_; }

  // Errors of a document that are shown one by one. An analyser that has gone
  // wrong can make one of each byte.
  static constexpr std::uint32_t max_shown_errors = 1000;
  // To be called at the end: where there were more, says how many.
  void report_hidden_errors() const;

 private:
  // Each takes what stands at the current position and returns whether it
  // was a token; an unterminated string is none.
  bool take_resource_token();
  bool take_document_token();
  bool take_string();
  // The one-rule steps: true if the rule matches, nothing is taken otherwise.
  bool take_number();
  bool take_identifier();

  bool take(int code, const char *end_P);
  bool take_character();
  void report(const std::string &text);
  void skip_blanks();
  bool skip_comment();
  void skip_blanks_and_comments();

  const char *next_P_;  // the first byte behind the current token
  const char *const end_P_;
  const char *const file_name_;
  Messages &messages_;
  std::string_view text_;
  int token_ = Token::end;
  std::uint32_t line_ = 1;
  std::uint32_t nr_errors_ = 0;
  std::uint32_t nr_reports_ = 0;  // of either kind of error
  const Mode mode_;
  bool in_error_ = false;
  // No LF is left ahead, so that no # can start a comment. Without
  // this a last line of # would be searched once for each of them.
  bool on_last_line_ = false;
};

}  // namespace vek

#endif  // VEK_PARAMS_SCANNER_H_

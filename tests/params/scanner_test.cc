#include "params/scanner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "support/messages.h"

namespace vek {
namespace {

using Mode = Scanner::Mode;

std::string token_name(int code) {
  switch (code) {
    case Token::identifier:
      return "name";
    case Token::word:
      return "word";
    case Token::string:
      return "string";
    case Token::integer:
      return "int";
    case Token::rational:
      return "real";
    default:
      return std::to_string(code);
  }
}

std::string token_text(int code, std::string_view text) {
  return token_name(code) + "(" + std::string(text) + ")";
}

// The tokens up to the first of code 0.
std::string tokens(Mode mode, std::string_view input) {
  std::string out;
  for (Scanner scanner(mode, input, "in"); !scanner.at_end();
       scanner.advance()) {
    if (!out.empty())
      out += ' ';
    out += token_text(scanner.token(), scanner.text());
  }
  return out;
}

struct Scan {
  std::string input;
  std::string tokens;
  std::string messages = "";
};

void check_scans(Mode mode, const std::vector<Scan> &scans) {
  for (const Scan &scan : scans) {
    SCOPED_TRACE(testing::PrintToString(scan.input));
    EXPECT_EQ(screen([&] { EXPECT_EQ(tokens(mode, scan.input), scan.tokens); }),
              scan.messages);
  }
}

std::string unterminated(int line) {
  return "ERROR: file in: line " + std::to_string(line) +
         ": unterminated string constant\n";
}

TEST(Scanner, FindsTheTokensOfResourceFiles) {
  check_scans(
      Mode::resource,
      {
          {"1,000 1,,2 12,", "int(1,000) int(1,,2) int(12) 44(,)"},
          {"-1 1. .5", "45(-) int(1) int(1) 46(.) real(.5)"},
          {"1.2.3 1,000.5,5", "real(1.2) real(.3) real(1,000.5,5)"},
          {"1.5e-3 .5E+2 1.5e1,0", "real(1.5e-3) real(.5E+2) real(1.5e1,0)"},
          {"1.5e+x 1e3",
           "real(1.5) name(e) 43(+) name(x) int(1) name(e) int(3)"},
          {"ON On on bool WINNOWFILTER",
           "261(ON) 261(On) 261(on) 286(bool) 303(WINNOWFILTER)"},
          {"maxranksx _ a_b abc1",
           "name(maxranksx) name(_) name(a_b) name(abc)"
           " int(1)"},
          {"# a \"b\nc # d\n#\n", "name(c)"},
          {"#a\n# \"b\"", "35(#) string(b)"},
          {"[]{}|=", "91([) 93(]) 123({) 125(}) 124(|) 61(=)"},
          {"\x01\x7F\x80\xFF", "1(\x01) 127(\x7F) -128(\x80) -1(\xFF)"},
          {"a\t\v\f\r\n b\\", "name(a) name(b) 92(\\)"},
      });
}

TEST(Scanner, ReadsAnyCaseOfEachKeyword) {
  for (const Keyword &keyword : keywords()) {
    std::string text(keyword.text);
    EXPECT_EQ(Scanner(Mode::resource, text, "in").token(), keyword.code);
    text[0] = static_cast<char>(std::toupper(text[0]));
    text.back() = static_cast<char>(std::toupper(text.back()));
    EXPECT_EQ(Scanner(Mode::resource, text, "in").token(), keyword.code);
    text += '_';
    EXPECT_EQ(Scanner(Mode::resource, text, "in").token(), Token::identifier);
  }
}

TEST(Scanner, FindsTheTokensOfDocuments) {
  check_scans(
      Mode::document,
      {
          {"", ""},
          {" \t\v\f\r\n ", ""},
          {"[a,b]|{", "91([) word(a) 44(,) word(b) 93(]) 124(|) 123({)"},
          {"On #x 1.5e-3", "word(On) word(#x) word(1.5e-3)"},
          {"\x7F\x80\xFF! a\x01", "word(\x7F\x80\xFF!) word(a) 1(\x01)"},
          {"1,000a 12ab", "word(1,000) word(a) word(12ab)"},
          {"1,2, a1,0", "word(1,2) 44(,) word(a1) 44(,) word(0)"},
          {"a\\,b two\\ words", "word(a\\,b) word(two\\ words)"},
          {"\\[\\\"\\\\ 1\\,2", "word(\\[\\\"\\\\) word(1\\,2)"},
          {"\\\\\"a\" a\\", "word(\\\\) string(a) word(a) 92(\\)"},
          {"a\\\nb", "word(a) 92(\\) word(b)"},
      });
}

TEST(Scanner, ReadsQuotedStringsInBothModes) {
  const std::vector<Scan> scans = {
      {R"("two words" "")", "string(two words) string()"},
      {R"("a\"b")", R"(string(a\"b))"},
      // The match goes to the second quote, the text to the first one.
      {R"("a\\"b")", R"(string(a\\))"},
      // Nothing closes it on its line.
      {"\"ab\\\"\n", "", unterminated(1)},
      {"\n\n\"ab [\n]\n\"", "93(]) 34(\")", unterminated(3)},
      // Nor before the end of the input, but there is no line end either.
      {"\"[[", "34(\") 91([) 91([)"},
      // A quote behind a backslash is the best that the last line has.
      {"\"ab\\\" [", "string(ab\\\") 91([)"},
  };
  check_scans(Mode::resource, scans);
  check_scans(Mode::document, scans);
}

TEST(Scanner, DeliversAByteZeroAsTheEndAndCanGoOn) {
  const std::string input("a\0b", 3);
  for (const Mode mode : {Mode::resource, Mode::document}) {
    Scanner scanner(mode, input, "in");
    scanner.advance();
    EXPECT_TRUE(scanner.at_end());
    scanner.advance();
    EXPECT_EQ(scanner.text(), "b");
    scanner.advance();
    scanner.advance();
    EXPECT_TRUE(scanner.at_end());
    EXPECT_EQ(scanner.text(), "");
  }
}

// ---------------------------------------------------------------------------
// The rules once more, plainly: what a whole match looks like. The longest one
// counts, and of several the first in the table.

using Matches = bool (*)(std::string_view match);

bool is_all_of(std::string_view text, std::string_view bytes) {
  return text.find_first_not_of(bytes) == text.npos;
}

bool is_blank(std::string_view match) {
  return is_all_of(match, "\t\v\f\r \n");
}
bool is_comment(std::string_view match) {
  return match[0] == '#' && match.find('\n') == match.size() - 1;
}
bool is_group(std::string_view match) {
  return !match.empty() && match.front() != ',' && match.back() != ',' &&
         is_all_of(match, "0123456789,");
}
bool is_rational(std::string_view match) {
  const std::size_t point = match.find('.');
  if (point == match.npos || (point > 0 && !is_group(match.substr(0, point))))
    return false;
  const std::string_view fraction = match.substr(point + 1);
  const std::size_t e = fraction.find_first_of("eE");
  if (e == fraction.npos)
    return is_group(fraction);
  const std::size_t sign = fraction.find_first_of("+-", e) == e + 1 ? 1 : 0;
  return is_group(fraction.substr(0, e)) &&
         is_group(fraction.substr(e + 1 + sign));
}
bool is_identifier(std::string_view match) {
  return std::ranges::all_of(match, [](char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
  });
}
bool is_bracket(std::string_view match) {
  return match.size() == 1 && is_all_of(match, "[]{}|");
}
bool is_word(std::string_view match) {
  for (std::size_t n = 0; n < match.size(); ++n) {
    const bool above_space = static_cast<unsigned char>(match[n]) > 0x20;
    if (match[n] == '\\' && n + 1 < match.size() && match[n + 1] != '\n')
      ++n;
    else if (!above_space || is_all_of(match.substr(n, 1), "\",[]{|}\\"))
      return false;
  }
  return true;
}
// A quote and more: in between no line end, and a quote behind a backslash
// only.
bool is_opened(std::string_view match) {
  if (match.size() < 2 || match[0] != '"')
    return false;
  for (std::size_t n = 1; n + 1 < match.size(); ++n) {
    if (match[n] == '\n' || (match[n] == '"' && match[n - 1] != '\\'))
      return false;
  }
  return true;
}
bool is_string(std::string_view match) {
  return is_opened(match) && match.back() == '"';
}
bool is_unterminated(std::string_view match) {
  return is_opened(match) && match.back() == '\n';
}
bool is_single(std::string_view match) {
  return match.size() == 1 && match[0] != '\n';
}

constexpr int skipped = -1000;
constexpr int own_code = -1001;
constexpr int dropped = -1002;

struct Rule {
  Matches matches;
  int result;
};

std::vector<Rule> rules_of(Mode mode) {
  if (mode == Mode::resource) {
    return {{is_blank, skipped},
            {is_comment, skipped},
            {is_rational, Token::rational},
            {is_group, Token::integer},
            {is_identifier, Token::identifier},
            {is_string, Token::string},
            {is_unterminated, dropped},
            {is_single, own_code}};
  }
  return {{is_blank, skipped},        {is_bracket, own_code},
          {is_group, Token::word},    {is_word, Token::word},
          {is_string, Token::string}, {is_unterminated, dropped},
          {is_single, own_code}};
}

struct Match {
  int result = own_code;
  std::size_t size = 0;
};

Match longest_match(const std::vector<Rule> &rules, std::string_view text) {
  for (std::size_t size = text.size(); size > 0; --size) {
    for (const Rule &rule : rules) {
      if (rule.matches(text.substr(0, size)))
        return {rule.result, size};
    }
  }
  return {};
}

std::string_view reference_string_text(std::string_view match) {
  for (std::size_t n = 1; n < match.size(); ++n) {
    if (match[n] == '"')
      return match.substr(1, n - 1);
    if (match[n] == '\\')
      ++n;
  }
  return match.substr(1);
}

int reference_code(int result, std::string_view text) {
  if (result == own_code)
    return static_cast<signed char>(text[0]);
  if (result != Token::identifier)
    return result;
  std::string name(text);
  for (char &c : name)
    c = static_cast<char>(std::tolower(c));
  for (const Keyword &keyword : keywords()) {
    if (keyword.text == name)
      return keyword.code;
  }
  return result;
}

struct Outcome {
  std::string tokens;  // with the lines on which they end
  std::string messages;
};

std::string on_line(std::uint32_t line, int code, std::string_view text) {
  return std::to_string(line) + ":" + token_text(code, text) + " ";
}

Outcome reference_scan(const std::vector<Rule> &rules, std::string_view text) {
  Outcome outcome;
  std::uint32_t line = 1;
  while (!text.empty()) {
    const Match match = longest_match(rules, text);
    std::string_view found = text.substr(0, match.size);
    if (match.result == dropped) {
      outcome.messages += unterminated(static_cast<int>(line));
      text.remove_prefix(text.find('\n'));
      continue;
    }
    text.remove_prefix(match.size);
    line += static_cast<std::uint32_t>(std::ranges::count(found, '\n'));
    if (match.result == skipped)
      continue;
    const int code = reference_code(match.result, found);
    if (code == Token::string)
      found = reference_string_text(found);
    outcome.tokens += on_line(line, code, found);
  }
  outcome.tokens += on_line(line, Token::end, "");
  return outcome;
}

std::string scan_with_lines(Mode mode, std::string_view text) {
  std::string out;
  Scanner scanner(mode, text, "in");
  for (; !scanner.at_end(); scanner.advance()) {
    out += on_line(scanner.line(), scanner.token(), scanner.text());
  }
  return out + on_line(scanner.line(), Token::end, scanner.text());
}

void compare(Mode mode, const std::vector<std::string> &texts) {
  const std::vector<Rule> rules = rules_of(mode);
  std::string messages;
  const std::string shown = screen([&] {
    for (const std::string &text : texts) {
      const Outcome expected = reference_scan(rules, text);
      messages += expected.messages;
      ASSERT_EQ(scan_with_lines(mode, text), expected.tokens)
          << testing::PrintToString(text);
    }
  });
  EXPECT_TRUE(shown == messages);
}

// All texts of up to `size` bytes of the alphabet.
void compare_all(Mode mode, std::string_view alphabet, std::size_t size) {
  std::vector<std::string> texts = {""};
  for (std::size_t n = 0; n < texts.size(); ++n) {
    for (const char c : alphabet) {
      if (texts[n].size() < size)
        texts.push_back(texts[n] + c);
    }
  }
  compare(mode, texts);
}

TEST(Scanner, FollowsTheRulesOnAllShortTexts) {
  compare_all(Mode::resource, "\"\\\n# 1,.e+a", 4);
  compare_all(Mode::resource, "1,.e+", 6);
  compare_all(Mode::resource, "\"\\\n#", 7);
  compare_all(Mode::document, "\"\\\n 1,a[\x80", 4);
  compare_all(Mode::document, "1,a\\", 6);
  compare_all(Mode::document, "\"\\\na", 7);
}

TEST(Scanner, FollowsTheRulesOnRandomTexts) {
  std::string alphabet =
      "\"\"\"\\\\\\\n\n###11223,,,...eeE+-+-onOFF  [](){}|_=";
  std::mt19937 random(4711);
  for (const int greatest : {0, 255}) {
    for (int byte = 1; byte <= greatest; ++byte)
      alphabet += static_cast<char>(byte);
    std::vector<std::string> texts(4000);
    for (std::string &text : texts) {
      text.resize(random() % 60);
      for (char &c : text)
        c = alphabet[random() % alphabet.size()];
    }
    compare(Mode::resource, texts);
    compare(Mode::document, texts);
  }
}

// Would take minutes each if a text were searched again from each of its
// bytes.
TEST(Scanner, IsLinearInHostileTexts) {
  constexpr std::size_t size = 1000000;
  for (const std::string_view part :
       {"#", "\"", "\\", "\\\"", "\"\\", "\"\\\"", "1,", "1,,", "1.1,", "1.e",
        ",", "\"#", "[", "a"}) {
    std::string text;
    while (text.size() < size)
      text += part;
    for (const Mode mode : {Mode::resource, Mode::document}) {
      for (const std::string_view start : {"", "\"", " # \" "}) {
        const std::string whole = std::string(start) + text;
        std::size_t nr_tokens = 0;
        for (Scanner scanner(mode, whole, "in"); !scanner.at_end();
             scanner.advance()) {
          ++nr_tokens;
        }
        EXPECT_GT(nr_tokens, 0U);
        EXPECT_LE(nr_tokens, whole.size());
      }
    }
  }
}

TEST(Scanner, ReadsAStreamLikeATextAndAFailedOneAsEmpty) {
  std::istringstream input("[ \"]\" \\] ] ]");
  Scanner scanner(Mode::document, input, "in");
  EXPECT_TRUE(scanner.accept('['));
  scanner.skip_to(']');
  scanner.skip_to(']');
  EXPECT_TRUE(scanner.accept(']'));
  EXPECT_TRUE(scanner.accept(']'));
  EXPECT_TRUE(scanner.at_end());
  // Can be opened but not read.
  std::ifstream directory(testing::TempDir());
  EXPECT_TRUE(Scanner(Mode::document, directory, "in").at_end());
}

TEST(Scanner, ConvertsNumbersUpToTheFirstComma) {
  struct Number {
    std::string text;
    std::uint32_t int_value;
    double real_value;
  };
  const double infinity = std::numeric_limits<double>::infinity();
  const std::string many_digits(400, '9');
  const std::uint32_t greatest = 4294967295;
  const std::vector<Number> numbers = {
      {"1,000.5", 1, 1.0},
      {"007", 7, 7.0},
      {".5E+2", 0, 50.0},
      {"2.5e1,000", 2, 25.0},
      {"4294967295", greatest, 4294967295.0},
      {"4294967296", greatest, 4294967296.0},
      {"1.8e308", 1, infinity},
      {"1.0e999999999999999999999", 1, infinity},
      {many_digits, greatest, infinity},
      {many_digits + ".0e-400", greatest, 1.0},
      {"5.0e-324", 5, 5e-324},
      {"1.0e-999999999999999999999", 1, 0.0},
  };
  errno = 0;
  for (const Number &number : numbers) {
    SCOPED_TRACE(number.text);
    const Scanner scanner(Mode::resource, number.text, "in");
    ASSERT_EQ(scanner.text(), number.text);
    EXPECT_EQ(scanner.int_value(), number.int_value);
    EXPECT_EQ(scanner.real_value(), number.real_value);
  }
  // Which would become the exit status of the run.
  EXPECT_EQ(errno, 0);
}

TEST(Scanner, ReportsOneErrorUntilItIsCleared) {
  Scanner scanner(Mode::document, "a\n b", "doc");
  testing::internal::CaptureStderr();
  EXPECT_FALSE(scanner.expect(']', "`]' expected"));
  scanner.parse_error("not heard");
  EXPECT_TRUE(scanner.has_error());
  EXPECT_EQ(scanner.text(), "a");
  scanner.clear_error();
  EXPECT_TRUE(scanner.expect(Token::word, "not raised"));
  scanner.parse_error("word too many");
  scanner.skip_to(']');
  EXPECT_FALSE(scanner.has_error());
  scanner.skip_to(']');
  scanner.parse_error("more expected");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "ERROR: file doc: line 1: before `a': parse error: `]' expected\n"
            "ERROR: file doc: line 2: before `b': parse error: word too many\n"
            "ERROR: file doc: line 2: before `<EOF>': parse error: more "
            "expected\n");
  EXPECT_EQ(scanner.nr_errors(), 3U);
}

TEST(Scanner, KeepsTheLineRightBehindAnUnterminatedString) {
  testing::internal::CaptureStderr();
  Scanner scanner(Mode::document, "\"first\n[\n\"third\nx", "doc");
  EXPECT_TRUE(scanner.is('['));
  EXPECT_EQ(scanner.line(), 2U);
  scanner.advance();
  EXPECT_EQ(scanner.line(), 4U);
  EXPECT_EQ(scanner.nr_errors(), 0U);
  EXPECT_FALSE(scanner.has_error());
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "ERROR: file doc: line 1: unterminated string constant\n"
            "ERROR: file doc: line 3: unterminated string constant\n");
}

}  // namespace
}  // namespace vek

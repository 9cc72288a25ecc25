#include "params/scanner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <regex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/recorded_messages.h"

namespace vek {
namespace {

using Mode = Scanner::Mode;
using Texts = std::vector<std::string>;

constexpr double infinity = std::numeric_limits<double>::infinity();

std::string shown(int code, const std::string &text) {
  static const std::map<int, std::string> names = {{Token::identifier, "name"},
                                                   {Token::word, "word"},
                                                   {Token::string, "string"},
                                                   {Token::integer, "int"},
                                                   {Token::rational, "real"}};
  const auto name = names.find(code);
  return (name == names.end() ? std::to_string(code) : name->second) + '(' +
         text + ')';
}

// The tokens up to the first of code 0, a slash for each line end on the way.
std::string tokens(Mode mode, std::string_view text, Messages &messages) {
  std::string out;
  std::uint32_t line = 1;
  for (Scanner scanner(mode, text, "in", messages);; scanner.advance()) {
    out.append(scanner.line() - line, '/');
    line = scanner.line();
    if (scanner.at_end())
      return out;
    out += shown(scanner.token(), std::string(scanner.text()));
  }
}

std::string unterminated(std::ptrdiff_t line) {
  return "ERROR: file in: line " + std::to_string(line) +
         ": unterminated string constant\n";
}

TEST(Scanner, DeliversAByteZeroAsTheEndAndCanGoOn) {
  for (const Mode mode : {Mode::resource, Mode::document}) {
    std::string texts;
    Messages none;
    Scanner scanner(mode, std::string_view("a\0b", 3), "in", none);
    for (int i = 0; i < 5; ++i, scanner.advance())
      texts += shown(scanner.token(), std::string(scanner.text()));
    const std::string word = mode == Mode::document ? "word" : "name";
    EXPECT_EQ(texts,
              word + "(a)" + std::string("0(\0)", 4) + word + "(b)0()0()");
  }
}

// ---------------------------------------------------------------------------
// The rules once more, plainly, as whole matches. The longest one counts, and
// of several the first.

constexpr int skipped = -1000;
constexpr int own_code = -1001;
constexpr int dropped = -1002;

using Rules = std::vector<std::pair<std::regex, int>>;

Rules make_rules(Mode mode) {
  const std::string group = "[0-9]([0-9,]*[0-9])?";
  const std::string opened = R"("(\\"|[^"\n])*)";
  Rules rules = {{std::regex("[\t\v\f\r \n]+"), skipped},
                 {std::regex(opened + '"'), Token::string},
                 {std::regex(opened + '\n'), dropped}};
  const auto add = [&](const std::string &form, int result) {
    rules.emplace_back(form, result);
  };
  if (mode == Mode::document) {
    add(group, Token::word);
    add("([^\x01- \",\\[\\]{}|\\\\]|\\\\[^\n])+", Token::word);
  } else {
    add("#[^\n]*\n", skipped);
    add('(' + group + ")?\\." + group + "([eE][+-]?" + group + ")?",
        Token::rational);
    add(group, Token::integer);
    add("[A-Za-z_]+", Token::identifier);
  }
  add("[^\n]", own_code);
  return rules;
}

struct Match {
  int result = own_code;
  std::string text;
};

Match longest_match(const Rules &rules, const std::string &text) {
  Match longest;
  std::smatch match;
  for (const auto &[form, result] : rules) {
    if (std::regex_search(text, match, form,
                          std::regex_constants::match_continuous) &&
        match[0].str().size() > longest.text.size()) {
      longest = {result, match[0]};
    }
  }
  return longest;
}

std::string plain_token(int result, const std::string &text) {
  if (result == own_code)
    return shown(static_cast<signed char>(text[0]), text);
  if (result == Token::string) {
    // Up to the first quote that is not behind a backslash of its own.
    std::smatch match;
    static const std::regex form(R"(^"((\\[^]|[^"\\])*))");
    std::regex_search(text, match, form);
    return shown(result, match[1]);
  }
  return shown(result, text);
}

// Adds what is reported to the messages.
std::string plain_scan(const Rules &rules, std::string text,
                       std::string &messages) {
  std::string out;
  for (std::ptrdiff_t line = 1; !text.empty();) {
    Match match = longest_match(rules, text);
    if (match.result == dropped) {
      messages += unterminated(line);
      match.text.pop_back();
    }
    text.erase(0, match.text.size());
    const auto nr_lines = std::ranges::count(match.text, '\n');
    line += nr_lines;
    out.append(static_cast<std::size_t>(nr_lines), '/');
    if (match.result != dropped && match.result != skipped)
      out += plain_token(match.result, match.text);
  }
  return out;
}

void compare(Mode mode, const Texts &texts) {
  const Rules rules = make_rules(mode);
  std::string messages;
  RecordedMessages told;
  for (const std::string &text : texts) {
    ASSERT_EQ(tokens(mode, text, told), plain_scan(rules, text, messages))
        << testing::PrintToString(text);
  }
  EXPECT_TRUE(told.text == messages);
}

// All texts of up to `size` bytes of the alphabet.
Texts all_texts(std::string_view alphabet, std::size_t size) {
  Texts texts = {""};
  for (std::size_t n = 0; n < texts.size(); ++n) {
    for (const char c : alphabet) {
      if (texts[n].size() < size)
        texts.push_back(texts[n] + c);
    }
  }
  return texts;
}

TEST(Scanner, FollowsTheRulesOnAllShortTexts) {
  compare(Mode::resource, all_texts("\"\\\n# 1,.e+a", 4));
  compare(Mode::resource, all_texts("1,.e+", 6));
  compare(Mode::resource, all_texts("\"\\\n#", 7));
  compare(Mode::document, all_texts("\"\\\n 1,a[\x80", 4));
  compare(Mode::document, all_texts("1,a\\", 6));
  compare(Mode::document, all_texts("\"\\\na", 7));
}

// Would take minutes each if a text were searched again from each of its
// bytes.
TEST(Scanner, IsLinearInHostileTexts) {
  for (const std::string part :
       {"#", "\"", "\\", "\\\"", "\"\\", "\"\\\"", "1,", "1,,", "1.1,", "1.e",
        ",", "\"#", "[", "a"}) {
    std::string text;
    while (text.size() < 1000000)
      text += part;
    for (const Mode mode : {Mode::resource, Mode::document}) {
      for (const std::string start : {"", "\"", " # \" "}) {
        const std::string whole = start + text;
        Messages none;
        Scanner scanner(mode, whole, "in", none);
        while (!scanner.at_end())
          scanner.advance();
        EXPECT_LE(scanner.line(), 2U);
      }
    }
  }
}

TEST(Scanner, ConvertsNumbersUpToTheFirstComma) {
  const std::string many_digits(400, '9');
  const std::uint32_t greatest = 4294967295;
  const struct {
    std::string text;
    std::uint32_t int_value;
    double real_value;
  } numbers[] = {{"1,000.5", 1, 1.0},
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
                 {"1.0e-999999999999999999999", 1, 0.0}};
  errno = 0;
  for (const auto &[text, int_value, real_value] : numbers) {
    Messages none;
    const Scanner scanner(Mode::resource, text, "in", none);
    ASSERT_EQ(scanner.text(), text);
    EXPECT_EQ(scanner.int_value(), int_value) << text;
    EXPECT_EQ(scanner.real_value(), real_value) << text;
  }
  // Which would become the exit status of the run.
  EXPECT_EQ(errno, 0);
}

TEST(Scanner, ReportsOneErrorUntilItIsCleared) {
  RecordedMessages messages;
  Scanner scanner(Mode::document, "a\n b \"]\" \\] ] c", "doc", messages);
  EXPECT_FALSE(scanner.expect(']', "`]' expected"));
  scanner.parse_error("not heard");
  EXPECT_TRUE(scanner.has_error());
  scanner.clear_error();
  EXPECT_TRUE(scanner.expect(Token::word, "not raised"));
  scanner.parse_error("word too many");
  scanner.skip_to(']');
  EXPECT_FALSE(scanner.has_error());
  scanner.skip_to(']');
  EXPECT_TRUE(scanner.accept(']'));
  scanner.skip_to(']');
  scanner.parse_error("more expected");
  EXPECT_EQ(
      messages.text,
      "ERROR: file doc: line 1: before `a': parse error: `]' expected\n"
      "ERROR: file doc: line 2: before `b': parse error: word too many\n"
      "ERROR: file doc: line 2: before `<EOF>': parse error: more expected\n");
  EXPECT_EQ(scanner.nr_errors(), 3U);
}

}  // namespace
}  // namespace vek

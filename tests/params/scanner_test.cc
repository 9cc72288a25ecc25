#include "params/scanner.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <limits>
#include <map>
#include <regex>
#include <string>
#include <string_view>
#include <utility>

#include "support/recorded_messages.h"

namespace vek {
namespace {

using Mode = Scanner::Mode;

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

// The tokens up to the first of code 0, a slash for each line end on the way
// and "!" with the line for each string without an end.
std::string tokens(Mode mode, std::string_view text) {
  struct Told : Messages {
    void error(std::string_view message) override {
      out += std::regex_replace(
          std::string(message),
          std::regex("file in: line (.*): unterminated string constant"),
          "!$1");
    }
    std::string out;
  } told;
  std::uint32_t line = 1;
  for (Scanner scanner(mode, text, "in", told);; scanner.advance()) {
    told.out.append(scanner.line() - line, '/');
    line = scanner.line();
    if (scanner.at_end())
      return told.out;
    told.out += shown(scanner.token(), std::string(scanner.text()));
  }
}

TEST(Scanner, DeliversAByteZeroAsTheEndAndCanGoOn) {
  std::string texts;
  Messages none;
  Scanner scanner(Mode::document, std::string_view("a\0b", 3), "in", none);
  for (int i = 0; i < 5; ++i, scanner.advance())
    texts += shown(scanner.token(), std::string(scanner.text()));
  EXPECT_EQ(texts, std::string("word(a)0(\0)word(b)0()0()", 24));
}

TEST(Scanner, TakesTheLongestMatchOfItsRules) {
  const struct {
    Mode mode;
    std::string text, expected;
  } cases[] = {
      {Mode::resource, "a_B c1 \t\v\f\r d\n\ne",
       "name(a_B)name(c)int(1)name(d)//name(e)"},
      {Mode::resource, "1 1,0 1,, 1,,2 ,1",
       "int(1)int(1,0)int(1)44(,)44(,)int(1,,2)44(,)int(1)"},
      {Mode::resource, "1.5 .5 1. 1.,2 1.2.3 1,0.2,5",
       "real(1.5)real(.5)int(1)46(.)int(1)46(.)44(,)int(2)real(1.2)real(.3)"
       "real(1,0.2,5)"},
      {Mode::resource, "1.5e3 1.5E+3 .5e-1,0 1.5e 1.5e+ 1e5 1.5e1.5",
       "real(1.5e3)real(1.5E+3)real(.5e-1,0)real(1.5)name(e)real(1.5)name(e)"
       "43(+)int(1)name(e)int(5)real(1.5e1)real(.5)"},
      {Mode::resource, "a#b \"\n#\n[\xFF]#end",
       "name(a)//91([)-1(\xFF)93(])35(#)name(end)"},
      // A quote behind two backslashes ends the text, but not the match.
      {Mode::resource, R"("" "a\"b" "\\" "#" \ "a\\"b")",
       R"(string()string(a\"b)string(\\)35(#)string( \ )name(a)92(\)92(\))"
       "string(b)"},
      {Mode::resource, "\"a\nb\"", "!1/name(b)34(\")"},
      {Mode::resource, "\"a\\\"\n\\\"x\"\"\\\n\"",
       "!1/92(\\)string(x)!2/34(\")"},
      {Mode::document, "1 1,0 1,,a 1,,2 a1,2 1a",
       "word(1)word(1,0)word(1)44(,)44(,)word(a)word(1,,2)word(a1)44(,)word(2)"
       "word(1a)"},
      {Mode::document, "a.b-\x80'#/ \\[a\\ b\\\\ c[d]{e}|f",
       "word(a.b-\x80'#/)word(\\[a\\ b\\\\)word(c)91([)word(d)93(])123({)"
       "word(e)125(})124(|)word(f)"},
      {Mode::document, "a\\\nb\\", "word(a)92(\\)/word(b)92(\\)"},
      {Mode::document, "x\"a\"y\"b\nc \"\\\"\" \x01\x1F\x7F",
       "word(x)string(a)word(y)!1/word(c)string(\\\")1(\x01)31(\x1F)"
       "word(\x7F)"}};
  for (const auto &[mode, text, expected] : cases)
    EXPECT_EQ(tokens(mode, text), expected) << text;
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

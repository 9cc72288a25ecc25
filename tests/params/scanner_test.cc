#include "params/scanner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cctype>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <functional>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

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
    testing::internal::CaptureStderr();
    const std::string found = tokens(mode, scan.input);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), scan.messages);
    EXPECT_EQ(found, scan.tokens);
  }
}

std::string unterminated(int line) {
  return "ERROR: file in: line " + std::to_string(line) +
         ": unterminated string constant\n";
}

TEST(Scanner, ReadsNumbersOfResourceFiles) {
  check_scans(Mode::resource, {
                                  {"1,000", "int(1,000)"},
                                  {"1,,2", "int(1,,2)"},
                                  {"12,", "int(12) 44(,)"},
                                  {",1", "44(,) int(1)"},
                                  {"-1", "45(-) int(1)"},
                                  {"1.5", "real(1.5)"},
                                  {".5", "real(.5)"},
                                  {"1.", "int(1) 46(.)"},
                                  {"1..5", "int(1) 46(.) real(.5)"},
                                  {"1.2.3", "real(1.2) real(.3)"},
                                  {"1,000.5,5", "real(1,000.5,5)"},
                                  {"1.5,", "real(1.5) 44(,)"},
                                  {"1,.5", "int(1) 44(,) real(.5)"},
                                  {"1.,5", "int(1) 46(.) 44(,) int(5)"},
                                  {"1.5e-3", "real(1.5e-3)"},
                                  {".5E+2", "real(.5E+2)"},
                                  {"1.5e1,0", "real(1.5e1,0)"},
                                  {"1.5e1,", "real(1.5e1) 44(,)"},
                                  {"1.5,e3", "real(1.5) 44(,) name(e) int(3)"},
                                  {"1.5e", "real(1.5) name(e)"},
                                  {"1.5e+", "real(1.5) name(e) 43(+)"},
                                  {"1.5e+x", "real(1.5) name(e) 43(+) name(x)"},
                                  {"1.e5", "int(1) 46(.) name(e) int(5)"},
                                  {"1e3", "int(1) name(e) int(3)"},
                              });
}

TEST(Scanner, ReadsIdentifiersAndKeywordsOfResourceFiles) {
  const std::string longest(100, 'q');
  check_scans(Mode::resource,
              {
                  {"ON On on", "261(ON) 261(On) 261(on)"},
                  {"Maxranks", "268(Maxranks)"},
                  {"bool WINNOWFILTER", "286(bool) 303(WINNOWFILTER)"},
                  {"maxranksx maxrank max_ranks",
                   "name(maxranksx) name(maxrank) name(max_ranks)"},
                  {"negativeweightss", "name(negativeweightss)"},
                  {"abc1", "name(abc) int(1)"},
                  {"a-b", "name(a) 45(-) name(b)"},
                  {"_ a_b", "name(_) name(a_b)"},
                  {longest, "name(" + longest + ")"},
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

TEST(Scanner, SkipsCommentsThatHaveALineEnd) {
  check_scans(Mode::resource, {
                                  {"# a \"b\nc # d\n", "name(c)"},
                                  {"#\n##\n\n#\n", ""},
                                  {"a#b", "name(a) 35(#) name(b)"},
                                  {"#a\n# \"b\"", "35(#) string(b)"},
                                  {"\"#\"\n", "string(#)"},
                              });
}

TEST(Scanner, HasSignedCodesForBytesInResourceFiles) {
  check_scans(Mode::resource,
              {
                  {"[]{}|=;", "91([) 93(]) 123({) 125(}) 124(|) 61(=) 59(;)"},
                  {"\x01\x7F", "1(\x01) 127(\x7F)"},
                  {"\x80\xFF", "-128(\x80) -1(\xFF)"},
                  {"a\t\v\f\r\n b", "name(a) name(b)"},
                  {"\\", "92(\\)"},
              });
}

TEST(Scanner, ReadsWordsOfDocuments) {
  check_scans(Mode::document,
              {
                  {"", ""},
                  {" \t\v\f\r\n ", ""},
                  {"[a,b]|{c}",
                   "91([) word(a) 44(,) word(b) 93(]) 124(|) 123({) "
                   "word(c) 125(})"},
                  {"On #x 1.5e-3", "word(On) word(#x) word(1.5e-3)"},
                  {"\x7F\x80\xFF!", "word(\x7F\x80\xFF!)"},
                  {"a\x01"
                   "b",
                   "word(a) 1(\x01) word(b)"},
                  {"1,000", "word(1,000)"},
                  {"1,000a", "word(1,000) word(a)"},
                  {"12ab", "word(12ab)"},
                  {"1,a", "word(1) 44(,) word(a)"},
                  {"1,2,", "word(1,2) 44(,)"},
                  {"a1,000", "word(a1) 44(,) word(000)"},
                  {"-1,000", "word(-1) 44(,) word(000)"},
                  {"1a,2", "word(1a) 44(,) word(2)"},
              });
}

TEST(Scanner, KeepsEscapePairsInWords) {
  check_scans(Mode::document, {
                                  {"a\\,b", "word(a\\,b)"},
                                  {"two\\ words", "word(two\\ words)"},
                                  {"\\[\\\"\\\\", "word(\\[\\\"\\\\)"},
                                  {"\\\\\"a\"", "word(\\\\) string(a)"},
                                  {"1\\,2", "word(1\\,2)"},
                                  {"1,2\\,3", "word(1,2) word(\\,3)"},
                                  {"a\\\nb", "word(a) 92(\\) word(b)"},
                                  {"\\\\\\\n", "word(\\\\) 92(\\)"},
                                  {"a\\", "word(a) 92(\\)"},
                              });
}

TEST(Scanner, ReadsQuotedStringsInBothModes) {
  const std::vector<Scan> scans = {
      {R"("two words")", "string(two words)"},
      {R"("")", "string()"},
      {R"("""")", "string() string()"},
      {R"("a\"b")", R"(string(a\"b))"},
      // The match goes to the second quote, the text to the first one.
      {R"("a\\"b")", R"(string(a\\))"},
      {R"("a\\" "[")", R"(string(a\\) 91([) 34("))"},
      {"\"a\\n\"", "string(a\\n)"},
      {"\"\x80[#,\"", "string(\x80[#,)"},
      // Nothing closes it on its line.
      {"\"ab\\\"\n", "", unterminated(1)},
      {"\"ab\\\\\"\n", "", unterminated(1)},
      {"\n\n\"ab [\n]\n\"", "93(]) 34(\")", unterminated(3)},
      {"\"\n\"\n", "", unterminated(1) + unterminated(2)},
      // Nor before the end of the input, but there is no line end either.
      {"\"[[", "34(\") 91([) 91([)"},
      {"\"", "34(\")"},
      {"\"\"\"", "string() 34(\")"},
      // A quote behind a backslash is the best that the last line has.
      {"\"ab\\\" [", "string(ab\\\") 91([)"},
      {"\"ab\\\\\"", "string(ab\\\\)"},
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
// The rules once more, as the table of patterns that they are, for short
// inputs: every pattern is followed through all places that it can reach.

// Bit n stands for the place before byte n.
using Places = std::uint64_t;
// The places that can be reached from some places by matching once.
using Pattern = std::function<Places(std::string_view, Places)>;

Pattern byte(const std::function<bool(char)> &matches) {
  return [matches](std::string_view text, Places from) {
    Places to = 0;
    for (std::size_t n = 0; n < text.size(); ++n) {
      if ((from >> n & 1) != 0 && matches(text[n]))
        to |= Places{2} << n;
    }
    return to;
  };
}

Pattern one_of(std::string_view set) {
  return byte([set](char c) { return set.find(c) != std::string_view::npos; });
}

Pattern none_of(std::string_view set) {
  return byte([set](char c) { return set.find(c) == std::string_view::npos; });
}

Pattern sequence(const std::vector<Pattern> &parts) {
  return [parts](std::string_view text, Places places) {
    for (const Pattern &part : parts)
      places = part(text, places);
    return places;
  };
}

Pattern either(const Pattern &first, const Pattern &second) {
  return [first, second](std::string_view text, Places from) {
    return first(text, from) | second(text, from);
  };
}

Pattern optional(const Pattern &part) {
  return [part](std::string_view text, Places from) {
    return from | part(text, from);
  };
}

Pattern any_number_of(const Pattern &part) {
  return [part](std::string_view text, Places reached) {
    for (Places before = 0; before != reached;) {
      before = reached;
      reached |= part(text, reached);
    }
    return reached;
  };
}

Pattern run_of(const Pattern &part) {
  return sequence({part, any_number_of(part)});
}

constexpr int skipped = -1000;
constexpr int own_code = -1001;
constexpr int dropped = -1002;

struct Rule {
  Pattern pattern;
  int result;
};

std::vector<Rule> rules_of(Mode mode) {
  const Pattern digit = one_of("0123456789");
  const Pattern group = sequence(
      {digit,
       optional(sequence({any_number_of(one_of("0123456789,")), digit}))});
  const Pattern pair = sequence({one_of("\\"), none_of("\n")});
  const Pattern open =
      sequence({one_of("\""), any_number_of(either(none_of("\"\n"), pair))});
  const Pattern letter = byte([](char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
  });
  const Pattern word_byte = byte([](char c) {
    const bool above_space = static_cast<unsigned char>(c) > 0x20;
    return above_space &&
           std::string_view("\",[]{|}\\").find(c) == std::string_view::npos;
  });
  const Pattern exponent =
      sequence({one_of("eE"), optional(one_of("+-")), group});

  std::vector<Rule> rules = {{run_of(one_of("\t\v\f\r \n")), skipped}};
  if (mode == Mode::resource) {
    rules.push_back(
        {sequence({one_of("#"), any_number_of(none_of("\n")), one_of("\n")}),
         skipped});
    rules.push_back(
        {sequence({optional(group), one_of("."), group, optional(exponent)}),
         Token::rational});
    rules.push_back({group, Token::integer});
    rules.push_back({run_of(letter), Token::identifier});
  } else {
    rules.push_back({one_of("[]{}|"), own_code});
    rules.push_back({group, Token::word});
    rules.push_back({run_of(either(word_byte, pair)), Token::word});
  }
  rules.push_back({sequence({open, one_of("\"")}), Token::string});
  rules.push_back({sequence({open, one_of("\n")}), dropped});
  rules.push_back({none_of("\n"), own_code});
  return rules;
}

struct Match {
  int result = own_code;
  std::size_t size = 0;
};

Match longest_match(const std::vector<Rule> &rules, std::string_view text) {
  Match best;
  for (const Rule &rule : rules) {
    const Places ends = rule.pattern(text, 1);
    const auto size = static_cast<std::size_t>(std::bit_width(ends));
    if (size > best.size + 1)
      best = {rule.result, size - 1};
  }
  return best;
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

// Compares the scanner with the rules, text after text.
class Comparison {
 public:
  explicit Comparison(Mode mode) : mode_(mode), rules_(rules_of(mode)) {
    testing::internal::CaptureStderr();
  }
  ~Comparison() {
    EXPECT_TRUE(testing::internal::GetCapturedStderr() == messages_);
    EXPECT_GT(nr_texts_, 0);
  }

  void compare(const std::string &text) {
    const Outcome expected = reference_scan(rules_, text);
    messages_ += expected.messages;
    ++nr_texts_;
    ASSERT_EQ(scan_with_lines(mode_, text), expected.tokens)
        << testing::PrintToString(text);
  }

  // All texts of up to `size` bytes of the alphabet.
  void compare_all(std::string_view alphabet, std::size_t size) {
    std::vector<std::string> texts = {""};
    for (std::size_t n = 0; n <= size; ++n) {
      std::vector<std::string> longer;
      for (const std::string &text : texts) {
        compare(text);
        if (testing::Test::HasFatalFailure())
          return;
        for (const char c : alphabet)
          longer.push_back(text + c);
      }
      texts.swap(longer);
    }
  }

  void compare_random(std::string_view alphabet, int nr_texts) {
    std::mt19937 random(4711);
    for (int n = 0; n < nr_texts; ++n) {
      std::string text(random() % 60, ' ');
      for (char &c : text)
        c = alphabet[random() % alphabet.size()];
      compare(text);
      if (testing::Test::HasFatalFailure())
        return;
    }
  }

 private:
  const Mode mode_;
  const std::vector<Rule> rules_;
  std::string messages_;
  int nr_texts_ = 0;
};

TEST(Scanner, FollowsTheRulesOnAllShortResourceFiles) {
  Comparison comparison(Mode::resource);
  comparison.compare_all("\"\\\n# 1,.e+a", 4);
  comparison.compare_all("1,.e+", 6);
  comparison.compare_all("\"\\\n#", 7);
}

TEST(Scanner, FollowsTheRulesOnAllShortDocuments) {
  Comparison comparison(Mode::document);
  comparison.compare_all("\"\\\n 1,a[\x80", 4);
  comparison.compare_all("1,a\\", 6);
  comparison.compare_all("\"\\\na", 7);
}

TEST(Scanner, FollowsTheRulesOnRandomTexts) {
  std::string common = "\"\"\"\\\\\\\n\n###11223,,,...eeE+-+-onOFF  [](){}|_=";
  Comparison(Mode::resource).compare_random(common, 4000);
  Comparison(Mode::document).compare_random(common, 4000);
  for (int byte_value = 1; byte_value < 256; ++byte_value) {
    common += static_cast<char>(byte_value);
  }
  Comparison(Mode::resource).compare_random(common, 4000);
  Comparison(Mode::document).compare_random(common, 4000);
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

// ---------------------------------------------------------------------------

TEST(Scanner, ReadsAStreamLikeAText) {
  std::istringstream input("skipped\n[ a ]");
  std::string line;
  std::getline(input, line);
  Scanner scanner(Mode::document, input, "in");
  EXPECT_TRUE(scanner.accept('['));
  EXPECT_EQ(scanner.text(), "a");
  scanner.skip_to(']');
  EXPECT_TRUE(scanner.accept(']'));
  EXPECT_TRUE(scanner.at_end());
}

TEST(Scanner, TakesAFailedStreamForAnEmptyOne) {
  std::istringstream failed("a");
  failed.setstate(std::ios::badbit);
  EXPECT_TRUE(Scanner(Mode::document, failed, "in").at_end());
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
      {"1,000", 1, 1.0},
      {"1,000.5", 1, 1.0},
      {"007", 7, 7.0},
      {"1.5e-3", 1, 1.5e-3},
      {".5E+2", 0, 50.0},
      {"2.5e1,000", 2, 25.0},
      {"4294967295", greatest, 4294967295.0},
      {"4294967296", greatest, 4294967296.0},
      {"1.7976931348623157e308", 1, 1.7976931348623157e308},
      {"1.8e308", 1, infinity},
      {"1.0e999999999999999999999", 1, infinity},
      {many_digits, greatest, infinity},
      {many_digits + ".0e-400", greatest, 1.0},
      {"5.0e-324", 5, 5e-324},
      {"1.0e-999999999999999999999", 1, 0.0},
      {"0.0e999", 0, 0.0},
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

TEST(Scanner, SkipsToATokenAndLeavesItUnread) {
  Scanner scanner(Mode::document, "\"]\" \\] ] ]", "doc");
  scanner.skip_to(']');
  scanner.skip_to(']');
  EXPECT_TRUE(scanner.accept(']'));
  EXPECT_TRUE(scanner.accept(']'));
  EXPECT_TRUE(scanner.at_end());
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

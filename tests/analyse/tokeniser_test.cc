#include "analyse/tokeniser.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace vek::analysis {
namespace {

using namespace std::string_view_literals;

// Writes down the words: a blank between adjacent ones, " / " at a break, and
// " . " where a sentence begins, but for the first.
class Dump : public WordSink {
 public:
  void word(std::string_view raw, Gap gap) override {
    if (!text.empty()) {
      text += gap == Gap::adjacent ? " " : gap == Gap::broken ? " / " : " . ";
    }
    text += raw;
  }

  std::string text;
};

std::string words(std::string_view text, TokeniserRules rules = {}) {
  Dump dump;
  Tokeniser tokeniser(rules, dump);
  tokeniser.start();
  EXPECT_EQ(tokeniser.feed(text, true), text.size());
  return dump.text;
}

struct Case {
  std::string_view text, words;
};

TEST(Tokeniser, FindsWords) {
  const Case cases[] = {
      {"   \n\n ", ""},
      {"one two", "one two"},
      {"mp3 h2o x1y2", "mp3 h2o x1y2"},
      {"O'Neill don’t rock'n'roll", "O'Neill don’t rock'n'roll"},
      {"'quoted' word'", "quoted / word"},
      {"a'1 b'", "a / 1 b"},
      {"col·lecció", "col·lecció"},
      {"état Ελλάδα мир 中国", "état Ελλάδα мир 中国"},
      {"e\u0301tat", "e\u0301tat"},
      {"\u0301tat", "tat"},
      {"in\u00ADform", "in\u00ADform"},
      {"1987 155,221 5.93 1.000,5 3rd 10", "1987 155,221 5.93 1.000,5 3rd 10"},
      {"1,,2 3. 4", "1 / 2 3 . 4"},
      {"snake_case a@b.org", "snake / case a / b . org"},
      {"end.Next end.next", "end . Next end . next"}};
  for (const Case &c : cases)
    EXPECT_EQ(words(c.text), c.words) << c.text;
}

TEST(Tokeniser, FindsAbbreviations) {
  const Case cases[] = {{"the U.S. Treasury", "the U.S Treasury"},
                        {"the U.S Treasury", "the U.S Treasury"},
                        {"U.S.A., e.g. this", "U.S.A / e.g this"},
                        {"J. Smith", "J . Smith"},
                        {"J.Smith", "J . Smith"},
                        {"J.R.Smith", "J.R Smith"},
                        {"É.U.", "É.U"},
                        {"x.1", "x . 1"},
                        {"A.B.C.D.E.F.G.H.I.J.K.L.M.N.O.P.Q.R.",
                         "A.B.C.D.E.F.G.H.I.J.K.L.M.N.O.P"
                         " Q.R"}};
  for (const Case &c : cases)
    EXPECT_EQ(words(c.text), c.words) << c.text;
}

TEST(Tokeniser, TellsWhatStandsBetween) {
  const Case cases[] = {{"a  \t b", "a b"},
                        {"a\nb", "a b"},
                        {"a \r\n b", "a b"},
                        {"a\n\nb", "a . b"},
                        {"a\r\n \r\nb", "a . b"},
                        {"a\u2028b", "a b"},  // line separator
                        {"a\u2028\u2028b", "a . b"},
                        {"a\u2029b", "a . b"},  // paragraph separator
                        {"a\u00A0b", "a b"},    // no-break space
                        {"a-b", "a b"},
                        {"a\u2010b", "a b"},  // hyphen
                        {"a-\nb", "a b"},
                        {"a-\n\nb", "a . b"},
                        {"a- b", "a / b"},
                        {"a -b", "a / b"},
                        {"a--b", "a / b"},
                        {"a\u2013b", "a / b"},  // dash
                        {"a, b; c: d", "a / b / c / d"},
                        {"a (b) [c]", "a / b / c"},
                        {"a. b! c? d… e", "a . b . c . d . e"},
                        {"a .,b", "a . b"},
                        {"a\0b\x01"
                         "c"sv,
                         "a / b / c"},
                        {"a \u200E b", "a b"}};  // direction mark
  for (const Case &c : cases)
    EXPECT_EQ(words(c.text), c.words) << c.text;
}

TEST(Tokeniser, KeepsItsRules) {
  const TokeniserRules colon = {.colon_in_words = true};
  EXPECT_EQ(words("EU:s EU: s 1:2", colon), "EU:s EU / s 1 / 2");
  EXPECT_EQ(words("EU:s"), "EU / s");
  const TokeniserRules apostrophe = {.has_final_apostrophe = true};
  EXPECT_EQ(words("boys' books' boy' x", apostrophe), "boys books boy / x");
  EXPECT_EQ(words("'boys'' x boys 'x", apostrophe), "boys x boys / x");
}

TEST(Tokeniser, SkipsTheEndOfAnEndlessWord) {
  const std::string text = "a " + std::string(3000000, 'x') + " b";
  const std::string found = words(text);
  EXPECT_LT(found.size(), 1000U);
  EXPECT_TRUE(found.ends_with("x b"));
  EXPECT_TRUE(words("a " + std::string(5000, '1') + ".5 b").ends_with("1 b"));
}

}  // namespace
}  // namespace vek::analysis

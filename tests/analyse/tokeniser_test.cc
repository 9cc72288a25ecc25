#include "analyse/tokeniser.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>

namespace vek::analysis {
namespace {

using namespace std::string_view_literals;

// Writes down the words: a blank between adjacent ones, " / " at a break, and
// " . " where a sentence begins, but for the first.
class Dump : public WordSink {
 public:
  void word(std::string_view raw, Gap gap) override {
    if (!text.empty())
      text += gap == Gap::adjacent ? " " : gap == Gap::broken ? " / " : " . ";
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

TEST(Tokeniser, FindsWordsAndTellsWhatStandsBetween) {
  const std::pair<std::string_view, std::string_view> cases[] = {
      {"  \n\n ", ""},
      {"mp3 h2o O'Neill don’t rock'n'roll",
       "mp3 h2o O'Neill don’t rock'n'roll"},
      {"'quoted' a'1 b' col·lecció", "quoted / a / 1 b / col·lecció"},
      {"état Ελλάδα мир 中国", "état Ελλάδα мир 中国"},
      {"e\u0301tat \u0301tat in\u00ADform", "e\u0301tat / tat in\u00ADform"},
      {"1987 155,221 5.93 1.000,5 3rd 1,,2 3. 4",
       "1987 155,221 5.93 1.000,5 3rd 1 / 2 3 . 4"},
      {"snake_case a@b.org", "snake / case a / b . org"},
      {"end.Next end.next", "end . Next end . next"},
      {"the U.S. Treasury U.S Treasury", "the U.S Treasury U.S Treasury"},
      {"U.S.A., e.g. this É.U.", "U.S.A / e.g this É.U"},
      {"J. Smith J.Smith J.R.Smith", "J . Smith J . Smith J.R Smith"},
      {"x.1 A.B.C.D.E.F.G.H.I.J.K.L.M.N.O.P.Q.R.",
       "x . 1 A.B.C.D.E.F.G.H.I.J.K.L.M.N.O.P Q.R"},
      // Line, paragraph and no-break separators, the hyphen and the dash,
      // and a direction mark.
      {"a  \t b\nc \r\n d\u2028e\u00A0f-g\u2010h-\ni \u200E j",
       "a b c d e f g h i j"},
      {"a- b -c--d\u2013e, f; g: h (i) [j]\0k\x01 l"sv,
       "a / b / c / d / e / f / g / h / i / j / k / l"},
      {"a\n\nb\r\n \r\nc\u2028\u2028d\u2029e-\n\nf. g! h? i… j .,k",
       "a . b . c . d . e . f . g . h . i . j . k"}};
  for (const auto &[text, expected] : cases)
    EXPECT_EQ(words(text), expected) << text;
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

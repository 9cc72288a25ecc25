#include "analyse/lexicon.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <sstream>
#include <string>
#include <string_view>

#include "analyse/normalise.h"

namespace vek::analysis {
namespace {

// The stem of a content word, else what the word is.
std::string shown(const Word &word) {
  return word.kind == WordKind::content        ? std::string(word.stem)
         : word.kind == WordKind::function     ? "(function)"
         : word.kind == WordKind::number_class ? "(number)"
                                               : "(dropped)";
}

std::string look_up(std::string_view language, std::string_view raw,
                    Numbers numbers = Numbers::drop) {
  Lexicon lexicon(*find_language(language), numbers);
  return shown(lexicon.look_up(raw));
}

// What `action` makes of each of the words.
template <class Action>
std::string each(const std::string &words, Action action) {
  std::istringstream stream(words);
  std::string out;
  for (std::string word; stream >> word;)
    out += (out.empty() ? "" : " ") + action(word);
  return out;
}

// A decomposed é, what is the same as a Turkish İ, a soft hyphen and a joiner.
TEST(Normalise, GivesOneFormToAllSpellings) {
  const std::string normal = each(
      "House CAFÉ Cafe\u0301 I\u0307 in\u00ADfor\u200Dm O’Neill O\u02BCNeill "
      "ЁЛКА a\xFFz b\xE2\x82z ISPARTA \u00AD",
      [](const auto &word) { return normalise_word(word, Casing::usual); });
  EXPECT_EQ(normal,
            "house café café i inform o'neill o'neill ёлка a\uFFFDz "
            "b\uFFFD\uFFFDz isparta ");
  EXPECT_EQ(normalise_word("ISPARTA", Casing::dotless_i), "ısparta");
  EXPECT_EQ(normalise_word("İzmir", Casing::dotless_i), "izmir");
}

TEST(Lexicon, ClassifiesWords) {
  const struct {
    std::string language, raw, shown;
    Numbers numbers = Numbers::drop;
  } cases[] = {
      {"en", "Houses THE nation’s don't O'Neill u.s u.sing e.g mp3 1987",
       "hous (function) nation (function) o'neil u.s u.sing (function) mp3 "
       "(dropped)"},
      {"en", "1,000.5", "(number)", Numbers::as_class},
      {"en", "1,000.5 1980S ٣٤", "1.000.5 1980s ٣٤", Numbers::keep},
      {"none", "Houses nation's", "houses nation's"},
      {"fr", "l'école qu'il d'aujourd'hui", "écol (function) (function)"},
      {"de", "Häuser z.B", "haus (function)"},
      {"fi", "EU:n", "eu"},
      {"tr", "Ankara’da", "ankar"},
      {"el", "της", "(function)"}};
  for (const auto &c : cases) {
    EXPECT_EQ(each(c.raw,
                   [&c](const std::string &word) {
                     return look_up(c.language, word, c.numbers);
                   }),
              c.shown)
        << c.language;
  }
}

TEST(Lexicon, CutsLongWordsBetweenCharacters) {
  std::string chinese, marks = "a";
  for (int i = 0; i < 1000; ++i) {
    chinese += "中";
    marks += "\u0323\u0301";
  }
  EXPECT_EQ(look_up("none", chinese), chinese.substr(0, 63));
  const std::string digits(1000, '1');
  EXPECT_EQ(look_up("en", digits, Numbers::keep), digits.substr(0, 64));
  EXPECT_LE(look_up("en", marks).size(), 64U);
  // Stems of an English word in -at get an e behind them.
  for (const char *end : {"ating", "bling", "izing", "hopping"})
    EXPECT_LE(look_up("en", std::string(64, 'b') + end).size(), 64U) << end;
}

// What a word gives must not depend on the words before it, however many of
// them are remembered.
TEST(Lexicon, GivesTheSameForAWordAtAnyTime) {
  Lexicon roomy(*find_language("en"), Numbers::drop, 4096);
  Lexicon narrow(*find_language("en"), Numbers::drop, 64);
  for (std::size_t i = 0; i < 6000; ++i) {
    const std::string word = std::to_string(i % 2000) +
                             std::string(1 + i % 9, 'w') +
                             (i % 3 == 0 ? "ing" : "'s");
    const std::string expected = look_up("en", word);
    ASSERT_EQ(shown(roomy.look_up(word)), expected);
    ASSERT_EQ(shown(narrow.look_up(word)), expected);
  }
}

}  // namespace
}  // namespace vek::analysis

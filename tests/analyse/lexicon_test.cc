#include "analyse/lexicon.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "analyse/normalise.h"

namespace vek::analysis {
namespace {

// The stem of a content word, else what the word is.
std::string shown(const Word &word) {
  switch (word.kind) {
    case WordKind::content:
      return std::string(word.stem);
    case WordKind::function:
      return "(function)";
    case WordKind::number_class:
      return "(number)";
    case WordKind::dropped:
      return "(dropped)";
  }
  return "?";
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
  const auto usual = [](const std::string &word) {
    return normalise_word(word, Casing::usual);
  };
  const std::string normal = each(
      "House CAFÉ Cafe\u0301 I\u0307 in\u00ADfor\u200Dm O’Neill "
      "O\u02BCNeill ЁЛКА a\xFFz ISPARTA",
      usual);
  EXPECT_EQ(normal,
            "house café café i inform o'neill o'neill ёлка a\uFFFDz isparta");
  EXPECT_EQ(each(normal, usual), normal);
  EXPECT_EQ(usual(""), "");
  EXPECT_EQ(usual("\u00AD"), "");
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
      {"porter", "nation's", "nation"},
      {"nl", "foto's", "foto"},
      {"fr", "l'école qu'il d'aujourd'hui", "écol (function) (function)"},
      {"it", "dell'economia", "econom"},
      {"de", "Häuser z.B", "haus (function)"},
      {"fi", "EU:n", "eu"},
      {"tr", "Ankara’da", "ankar"},
      {"ru", "Экономика", "экономик"},
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

std::string repeat(std::string_view part, std::size_t count) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i)
    text += part;
  return text;
}

TEST(Lexicon, CutsLongWordsBetweenCharacters) {
  EXPECT_EQ(look_up("none", repeat("x", 1000)), repeat("x", 64));
  EXPECT_EQ(look_up("none", repeat("中", 1000)), repeat("中", 21));
  EXPECT_EQ(look_up("en", repeat("1", 1000), Numbers::keep).size(), 64U);
  EXPECT_LE(look_up("en", 'a' + repeat("\u0323\u0301", 1000)).size(), 64U);
  // Stems of an English word in -at get an e behind them.
  for (const char *end : {"ating", "bling", "izing", "hopping"})
    EXPECT_LE(look_up("en", repeat("b", 64) + end).size(), 64U) << end;
}

TEST(Lexicon, TakesFurtherStopWords) {
  Lexicon lexicon(*find_language("en"), Numbers::drop);
  lexicon.add_stop_words("Reuter mln # dlrs\r\nCAFE\u0301\n#bank\n");
  for (const char *word : {"reuter", "MLN", "Café", "the"})
    EXPECT_EQ(shown(lexicon.look_up(word)), "(function)");
  for (const std::string word : {"dlrs", "bank"})
    EXPECT_EQ(shown(lexicon.look_up(word)), word);
}

// What a word gives must not depend on the words before it, however many of
// them are remembered.
TEST(Lexicon, GivesTheSameForAWordAtAnyTime) {
  std::vector<std::string> words;
  for (std::size_t i = 0; i < 5000; ++i) {
    std::string word(1 + i % 9, 'w');
    for (std::size_t rest = i; rest > 0; rest /= 26)
      word += static_cast<char>('a' + rest % 26);
    words.push_back(word + (i % 3 == 0 ? "ing" : i % 7 == 0 ? "'s" : ""));
  }
  words.push_back(std::string(300, 'x'));
  Lexicon reference(*find_language("en"), Numbers::drop);
  for (const std::size_t nr_known : {1U, 64U, 4096U}) {
    Lexicon lexicon(*find_language("en"), Numbers::drop, nr_known);
    for (int round = 0; round < 2; ++round) {
      for (const std::string &word : words) {
        const std::string expected = shown(reference.look_up(word));
        ASSERT_EQ(shown(lexicon.look_up(word)), expected) << word;
        ASSERT_EQ(shown(lexicon.look_up(word)), expected) << word;
      }
    }
  }
}

}  // namespace
}  // namespace vek::analysis

#include "analyse/lexicon.h"

#include <gtest/gtest.h>

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

TEST(Normalise, GivesOneFormToAllSpellings) {
  struct Case {
    std::string_view raw, normal;
  };
  const Case cases[] = {
      {"House", "house"},
      {"CAFÉ", "café"},
      {"Cafe\u0301", "café"},            // decomposed
      {"I\u0307", "i"},                  // the same as a Turkish İ
      {"in\u00ADfor\u200Dm", "inform"},  // soft hyphen, joiner
      {"O’Neill", "o'neill"},
      {"O\u02BCNeill", "o'neill"},
      {"ЁЛКА", "ёлка"},
      {"", ""},
      {"\u00AD", ""},
      {"a\xFFz", "a\uFFFDz"}};
  for (const Case &c : cases) {
    const std::string normal = normalise_word(c.raw, Casing::usual);
    EXPECT_EQ(normal, c.normal);
    EXPECT_EQ(normalise_word(normal, Casing::usual), normal);
  }
}

TEST(Normalise, KnowsTheTurkishI) {
  EXPECT_EQ(normalise_word("ISPARTA", Casing::dotless_i), "ısparta");
  EXPECT_EQ(normalise_word("İzmir", Casing::dotless_i), "izmir");
  EXPECT_EQ(normalise_word("ISPARTA", Casing::usual), "isparta");
}

TEST(Lexicon, ClassifiesWords) {
  struct Case {
    std::string_view language, raw, shown;
  };
  const Case cases[] = {
      {"en", "Houses", "hous"},          {"en", "THE", "(function)"},
      {"en", "nation’s", "nation"},      {"en", "don't", "(function)"},
      {"en", "O'Neill", "o'neil"},       {"en", "u.s", "u.s"},
      {"en", "e.g", "(function)"},       {"en", "mp3", "mp3"},
      {"en", "1987", "(dropped)"},       {"none", "Houses", "houses"},
      {"none", "nation's", "nation's"},  {"porter", "nation's", "nation"},
      {"nl", "foto's", "foto"},          {"fr", "l'école", "écol"},
      {"fr", "qu'il", "(function)"},     {"fr", "d'aujourd'hui", "(function)"},
      {"it", "dell'economia", "econom"}, {"de", "Häuser", "haus"},
      {"de", "z.B", "(function)"},       {"fi", "EU:n", "eu"},
      {"tr", "Ankara’da", "ankar"},      {"ru", "Экономика", "экономик"},
      {"el", "της", "(function)"}};
  for (const Case &c : cases) {
    EXPECT_EQ(look_up(c.language, c.raw), c.shown) << c.raw;
  }
}

TEST(Lexicon, TreatsNumbersAsTold) {
  EXPECT_EQ(look_up("en", "1,000.5", Numbers::as_class), "(number)");
  EXPECT_EQ(look_up("en", "1,000.5", Numbers::keep), "1.000.5");
  EXPECT_EQ(look_up("en", "1980S", Numbers::keep), "1980s");
  EXPECT_EQ(look_up("en", "٣٤", Numbers::keep), "٣٤");
}

TEST(Lexicon, CutsLongWordsBetweenCharacters) {
  const std::string ascii(1000, 'x');
  EXPECT_EQ(look_up("none", ascii), ascii.substr(0, 64));
  std::string three_bytes;
  for (int i = 0; i < 1000; ++i)
    three_bytes += "中";
  EXPECT_EQ(look_up("none", three_bytes), three_bytes.substr(0, 63));
  EXPECT_EQ(look_up("en", "1" + ascii, Numbers::keep).size(), 64U);
  std::string marks = "a";
  for (int i = 0; i < 1000; ++i)
    marks += "\u0323\u0301";
  EXPECT_LE(look_up("en", marks).size(), 64U);
}

// Stems of an English word in -at get an e behind them.
TEST(Lexicon, KeepsAStemWithinTheLimit) {
  for (const char *end : {"ating", "bling", "izing", "hopping"}) {
    EXPECT_LE(look_up("en", std::string(64, 'b') + end).size(), 64U);
  }
}

TEST(Lexicon, TakesFurtherStopWords) {
  Lexicon lexicon(*find_language("en"), Numbers::drop);
  EXPECT_EQ(shown(lexicon.look_up("Café")), "café");
  Lexicon with_more(*find_language("en"), Numbers::drop);
  with_more.add_stop_words("Reuter mln # dlrs\r\nCAFE\u0301\n#bank\n");
  for (const char *word : {"reuter", "MLN", "Café", "the"})
    EXPECT_EQ(shown(with_more.look_up(word)), "(function)");
  for (const std::string word : {"dlrs", "bank"})
    EXPECT_EQ(shown(with_more.look_up(word)), word);
}

// What a word gives must not depend on the words before it, however many of
// them the cache has room for.
TEST(Lexicon, GivesTheSameForAWordAtAnyTime) {
  std::vector<std::string> words;
  for (std::size_t i = 0; i < 5000; ++i) {
    std::string word(1 + i % 9, 'w');
    for (std::size_t rest = i; rest > 0; rest /= 26) {
      word += static_cast<char>('a' + rest % 26);
    }
    words.push_back(word + (i % 3 == 0 ? "ing" : i % 7 == 0 ? "'s" : ""));
  }
  words.push_back(std::string(300, 'x'));
  Lexicon reference(*find_language("en"), Numbers::drop);
  for (const std::size_t nr_slots : {32U, 64U, 4096U}) {
    Lexicon lexicon(*find_language("en"), Numbers::drop, nr_slots);
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

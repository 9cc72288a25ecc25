#include "import/dealing.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

#include "import/language_guess.h"
#include "import/likeness.h"
#include "import/naming.h"

namespace vek::importing {
namespace {

std::vector<Document> documents_of(std::mt19937_64 &random,
                                   const std::vector<std::size_t> &sizes) {
  std::vector<Document> documents;
  for (std::size_t i = 0; i < sizes.size(); ++i) {
    for (std::size_t j = 0; j < sizes[i]; ++j) {
      Document document;
      document.group = random();
      document.class_id = static_cast<std::uint32_t>(i);
      document.is_new = true;
      documents.push_back(document);
    }
  }
  return documents;
}

std::vector<std::size_t> test_counts(const std::vector<Document> &documents,
                                     std::size_t nr_classes) {
  std::vector<std::size_t> counts(nr_classes);
  for (const Document &document : documents) {
    EXPECT_NE(document.side, Side::none);
    counts[document.class_id] += document.side == Side::test;
  }
  return counts;
}

TEST(Dealing, EachClassHasItsShare) {
  const struct {
    double share;
    std::vector<std::size_t> sizes;
    std::vector<std::size_t> expected;
  } cases[] = {{0.3, {10, 100, 1000}, {3, 30, 300}},
               {0.5, {1, 2, 3, 5}, {0, 1, 2, 3}},
               {0.25, {2, 2, 2, 2}, {1, 1, 0, 0}},
               {0, {10}, {0}},
               {1, {10, 1}, {9, 0}}};
  for (const auto &[share, sizes, expected] : cases) {
    std::mt19937_64 random(7);
    auto documents = documents_of(random, sizes);
    deal(documents, share);
    EXPECT_EQ(test_counts(documents, sizes.size()), expected) << share;
  }
}

TEST(Dealing, IsARuleOfTheNumberAndStays) {
  std::mt19937_64 random(1);
  auto documents = documents_of(random, {400, 40});
  auto backwards = documents;
  std::reverse(backwards.begin(), backwards.end());
  deal(documents, 0.3);
  deal(backwards, 0.3);
  for (std::size_t i = 0; i < documents.size(); ++i)
    EXPECT_EQ(documents[i].side, backwards[documents.size() - 1 - i].side);
  const auto before = documents;
  const auto more = documents_of(random, {4000, 400, 10});
  documents.insert(documents.end(), more.begin(), more.end());
  deal(documents, 0.3);
  for (std::size_t i = 0; i < before.size(); ++i)
    EXPECT_EQ(documents[i].side, before[i].side);
  const auto counts = test_counts(documents, 3);
  EXPECT_NEAR(static_cast<double>(counts[0]), 1320, 60);
  EXPECT_EQ(counts[2], 3U);
}

TEST(Dealing, GroupsAreNotDivided) {
  std::mt19937_64 random(3);
  auto documents = documents_of(random, {500, 500});
  for (Document &document : documents)
    document.group = document.group % 50 << 58;
  deal(documents, 0.3);
  std::map<std::uint64_t, Side> sides;
  for (const Document &document : documents) {
    EXPECT_EQ(sides.emplace(document.group, document.side).first->second,
              document.side);
  }
  // The second of two documents with the same text, in two groups.
  std::vector<Document> pair(2);
  pair[0].side = Side::train;
  pair[1].side = Side::test;
  pair[1].is_new = true;
  EXPECT_EQ(withdraw_doubles(pair), 1U);
  EXPECT_EQ(pair[1].side, Side::none);
}

TEST(Likeness, SameWordsAreTheSameText) {
  const auto words = [](const char *text) {
    return fingerprint_of(text).words;
  };
  EXPECT_EQ(words("One two,\nthree."), words("  one TWO - three"));
  EXPECT_NE(words("one two three"), words("two one three"));
  EXPECT_NE(words("one two"), words("onetwo"));
  EXPECT_NE(words("one"), words("one one"));
  EXPECT_EQ(fingerprint_of(" ..\n").nr_words, 0U);
}

// Texts of 200 words, of which every `step`th is another one in the second.
TEST(Likeness, NearTextsAreFoundAndOthersNot) {
  const std::pair<int, std::pair<int, int>> cases[] = {
      {200, {99, 100}}, {40, {75, 100}}, {5, {0, 0}}};
  for (const auto &[step, expected] : cases) {
    std::vector<Document> documents;
    for (int i = 0; i < 100; ++i) {
      for (const Side side : {Side::train, Side::test}) {
        std::string text;
        for (int word = 0; word < 200; ++word) {
          const bool is_other = side == Side::test && word % step == 0;
          text += std::to_string(i * 1000 + word) + (is_other ? "x " : " ");
        }
        Document document;
        document.minima = fingerprint_of(text).minima;
        document.side = side;
        documents.push_back(document);
      }
    }
    const std::vector<NearPair> pairs = find_near(documents);
    EXPECT_GE(pairs.size(), static_cast<std::size_t>(expected.first)) << step;
    EXPECT_LE(pairs.size(), static_cast<std::size_t>(expected.second));
    for (const NearPair &pair : pairs)
      EXPECT_EQ(pair.test, pair.train + 1);
  }
}

TEST(Naming, NamesHold) {
  const std::pair<const char *, const char *> cases[] = {
      {"a/b-1.txt", "a/b-1"},
      {"a.html", "a.html"},
      {"17", "17"},
      {"../x", "x-00000000000000ff"},
      {"/etc/passwd", "etc-passwd-00000000000000ff"},
      {"a//b", "a-b-00000000000000ff"},
      {"a.txt/b", "a-txt-b-00000000000000ff"},
      {"-rf", "rf-00000000000000ff"},
      {"a b\n", "a-b-00000000000000ff"},
      {"\xE6\x97\xA5", "00000000000000ff"},
      {".txt", "txt-00000000000000ff"}};
  for (const auto &[key, name] : cases) {
    // Ten digits of the hash.
    std::string expected = name;
    if (expected.ends_with("00000000000000ff"))
      expected.resize(expected.size() - 6);
    EXPECT_EQ(document_name(key, 0xFF, 0), expected) << key;
  }
  EXPECT_EQ(document_name("", 0xFF, 0), "00/000000000000ff");
  EXPECT_NE(document_name("a", 0xFF, 1), document_name("a", 0xFF, 2));
  EXPECT_EQ(document_name(std::string(300, 'a'), 0xFF, 0).size(), 71U);
}

TEST(LanguageGuess, IsToldByFunctionWords) {
  const std::pair<const char *, const char *> cases[] = {
      {"The dog and the cat were in the house of my father", "en"},
      {"Der Hund und die Katze waren in dem Haus meines Vaters", "de"},
      {"Le chien et le chat sont dans la maison de mon p\xC3\xA8re", "fr"},
      {"\xD0\xBE\xD0\xBD \xD0\xBD\xD0\xB5 \xD0\xB2 "
       "\xD0\xB4\xD0\xBE\xD0\xBC\xD0\xB5",
       "ru"},
      {"\xD8\xB3\xD9\x84\xD8\xA7\xD9\x85", "ar"},
      {"x17 kernel panic cpu0 irq", "none"},
      {"", "none"}};
  for (const auto &[text, code] : cases) {
    LanguageGuess guess;
    guess.add(text);
    EXPECT_EQ(guess.code(), code) << text;
  }
}

}  // namespace
}  // namespace vek::importing

#include "analyse/language.h"

#include <gtest/gtest.h>
#include <libstemmer.h>

#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "analyse/lexicon.h"
#include "analyse/normalise.h"
#include "analysis_check.h"

namespace vek::analysis {
namespace {

std::vector<std::string> words_of(const std::string &list) {
  std::istringstream stream(list);
  return {std::istream_iterator<std::string>(stream), {}};
}

// All of them but "none".
std::set<std::string> names() {
  std::set<std::string> names;
  for (const char **name = sb_stemmer_list(); *name != nullptr; ++name)
    names.insert(*name);
  return names;
}

std::vector<std::string> function_words(const Language &language) {
  const FunctionWords &words = language.words;
  return words_of(std::string(words.others) + ' ' + words.articles + ' ' +
                  words.of + ' ' + words.genitive_articles);
}

TEST(Language, IsFoundByNameAndByItsOwnCodesOnly) {
  std::set<std::string> codes;
  for (const std::string &name : names()) {
    const Language *language_P = find_language(name);
    ASSERT_NE(language_P, nullptr) << name;
    for (const std::string &code : words_of(language_P->codes)) {
      EXPECT_EQ(find_language(code), language_P) << code;
      EXPECT_TRUE(codes.insert(code).second) << code;
    }
  }
  for (const char *name : {"", " ", "English", "e", "en eng"})
    EXPECT_EQ(find_language(name), nullptr) << name;
}

// A word that is listed in another form than words come in would never match.
TEST(Language, ListsItsFunctionWordsInTheirNormalForm) {
  for (const std::string &name : names()) {
    TextAnalyser analyser(name, Terms::words);
    for (const std::string &word : function_words(*find_language(name))) {
      EXPECT_EQ(normalise_word(word, Casing::usual), word) << name;
      // An elision needs something behind it.
      const std::string end = word.ends_with('\'') ? "xyz" : "";
      const std::string rest = analyser.analyse(word + end);
      EXPECT_EQ(rest.find(word), rest.npos) << name << ' ' << word;
      EXPECT_EQ(rest.empty(), end.empty()) << name << ' ' << word;
    }
  }
}

TEST(Language, KeepsWordsThatNameATopic) {
  const std::pair<std::string, std::string> cases[] = {
      {"en",
       "state mine well new second back power part point number man time"},
      {"de", "zeit macht dank kraft laut mann land jahr wesen meer"},
      {"nl", "staat net weer tijd man jaar"},
      {"fr", "état point or fait homme temps fin nord"},
      {"ro", "stat lume timp fată"},
      {"fi", "maailma kone aika kuusi"}};
  for (const auto &[name, words] : cases) {
    Lexicon lexicon(*find_language(name), Numbers::drop);
    for (const std::string &word : words_of(words)) {
      EXPECT_EQ(lexicon.look_up(word).kind, WordKind::content)
          << name << ' ' << word;
    }
  }
}

}  // namespace
}  // namespace vek::analysis

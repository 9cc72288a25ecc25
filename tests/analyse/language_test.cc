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

// The names of all languages, without "none".
std::set<std::string> names() {
  std::istringstream lines(list_of_languages());
  std::set<std::string> names;
  for (std::string line; std::getline(lines, line);) {
    const std::string name = line.substr(0, line.find(' '));
    if (name != "none")
      names.insert(name);
  }
  return names;
}

std::vector<std::string> function_words(const Language &language) {
  const FunctionWords &words = language.words;
  return words_of(std::string(words.others) + ' ' + words.articles + ' ' +
                  words.of + ' ' + words.genitive_articles);
}

TEST(Language, IsFoundByNameAndByItsOwnCodesOnly) {
  std::set<std::string> algorithms;
  for (const char **name = sb_stemmer_list(); *name != nullptr; ++name)
    algorithms.insert(*name);
  EXPECT_EQ(names(), algorithms);
  std::set<std::string> codes;
  for (const std::string &name : names()) {
    const Language *language_P = find_language(name);
    ASSERT_NE(language_P, nullptr) << name;
    for (const std::string &code : words_of(language_P->codes)) {
      EXPECT_EQ(find_language(code), language_P) << code;
      EXPECT_TRUE(codes.insert(code).second) << code;
      // The library has the same codes, and one that we know alone would be a
      // slip; nb and others for one of the two Norwegians are ours.
      sb_stemmer *stemmer_P = sb_stemmer_new(code.c_str(), "UTF_8");
      EXPECT_TRUE(stemmer_P != nullptr || name == "norwegian") << code;
      sb_stemmer_delete(stemmer_P);
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
  const std::pair<const char *, const char *> cases[] = {
      {"en",
       "computer world research system state mine well new york second "
       "back power bank network case part point number man time"},
      {"de",
       "computer welt forschung system staat zeit macht dank kraft laut "
       "mann land jahr wesen meer"},
      {"nl", "computer wereld onderzoek systeem staat net weer tijd man jaar"},
      {"fr",
       "ordinateur monde recherche système état point or fait homme "
       "temps fin nord"},
      {"it", "stato stati ricerca mondo sistema tempo fine parte"},
      {"es", "estado estados mundo sistema tiempo parte punto"},
      {"pt", "estado mundo sistema tempo parte hoje"},
      {"ro", "stat lume sistem timp fată"},
      {"ru", "мир система время человек государство"},
      {"sv", "värld system tid stat"},
      {"da", "verden system tid stat"},
      {"no", "verden system tid stat"},
      {"fi", "maailma kone aika kuusi"},
      {"hu", "világ rendszer idő ember"}};
  for (const auto &[name, words] : cases) {
    const Language &language = *find_language(name);
    EXPECT_GT(function_words(language).size(), 150U) << name;
    Lexicon lexicon(language, Numbers::drop);
    for (const std::string &word : words_of(words)) {
      EXPECT_EQ(lexicon.look_up(word).kind, WordKind::content)
          << name << ' ' << word;
    }
  }
}

}  // namespace
}  // namespace vek::analysis

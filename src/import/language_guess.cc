#include "import/language_guess.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "analyse/characters.h"
#include "analyse/language.h"

namespace vek::importing {
namespace {

constexpr const char *with_function_words[] = {
    "ca", "da", "nl", "en", "fi", "fr", "de", "el", "hu",
    "id", "it", "no", "pt", "ro", "ru", "es", "sv", "tr"};

struct Script {
  std::int32_t first;
  std::int32_t last;
  const char *language;
};
// Devanagari is that of Nepali as well, which is less often met.
constexpr Script scripts[] = {{0x0530, 0x058F, "hy"},
                              {0x0590, 0x05FF, "yi"},
                              {0x0600, 0x06FF, "ar"},
                              {0x0900, 0x097F, "hi"},
                              {0x0B80, 0x0BFF, "ta"}};

// Less than a tenth of function words is no running text of the language: real
// ones have a third to a half.
constexpr std::size_t least_part = 10;

}  // namespace

LanguageGuess::LanguageGuess()
    : counts_(std::size(with_function_words)),
      script_counts_(std::size(scripts)) {
  for (std::size_t i = 0; i < std::size(with_function_words); ++i) {
    const analysis::Language *language_P =
        analysis::find_language(with_function_words[i]);
    const analysis::FunctionWords &words = language_P->words;
    for (const char *list_P :
         {words.others, words.articles, words.of, words.genitive_articles}) {
      std::string_view rest = list_P;
      while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(' '), rest.size());
        languages_of_[std::string(rest.substr(0, end))] |= 1U << i;
        rest.remove_prefix(std::min(end + 1, rest.size()));
      }
    }
  }
}

void LanguageGuess::count_word(const std::string &word) {
  ++nr_words_;
  const auto found = languages_of_.find(word);
  if (found == languages_of_.end())
    return;
  for (std::size_t i = 0; i < counts_.size(); ++i)
    counts_[i] += found->second >> i & 1U;
}

void LanguageGuess::add(std::string_view text) {
  std::string word;
  while (!text.empty()) {
    const analysis::Character character = analysis::first_character(text);
    text.remove_prefix(character.size);
    const analysis::CharKind kind = analysis::kind_of(character.value);
    if (kind == analysis::CharKind::letter ||
        kind == analysis::CharKind::mark) {
      // Other capitals are rare enough in function words.
      const bool is_capital = character.value >= 'A' && character.value <= 'Z';
      analysis::append_utf8(word, character.value + (is_capital ? 32 : 0));
      for (std::size_t i = 0; i < std::size(scripts); ++i) {
        script_counts_[i] += character.value >= scripts[i].first &&
                             character.value <= scripts[i].last &&
                             kind == analysis::CharKind::letter;
      }
    } else if (!word.empty()) {
      count_word(word);
      word.clear();
    }
  }
  if (!word.empty())
    count_word(word);
}

std::string LanguageGuess::code() const {
  const auto script =
      std::max_element(script_counts_.begin(), script_counts_.end());
  // A word in such a script has a few letters, and no other word has one.
  if (*script > nr_words_)
    return scripts[script - script_counts_.begin()].language;
  const auto best = std::max_element(counts_.begin(), counts_.end());
  if (*best * least_part < nr_words_ || *best == 0)
    return "none";
  return with_function_words[best - counts_.begin()];
}

}  // namespace vek::importing

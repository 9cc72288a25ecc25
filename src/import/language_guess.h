// The language that texts are written in, for the analyser's option -l.
#ifndef VEK_IMPORT_LANGUAGE_GUESS_H_
#define VEK_IMPORT_LANGUAGE_GUESS_H_

#include <tsl/robin_map.h>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vek::importing {

// Counts the function words of each language that has a list of them, and the
// letters of scripts that belong to one language of the analyser.
class LanguageGuess {
 public:
  LanguageGuess();

  void add(std::string_view text);
  // Its code; "none" if the texts are in none of these languages.
  std::string code() const;

 private:
  void count_word(const std::string &word);

  // Of each function word the languages, a bit for each.
  tsl::robin_map<std::string, unsigned> languages_of_;
  std::vector<std::size_t> counts_;
  std::vector<std::size_t> script_counts_;
  std::size_t nr_words_ = 0;
};

}  // namespace vek::importing

#endif  // VEK_IMPORT_LANGUAGE_GUESS_H_

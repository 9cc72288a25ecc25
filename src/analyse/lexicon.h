// Tells what a word of a text is: a function word, a number, or a content word
// and its stem.
#ifndef VEK_ANALYSE_LEXICON_H_
#define VEK_ANALYSE_LEXICON_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "analyse/language.h"
#include "analyse/word.h"
#include "analyse/word_cache.h"

struct sb_stemmer;

namespace vek::analysis {

enum class Numbers {
  drop,      // left out
  as_class,  // number_token for each
  keep,      // content words, with a full stop for each comma
};

// What is written for a number with Numbers::as_class. No word is like it.
inline constexpr std::string_view number_token = "#";

class Lexicon {
 public:
  // About 5 MB. Half as many cost a sixth more time with the words of 9 MB of
  // news.
  static constexpr std::size_t usual_cache_slots = 1U << 17;

  // `language` must live as long as the lexicon. If its stemmer is not in the
  // library, words are not stemmed: has_stemmer() tells.
  // The last argument is the size of its WordCache.
  Lexicon(const Language &language, Numbers numbers,
          std::size_t nr_cache_slots = usual_cache_slots);
  ~Lexicon();
  Lexicon(const Lexicon &) = delete;
  Lexicon &operator=(const Lexicon &) = delete;

  // False if the language wants a stemmer that the library lacks.
  bool has_stemmer() const;

  // Adds the words of `text` to the function words. Between the words stand
  // blanks or line ends; what follows a # up to the line's end is a comment.
  void add_stop_words(std::string_view text);

  // What the word is that is written `raw`: UTF-8 that begins with a letter or
  // a digit. Its stem stays valid until the next call. The result depends on
  // nothing but `raw`.
  Word look_up(std::string_view raw);

 private:
  void add_words(std::string_view list, FunctionFlags flags);
  FunctionFlags function_flags(std::string_view text) const;
  Word classify(std::string_view raw);
  Word number(std::string_view raw);
  FunctionFlags cut_elision(std::string_view &text) const;
  void cut_endings(std::string_view &text) const;
  void cut_listed_ending(std::string_view &text) const;
  std::string_view stem(std::string_view text);

  const Language &language_;
  const Numbers numbers_;
  std::vector<std::string> endings_;
  std::unique_ptr<sb_stemmer, void (*)(sb_stemmer *)> stemmer_P_;
  std::unordered_map<std::string, FunctionFlags> function_words_;
  WordCache cache_;
  std::string stem_;
};

}  // namespace vek::analysis

#endif  // VEK_ANALYSE_LEXICON_H_

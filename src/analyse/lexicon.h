// What a word of a text is: a function word, a number, or a content word with
// its stem.
#ifndef VEK_ANALYSE_LEXICON_H_
#define VEK_ANALYSE_LEXICON_H_

#include <tsl/robin_map.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "analyse/language.h"
#include "analyse/word.h"

struct sb_stemmer;

namespace vek::analysis {

enum class Numbers {
  drop,      // left out
  as_class,  // number_token for each
  keep,      // content words, with a full stop for each comma
};

// What is written for a number with Numbers::as_class. No content word looks
// like it, since none holds a #.
inline constexpr std::string_view number_token = "#";

class Lexicon {
 public:
  // Words that are remembered. Half as many cost a sixth more time with the
  // words of 9 MB of news.
  static constexpr std::size_t usual_nr_known = 100'000;

  // `language` must live as long as the lexicon. If its stemmer is not in the
  // library, words are not stemmed: has_stemmer() tells.
  Lexicon(const Language &language, Numbers numbers,
          std::size_t nr_known = usual_nr_known);
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
  // A Word without its stem, which is in `known_text_` behind the word as
  // written. A short record, because most of the time goes into fetching it
  // from memory.
  struct Known {
    WordKind kind;
    FunctionFlags function;
    FunctionFlags elided;
    bool has_capital;
    std::uint8_t stem_size;  // bytes
  };
  // With the hashes stored: most words that fall on the same place differ
  // there, and their texts need not be compared.
  using KnownWords =
      tsl::robin_map<std::string_view, Known, std::hash<std::string_view>,
                     std::equal_to<>,
                     std::allocator<std::pair<std::string_view, Known>>, true>;

  void add_words(std::string_view list, FunctionFlags flags);
  FunctionFlags function_flags(std::string_view text) const;
  Word classify(std::string_view raw);
  void remember(std::string_view raw, const Word &word);
  Word number(std::string_view raw);
  FunctionFlags cut_elision(std::string_view &text) const;
  void cut_endings(std::string_view &text) const;
  void cut_listed_ending(std::string_view &text) const;
  std::string_view stem(std::string_view text);

  const Language &language_;
  const Numbers numbers_;
  std::vector<std::string> endings_;
  std::unique_ptr<sb_stemmer, void (*)(sb_stemmer *)> stemmer_P_;
  tsl::robin_map<std::string, FunctionFlags> function_words_;
  std::string stem_;
  // The words that occurred lately, as they are written, so that each is looked
  // up and stemmed once and not at each occurrence. All are forgotten when
  // there are too many. Their texts stand in known_text_, which never grows
  // beyond what it has room for, because the keys point into it.
  const std::size_t most_known_;
  KnownWords known_;
  std::string known_text_;
};

}  // namespace vek::analysis

#endif  // VEK_ANALYSE_LEXICON_H_

// The languages: what the analysis needs to know of each, beside its stemming
// algorithm. The lists of words are in function_words.cc.
#ifndef VEK_ANALYSE_LANGUAGE_H_
#define VEK_ANALYSE_LANGUAGE_H_

#include <string>
#include <string_view>

namespace vek::analysis {

// Which of two content words next to each other is the head of the pair.
enum class HeadSide { left, right };

// The function words of a language, each list with blanks between its words,
// in lower case and NFC. An entry that ends in an apostrophe is an elision: it
// is cut off the front of a longer word and counts as a word of its own, as in
// l'école.
struct FunctionWords {
  // Those that are in none of the other lists.
  const char *others = "";
  const char *articles = "";
  // Between two nouns these make the left one a head and the right one its
  // modifier; an article may follow. An article that is merged with them, as
  // in "del", is listed here.
  const char *of = "";
  // Articles that do the same without a word for "of", by their case, but as
  // often mean something else: they count only between two words with capitals,
  // in a language that writes its nouns so.
  const char *genitive_articles = "";
};

struct Language {
  // The name of the stemming algorithm; empty for no stemming.
  const char *name = "";
  // ISO 639 codes, with a blank between them.
  const char *codes = "";
  FunctionWords words = {};
  HeadSide head_side = HeadSide::right;
  // Endings that are cut off, each with its apostrophe, as in "nation's".
  const char *endings = "";
  // What follows this character in a word is an ending: Ankara'da, EU:s.
  // '\0' if the language has none.
  char ending_mark = '\0';
  // An apostrophe behind a final s is a genitive, not a quotation mark.
  bool has_final_apostrophe = false;
  // I and i are two letters, each with a small and a capital form.
  bool has_dotless_i = false;
};

// The language with this name or code, in small letters. Null if there is
// none. "none" is a language: words are taken as they stand.
const Language *find_language(std::string_view name);

// A line for each language, with its codes, in alphabetical order.
std::string list_of_languages();

extern const FunctionWords catalan_words;
extern const FunctionWords danish_words;
extern const FunctionWords dutch_words;
extern const FunctionWords english_words;
extern const FunctionWords finnish_words;
extern const FunctionWords french_words;
extern const FunctionWords german_words;
extern const FunctionWords greek_words;
extern const FunctionWords hungarian_words;
extern const FunctionWords indonesian_words;
extern const FunctionWords italian_words;
extern const FunctionWords norwegian_words;
extern const FunctionWords portuguese_words;
extern const FunctionWords romanian_words;
extern const FunctionWords russian_words;
extern const FunctionWords spanish_words;
extern const FunctionWords swedish_words;
extern const FunctionWords turkish_words;

}  // namespace vek::analysis

#endif  // VEK_ANALYSE_LANGUAGE_H_

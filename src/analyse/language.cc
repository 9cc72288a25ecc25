#include "analyse/language.h"

#include <algorithm>
#include <array>

namespace vek::analysis {
namespace {

const auto english_endings = "n't 's 're 've 'll 'd 'm";

// Every algorithm of the stemming library, in alphabetical order. Languages
// that put the adjective behind its noun have the head on the left.
const std::array languages = {
    Language{.name = "arabic", .codes = "ar ara", .head_side = HeadSide::left},
    Language{.name = "armenian", .codes = "hy hye arm"},
    Language{.name = "basque", .codes = "eu eus baq"},
    Language{.name = "catalan",
             .codes = "ca cat",
             .words = catalan_words,
             .head_side = HeadSide::left},
    Language{.name = "danish",
             .codes = "da dan",
             .words = danish_words,
             .endings = "'s"},
    Language{.name = "dutch",
             .codes = "nl nld dut",
             .words = dutch_words,
             .endings = "'s"},
    Language{.name = "english",
             .codes = "en eng",
             .words = english_words,
             .endings = english_endings,
             .has_final_apostrophe = true},
    Language{.name = "finnish",
             .codes = "fi fin",
             .words = finnish_words,
             .ending_mark = ':'},
    Language{.name = "french",
             .codes = "fr fra fre",
             .words = french_words,
             .head_side = HeadSide::left},
    Language{.name = "german",
             .codes = "de deu ger",
             .words = german_words,
             .endings = "'s"},
    Language{.name = "greek", .codes = "el ell gre", .words = greek_words},
    Language{.name = "hindi", .codes = "hi hin"},
    Language{.name = "hungarian", .codes = "hu hun", .words = hungarian_words},
    Language{.name = "indonesian",
             .codes = "id ind",
             .words = indonesian_words,
             .head_side = HeadSide::left},
    Language{.name = "irish", .codes = "ga gle", .head_side = HeadSide::left},
    Language{.name = "italian",
             .codes = "it ita",
             .words = italian_words,
             .head_side = HeadSide::left},
    Language{.name = "lithuanian", .codes = "lt lit"},
    Language{.name = "nepali", .codes = "ne nep"},
    Language{.name = "norwegian",
             .codes = "no nor nb nob nn nno",
             .words = norwegian_words,
             .endings = "'s"},
    Language{.name = "porter",
             .codes = "",
             .words = english_words,
             .endings = english_endings,
             .has_final_apostrophe = true},
    Language{.name = "portuguese",
             .codes = "pt por",
             .words = portuguese_words,
             .head_side = HeadSide::left},
    Language{.name = "romanian",
             .codes = "ro ron rum",
             .words = romanian_words,
             .head_side = HeadSide::left},
    Language{.name = "russian", .codes = "ru rus", .words = russian_words},
    Language{.name = "serbian", .codes = "sr srp"},
    Language{.name = "spanish",
             .codes = "es spa esl",
             .words = spanish_words,
             .head_side = HeadSide::left},
    Language{.name = "swedish",
             .codes = "sv swe",
             .words = swedish_words,
             .endings = "'s",
             .ending_mark = ':'},
    Language{.name = "tamil", .codes = "ta tam"},
    Language{.name = "turkish",
             .codes = "tr tur",
             .words = turkish_words,
             .ending_mark = '\'',
             .has_dotless_i = true},
    Language{.name = "yiddish", .codes = "yi yid"},
};

const Language no_language = {};

bool holds_word(std::string_view list, std::string_view word) {
  while (!list.empty()) {
    const std::string_view first = list.substr(0, list.find(' '));
    if (first == word)
      return true;
    list.remove_prefix(std::min(list.size(), first.size() + 1));
  }
  return false;
}

}  // namespace

// A plain search: it happens once in a run.
const Language *find_language(std::string_view name) {
  // Outside the table, as its name is that of no stemming algorithm.
  if (name == "none")
    return &no_language;
  for (const Language &language : languages) {
    if (name == language.name || holds_word(language.codes, name)) {
      return &language;
    }
  }
  return nullptr;
}

std::string list_of_languages() {
  std::string list;
  for (const Language &language : languages) {
    list += language.name;
    if (*language.codes != '\0') {
      list += " (";
      list += language.codes;
      list += ')';
    }
    list += '\n';
  }
  return list + "none (no stemming, no function words)\n";
}

}  // namespace vek::analysis

// Any bytes as a document: what comes out is valid analysis text, which vek's
// own parser takes without an error, and the same whatever the size of the
// buffer, however many words are remembered and whatever was analysed before.
//
// The first two bytes choose the language and the options, the rest is the
// document.
#include <map>
#include <memory>
#include <string>

#include "../tests/analyse/analysis_check.h"
#include "intake/DocParser.h"
#include "target.h"
#include "vocabulary/atomtab.h"

namespace {

using namespace vek::analysis;
using vek::fuzzing::require;

constexpr const char *languages[] = {
    "none",    "arabic",     "armenian",   "basque",    "catalan",
    "danish",  "dutch",      "english",    "finnish",   "french",
    "german",  "greek",      "hindi",      "hungarian", "indonesian",
    "irish",   "italian",    "lithuanian", "nepali",    "norwegian",
    "porter",  "portuguese", "romanian",   "russian",   "serbian",
    "spanish", "swedish",    "tamil",      "turkish",   "yiddish"};
constexpr Terms all_terms[] = {Terms::words, Terms::pairs, Terms::both};
constexpr Numbers all_numbers[] = {Numbers::drop, Numbers::as_class,
                                   Numbers::keep};

struct Setting {
  std::size_t language, terms, numbers;
  auto operator<=>(const Setting &) const = default;

  std::unique_ptr<TextAnalyser> analyser(Sizes sizes) const {
    return std::make_unique<TextAnalyser>(languages[language], all_terms[terms],
                                          all_numbers[numbers], sizes);
  }
};

// One that has seen the documents before, and soon forgets them.
TextAnalyser &old_analyser(const Setting &setting) {
  static std::map<Setting, std::unique_ptr<TextAnalyser>> analysers;
  std::unique_ptr<TextAnalyser> &analyser = analysers[setting];
  if (!analyser)
    analyser = setting.analyser({.nr_known = 64});
  return *analyser;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  if (size < 2)
    return 0;
  const Setting setting = {data[0] % std::size(languages),
                           data[1] % std::size(all_terms),
                           data[1] / 3 % std::size(all_numbers)};
  const std::string_view text = vek::fuzzing::text_of(data + 2, size - 2);
  const std::string analysis = old_analyser(setting).analyse(text);
  require(is_valid_analysis(analysis));
  vek::StringPool pool;
  vek::AtomTable atoms(pool);
  vek::TermBag bag;
  vek::Messages messages;
  vek::DocParser parser(atoms, bag, analysis, "document", messages);
  require(parser.parse() && parser.nr_errors() == 0);
  const auto new_analyser =
      setting.analyser({.buffer = DocumentReader::least_buffer});
  require(new_analyser->analyse(text) == analysis);
  return 0;
}

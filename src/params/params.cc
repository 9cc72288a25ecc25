#include "params/params.h"

#include <array>
#include <cstddef>
#include <locale>
#include <sstream>

namespace vek {
namespace {

// By the values of the enumerations; an empty text stands for a value that the
// enumeration does not have.
constexpr std::array term_selection_names = {
    "none",  "Uncertainty",    "TermFrequency", "DocumentFrequency",
    "TfIdf", "InformationGain"};
constexpr std::array normalize_names = {"", "off", "linear", "vector"};
constexpr std::array strength_names = {"",     "",     "",     "",
                                       "freq", "bool", "sqrt", "ltc"};

template <std::size_t nr_names, class Value>
const char *name_of(const std::array<const char *, nr_names> &names,
                    Value value) {
  return names.at(static_cast<std::size_t>(value));
}

}  // namespace

const char *on_off(bool value) {
  return value ? "on" : "off";
}

// Names are shown as they are, a quote in them too: the text is for people and
// is never parsed.
std::string Params::general_text(std::string_view algorithm_name) const {
  std::ostringstream out;
  // Whatever locale the process has, numbers have a decimal point.
  out.imbue(std::locale::classic());
  out << "[General]\n"
      << "Analyser          \"" << analyser << "\"\n"
      << "DataDirectory     \"" << data_directory << "\"\n"
      << "InputDirectory    \"" << input_directory << "\"\n"
      << "FileDirectory     \"" << file_directory << "\"\n"
      << "FParameter        " << f_parameter << '\n'
      << "MaxRanks          " << max_ranks << '\n'
      << "MinRanks          " << min_ranks << '\n'
      << "Algorithm         " << algorithm_name << '\n'
      << "TermSelection     " << name_of(term_selection_names, term_selection)
      << '\n'
      << "Incremental       " << on_off(incremental) << '\n'
      << "Save              " << on_off(save) << '\n'
      << "Scaling           " << on_off(scaling) << '\n'
      << "Selectivity       ";
  if (selectivity > 0.0 && term_selection != TermSelection::none) {
    out << selectivity << '\n';
  } else {
    out << "off\n";
  }
  out << "Strength          " << name_of(strength_names, strength) << '\n'
      << "Normalize         " << name_of(normalize_names, normalize) << '\n';
  // A key that is seldom used leaves no trace elsewhere.
  if (analyser_timeout != 0)
    out << "AnalyserTimeout   " << analyser_timeout << '\n';
  // Shown where they are in use.
  if (held_out != 0)
    out << "HeldOut           " << held_out << '\n';
  if (walk == WalkKind::path)
    out << "Walk              path\n";
  if (insignificant == Insignificant::best)
    out << "Insignificant     best\n";
  if (predictions)
    out << "Predictions       on\n";
  return std::move(out).str();
}

}  // namespace vek

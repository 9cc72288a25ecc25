#include "params/params.h"

#include <locale>
#include <ostream>
#include <sstream>

#include "run/log.h"

namespace vek {
namespace {

const char *on_off(bool value) {
  return value ? "on" : "off";
}

// Whether the threshold of term selection has an effect at all.
bool selects_terms(const Params &settings) {
  return settings.selectivity() > 0.0 &&
         settings.term_selection() != TermSelection::none;
}

void write_selectivity(std::ostream &out, const Params &settings) {
  out << "Selectivity       ";
  if (selects_terms(settings)) {
    out << settings.selectivity() << '\n';
  } else {
    out << "off\n";
  }
}

// A name with a quote in it is shown as it is: the report is for people.
void write_general(std::ostream &out, const Params &settings) {
  out << "[General]\n"
      << "Analyser          \"" << settings.analyser() << "\"\n"
      << "DataDirectory     \"" << settings.data_directory() << "\"\n"
      << "InputDirectory    \"" << settings.input_directory() << "\"\n"
      << "FileDirectory     \"" << settings.file_directory() << "\"\n"
      << "FParameter        " << settings.f_parameter() << '\n'
      << "MaxRanks          " << settings.max_ranks() << '\n'
      << "MinRanks          " << settings.min_ranks() << '\n'
      << "Algorithm         " << report_name(settings.algorithm()) << '\n'
      << "TermSelection     " << report_name(settings.term_selection()) << '\n'
      << "Incremental       " << on_off(settings.incremental()) << '\n'
      << "Save              " << on_off(settings.save()) << '\n'
      << "Scaling           " << on_off(settings.scaling()) << '\n';
  write_selectivity(out, settings);
  out << "Strength          " << report_name(settings.strength()) << '\n'
      << "Normalize         " << report_name(settings.normalize()) << '\n';
}

void write_winnow(std::ostream &out, const WinnowParams &settings) {
  out << "[Winnow]\n"
      << "Alpha             " << settings.alpha() << '\n'
      << "Beta              " << settings.beta() << '\n'
      << "ThetaPlus         " << settings.theta_plus() << '\n'
      << "ThetaMin          " << settings.theta_min() << '\n'
      << "MaxIters          " << settings.max_iters()
      << '\n'
      // One column short of the others; logs are compared byte for byte.
      << "NegativeWeights  " << on_off(settings.negative_weights()) << '\n';
}

void write_rocchio(std::ostream &out, const RocchioParams &settings) {
  out << "[Rocchio]\n"
      << "Beta              " << settings.beta() << '\n'
      << "Gamma             " << settings.gamma() << '\n'
      << "NegativeWeights   " << on_off(settings.negative_weights()) << '\n';
}

void write_sbc(std::ostream &out, const SbcParams &settings) {
  out << "[SBC]\n"
      << "Laplace           " << on_off(settings.laplace()) << '\n'
      << "MaxSignif         " << settings.max_signif() << '\n';
}

void write_algorithm(std::ostream &out, const Params &settings) {
  switch (settings.algorithm()) {
    case Algorithm::winnow:
      write_winnow(out, settings.winnow());
      return;
    case Algorithm::rocchio:
      write_rocchio(out, settings.rocchio());
      return;
    case Algorithm::sbc:
      write_sbc(out, settings.sbc());
      return;
  }
}

}  // namespace

const char *report_name(Algorithm value) {
  switch (value) {
    case Algorithm::winnow:
      return "Winnow";
    case Algorithm::rocchio:
      return "Rocchio";
    case Algorithm::sbc:
      return "SBC";
  }
  return "";
}

const char *report_name(TermSelection value) {
  switch (value) {
    case TermSelection::none:
      return "none";
    case TermSelection::uncertainty:
      return "Uncertainty";
    case TermSelection::termfreq:
      return "TermFrequency";
    case TermSelection::docfreq:
      return "DocumentFrequency";
    case TermSelection::tfidf:
      return "TfIdf";
    case TermSelection::infogain:
      return "InformationGain";
  }
  return "";
}

const char *report_name(Normalize value) {
  switch (value) {
    case Normalize::off:
      return "off";
    case Normalize::linear:
      return "linear";
    case Normalize::vector:
      return "vector";
  }
  return "";
}

const char *report_name(Strength value) {
  switch (value) {
    case Strength::freq:
      return "freq";
    case Strength::boolean:
      return "bool";
    case Strength::sqrt:
      return "sqrt";
    case Strength::ltc:
      return "ltc";
  }
  return "";
}

std::string Params::settings_text() const {
  std::ostringstream out;
  out.imbue(std::locale::classic());
  write_general(out, *this);
  out << '\n';
  write_algorithm(out, *this);
  return std::move(out).str();
}

void Params::print_parameters(unsigned level) const {
  log_always(level, settings_text());
}

}  // namespace vek

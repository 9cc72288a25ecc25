// All values of a run that a user can tune.
//
// The global record is complete with its defaults before the entry point. The
// resource file (rcparser.h) writes to it, then the command line does, and
// from then on every unit only reads. Nothing here checks a range or how two
// parameters go together: what the resource file can express is stored, so
// that no number is negative, NaN or infinite, and no more is promised.
#ifndef VEK_PARAMS_PARAMS_H_
#define VEK_PARAMS_PARAMS_H_

#include <cstdint>
#include <string>
#include <utility>

namespace vek {

// The trainer of the run. The command line speaks in the same numbers.
enum class Algorithm : std::uint32_t { winnow = 0, rocchio = 1, sbc = 2 };

// The measure that selects terms.
enum class TermSelection : std::uint32_t {
  none = 0,
  uncertainty = 1,
  termfreq = 2,
  docfreq = 3,
  tfidf = 4,
  infogain = 5,
};

// The normalisation of a document's weights, and how a term's frequency
// becomes its strength. The two share one numbering.
enum class Normalize : std::uint32_t { off = 1, linear = 2, vector = 3 };
enum class Strength : std::uint32_t {
  freq = 4,
  boolean = 5,
  sqrt = 6,
  ltc = 7
};

// The name of a value in the settings text.
const char *report_name(Algorithm value);
const char *report_name(TermSelection value);
const char *report_name(Normalize value);
const char *report_name(Strength value);

class WinnowParams {
 public:
  // Upper bound of the passes over the documents of one father.
  std::uint32_t max_iters() const { return max_iters_; }
  void set_max_iters(std::uint32_t value) { max_iters_ = value; }
  // Factors that raise and lower a weight.
  double alpha() const { return alpha_; }
  void set_alpha(double value) { alpha_ = value; }
  double beta() const { return beta_; }
  void set_beta(double value) { beta_ = value; }
  // A member of the class must score above theta_plus(), a non-member below
  // theta_min().
  double theta_plus() const { return theta_plus_; }
  void set_theta_plus(double value) { theta_plus_ = value; }
  double theta_min() const { return theta_min_; }
  void set_theta_min(double value) { theta_min_ = value; }
  // Whether a score is the difference of two weights or the positive one alone.
  bool negative_weights() const { return negative_weights_; }
  void set_negative_weights(bool value) { negative_weights_ = value; }

 private:
  std::uint32_t max_iters_ = 5;
  double alpha_ = 1.1;
  double beta_ = 0.9;
  double theta_plus_ = 1.0;
  double theta_min_ = 1.0;
  bool negative_weights_ = true;
};

class RocchioParams {
 public:
  // Accepted and stored; nothing reads it.
  bool pivoted() const { return pivoted_; }
  void set_pivoted(bool value) { pivoted_ = value; }
  // Factors of the class's own documents and of the others.
  double beta() const { return beta_; }
  void set_beta(double value) { beta_ = value; }
  double gamma() const { return gamma_; }
  void set_gamma(double value) { gamma_ = value; }
  // Whether a weight below zero is kept.
  bool negative_weights() const { return negative_weights_; }
  void set_negative_weights(bool value) { negative_weights_ = value; }

 private:
  bool pivoted_ = false;
  double beta_ = 16.0;
  double gamma_ = 4.0;
  bool negative_weights_ = false;
};

// Both are reported only.
class SbcParams {
 public:
  std::uint32_t max_signif() const { return max_signif_; }
  void set_max_signif(std::uint32_t value) { max_signif_ = value; }
  bool laplace() const { return laplace_; }
  void set_laplace(bool value) { laplace_ = value; }

 private:
  std::uint32_t max_signif_ = 10000;
  bool laplace_ = true;
};

class Params {
 public:
  // Where vocabulary, class files and profile store lie.
  std::string data_directory() const { return data_directory_; }
  void set_data_directory(std::string value) {
    data_directory_ = std::move(value);
  }
  // The parent of the directory that polling looks at.
  std::string input_directory() const { return input_directory_; }
  void set_input_directory(std::string value) {
    input_directory_ = std::move(value);
  }
  // Where the document files lie.
  std::string file_directory() const { return file_directory_; }
  void set_file_directory(std::string value) {
    file_directory_ = std::move(value);
  }
  // The command line of the analyser. Empty: no process, and the document
  // files hold analysis text themselves.
  std::string analyser() const { return analyser_; }
  void set_analyser(std::string value) { analyser_ = std::move(value); }

  // The number f of the F-measure.
  double f_parameter() const { return f_parameter_; }
  void set_f_parameter(double value) { f_parameter_ = value; }
  // The threshold of term selection; 0 lets every term through.
  double selectivity() const { return selectivity_; }
  void set_selectivity(double value) { selectivity_ = value; }

  Algorithm algorithm() const { return algorithm_; }
  void set_algorithm(Algorithm value) { algorithm_ = value; }
  TermSelection term_selection() const { return term_selection_; }
  void set_term_selection(TermSelection value) { term_selection_ = value; }

  // Read the class files at the start and write them at the end.
  bool incremental() const { return incremental_; }
  void set_incremental(bool value) { incremental_ = value; }
  // Write the class files at the end.
  bool save() const { return save_; }
  void set_save(bool value) { save_ = value; }
  // Divide scores by the class's threshold, and compare them with 1.0.
  bool scaling() const { return scaling_; }
  void set_scaling(bool value) { scaling_ = value; }

  // A ranking is cut to max_ranks() entries; min_ranks() entries stay in it
  // even below their threshold. The second may be the greater one.
  std::uint32_t max_ranks() const { return max_ranks_; }
  void set_max_ranks(std::uint32_t value) { max_ranks_ = value; }
  std::uint32_t min_ranks() const { return min_ranks_; }
  void set_min_ranks(std::uint32_t value) { min_ranks_ = value; }

  Normalize normalize() const { return normalize_; }
  void set_normalize(Normalize value) { normalize_ = value; }
  Strength strength() const { return strength_; }
  void set_strength(Strength value) { strength_ = value; }

  // The records of the algorithms, whichever of them is selected.
  const WinnowParams &winnow() const { return winnow_; }
  WinnowParams &winnow() { return winnow_; }
  const RocchioParams &rocchio() const { return rocchio_; }
  RocchioParams &rocchio() { return rocchio_; }
  const SbcParams &sbc() const { return sbc_; }
  SbcParams &sbc() { return sbc_; }

  // The general settings and those of the selected algorithm, a line each,
  // every line with its end. The keys of the lines are the labels that the
  // documents use.
  std::string settings_text() const;

  // Logs settings_text() by log_always() at `level`; the log's own line end
  // makes a blank line close the report.
  void print_parameters(unsigned level) const;

 private:
  std::string data_directory_ = "data";
  std::string input_directory_ = "input";
  std::string file_directory_ = "files";
  std::string analyser_ = "analyse.pl";
  double f_parameter_ = 1.0;
  double selectivity_ = 0.16;
  Algorithm algorithm_ = Algorithm::winnow;
  TermSelection term_selection_ = TermSelection::uncertainty;
  bool incremental_ = false;
  bool save_ = false;
  bool scaling_ = true;
  std::uint32_t max_ranks_ = 1;
  std::uint32_t min_ranks_ = 1;
  Normalize normalize_ = Normalize::off;
  Strength strength_ = Strength::freq;
  WinnowParams winnow_;
  RocchioParams rocchio_;
  SbcParams sbc_;
};

extern Params params;

}  // namespace vek

#endif  // VEK_PARAMS_PARAMS_H_

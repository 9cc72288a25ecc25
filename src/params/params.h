// All values of a run that a user can tune.
//
// The record is complete with its defaults from the start. The resource file
// (rcparser.h) writes to it, then the command line does, and from then on it is
// only read. Ranges, and how two parameters go together, are not checked here:
// what the resource file can express is stored, which is no negative number,
// NaN or infinity.
#ifndef VEK_PARAMS_PARAMS_H_
#define VEK_PARAMS_PARAMS_H_

#include <cstdint>
#include <string>
#include <string_view>

namespace vek {

// The classifier of the run; learning/classifiers.h has the record of each.
enum class Algorithm : std::uint32_t {
  winnow = 0,
  rocchio = 1,
  sbc = 2,
  linear = 3
};

// The measure that selects terms.
enum class TermSelection : std::uint32_t {
  none = 0,
  uncertainty = 1,
  termfreq = 2,
  docfreq = 3,
  tfidf = 4,
  infogain = 5,
};

// How a document is judged: step by step down the hierarchy, sons against their
// brothers, or by the probability of the whole path to a leaf.
enum class WalkKind : std::uint32_t { steps = 0, path = 1 };

// What a document gets that scores above no threshold: no class or the best.
enum class Insignificant : std::uint32_t { none = 0, best = 1 };

// The normalisation of a document's weights, and how a term's frequency
// becomes its strength. The two share one numbering.
enum class Normalize : std::uint32_t { off = 1, linear = 2, vector = 3 };
enum class Strength : std::uint32_t {
  freq = 4,
  boolean = 5,
  sqrt = 6,
  ltc = 7
};

// What the settings text says for a flag.
const char *on_off(bool value);

struct WinnowParams {
  // Upper bound of the passes over the documents of one father.
  std::uint32_t max_iters = 5;
  // Factors that raise and lower a weight.
  double alpha = 1.1;
  double beta = 0.9;
  // A member of the class must score above theta_plus, a non-member below
  // theta_min.
  double theta_plus = 1.0;
  double theta_min = 1.0;
  // Whether a score is the difference of two weights or the positive one alone.
  bool negative_weights = true;
};

struct RocchioParams {
  // Accepted and stored, but without effect.
  bool pivoted = false;
  // Factors of the class's own documents and of the others.
  double beta = 16.0;
  double gamma = 4.0;
  // Whether a weight below zero is kept.
  bool negative_weights = false;
};

// Both are shown with the settings and have no other effect.
struct SbcParams {
  std::uint32_t max_signif = 10000;
  bool laplace = true;
};

// What a training document costs a linear machine that has it on the wrong side
// of the margin; learning/linear.h has the formulas.
enum class LinearLoss { hinge, squared, logistic };

struct LinearParams {
  // What a document's loss counts beside the size of the weights.
  double cost = 1.0;
  LinearLoss loss = LinearLoss::squared;
};

struct Params {
  // Where vocabulary, class files and profile store lie.
  std::string data_directory = "data";
  // The parent of the directory that polling looks at.
  std::string input_directory = "input";
  // Where the document files lie.
  std::string file_directory = "files";
  // The command line of the analyser. Empty: no process, and the document
  // files hold analysis text themselves.
  std::string analyser = "analyse.pl";
  // The analyser may take so many seconds for an answer; 0 is no limit.
  std::uint32_t analyser_timeout = 0;

  // The number f of the F-measure.
  double f_parameter = 1.0;
  // The threshold of term selection; 0 lets every term through.
  double selectivity = 0.16;

  Algorithm algorithm = Algorithm::winnow;
  TermSelection term_selection = TermSelection::uncertainty;

  // Read the class files at the start and write them at the end.
  bool incremental = false;
  // Write the class files at the end.
  bool save = false;
  // Divide scores by the class's threshold, and compare them with 1.0.
  bool scaling = true;

  // A ranking is cut to max_ranks entries; min_ranks entries stay in it even
  // below their threshold. The second may be the greater one.
  std::uint32_t max_ranks = 1;
  std::uint32_t min_ranks = 1;

  // Parts of the training documents that are held out in turn, to learn from
  // their scores how to judge; 0 or 1: none are.
  std::uint32_t held_out = 0;
  WalkKind walk = WalkKind::steps;
  Insignificant insignificant = Insignificant::none;
  // Write predictions beside each rank file.
  bool predictions = false;

  Normalize normalize = Normalize::off;
  Strength strength = Strength::freq;

  // The records of the classifiers, whichever of them is selected.
  WinnowParams winnow;
  RocchioParams rocchio;
  SbcParams sbc;
  LinearParams linear;

  // The general settings, a line each, every line with its end, under the
  // classifier's name. The keys of the lines are the labels that the documents
  // use.
  std::string general_text(std::string_view algorithm_name) const;
};

}  // namespace vek

#endif  // VEK_PARAMS_PARAMS_H_

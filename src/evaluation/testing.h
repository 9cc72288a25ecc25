// Where a document meets a class: scores, the walk down the hierarchy, and the
// test run.
#ifndef VEK_EVALUATION_TESTING_H_
#define VEK_EVALUATION_TESTING_H_

#include <ostream>
#include <string>

#include "classes/classtab.h"
#include "evaluation/confus.h"
#include "evaluation/ranks.h"
#include "intake/docprof.h"
#include "run/helpers.h"
#include "run/output_file.h"

namespace vek {

// What SBC multiplies with for a term that the class does not know.
inline constexpr WeightType unknown_term_factor = 0.01;

// What an entry contributes per unit of document weight under the algorithm
// that is set: Winnow's pos - neg, or pos alone without negative weights;
// Rocchio's and SBC's only weight.
WeightType scoring_weight(const ClassProfileEntry &entry);

// The unscaled score of a document against a class, over the document's terms
// in order. Winnow and Rocchio: the sum of scoring weight times document
// weight over the terms that the class knows. SBC: the product of the scoring
// weights, with a fixed factor for each term that the class does not know.
WeightType score_document(const ClassProfile &profile, const DocProfile &doc);

// The score in units of the class's threshold, if scaling is on. For a
// threshold that nothing can be divided by, or that would turn the order
// round, it is 1 + (score - threshold): 1.0 still divides above from below.
WeightType scaled_score(WeightType score, WeightType threshold);

// Weighs the document against the class and appends its scaled score for each
// son, in the order of sons. The class's weights may not have changed since
// clear_scorers() was called last.
void score_sons(ClassData *class_data_P, DocProfile &doc, Ranks &scores);

// To be called when classifier weights have changed.
void clear_scorers();

// Walks down the hierarchy below a class that has sons, given the scores of
// its sons, and leaves in the empty `ranks` the leaf classes that the document
// belongs to, highest score first: as many as pass their thresholds, but at
// least MinRanks and at most MaxRanks. Returns whether the document is
// significant: some class on the way scored above its threshold.
bool classify_document(ClassData *class_data_P, DocProfile &doc,
                       const Ranks &scores, Ranks &ranks);

// Scores one test document, writes its line to the rank file and counts the
// decision. `classes` are those in which it was filed.
void test_document(ClassData *class_data_P, const std::string &name,
                   const DocumentMap::ClassList &classes,
                   ConfusionMatrix &matrix, std::ostream &file);

// All test documents of a class, and the report.
void test_class(ClassData *class_data_P, std::ostream &file);

// The test run, over the top class: writes a rank file into the examples
// directory, which gets its final name when it is complete. Without sons or
// test documents nothing happens.
void test_classes();

// A rank file under way. Ends the run if it can't be created, written or
// renamed; what has its final name is complete.
class RankFile {
 public:
  enum class Announce { no, yes };

  // Takes the next number and opens the file under its temporary name, which
  // is logged first if wanted.
  explicit RankFile(Announce announce);
  std::ostream &stream() { return stream_; }
  // Closes the file and gives it its final name.
  void finish();

 private:
  std::string name_;
  std::string temporary_path_;
  OutputFile stream_;
};

}  // namespace vek

#endif  // VEK_EVALUATION_TESTING_H_

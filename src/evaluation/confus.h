// Counts, over one test run, which classes the documents had and which were
// assigned to them, and turns the counts into the report of the run.
//
// For one class and one document: RS, the document is in the class and was
// assigned to it; RNS, it is in the class and was not assigned; NRS, it is not
// in the class and was assigned. NRNS, neither, follows from the number of test
// documents. Column 0 is that of the top class, to which no document is
// assigned; it holds the totals.
//
// Precision, recall, fallout and the F-measure are those of van Rijsbergen,
// Information Retrieval, 2nd ed. 1979, chapter 7: fractions of 1, shown in
// percent.
#ifndef VEK_EVALUATION_CONFUS_H_
#define VEK_EVALUATION_CONFUS_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <ostream>
#include <vector>

#include "base/helpers.h"
#include "classes/classtab.h"

namespace vek {

class ConfusionMatrix {
 public:
  // All counts 0, for the classes that the table holds now, which must outlive
  // the matrix. Without a number of documents, they are the test documents that
  // the top class knows at any time.
  explicit ConfusionMatrix(const ClassTable &classes,
                           std::optional<std::uint32_t> nr_documents = {});

  // A class id outside the table stops the program.
  void enterRS(std::uint32_t class_id) { enter(row_rs, class_id); }
  void enterRNS(std::uint32_t class_id) { enter(row_rns, class_id); }
  void enterNRS(std::uint32_t class_id) { enter(row_nrs, class_id); }
  std::uint32_t get_confusion(std::uint32_t row, std::uint32_t column) const;

  std::uint32_t nr_correct(std::uint32_t class_id) const;
  std::uint32_t nr_missed(std::uint32_t class_id) const;
  std::uint32_t nr_wrong(std::uint32_t class_id) const;

  // RS / (RS + NRS). False, and a value of 0, if nothing was assigned.
  bool precision(std::uint32_t class_id, WeightType &value) const;
  // RS / (RS + RNS). False, and a value of 0, if no document is in the class.
  bool recall(std::uint32_t class_id, WeightType &value) const;
  // NRS / (T - RS - RNS), with T the number of test documents: the share of the
  // documents outside the class that were assigned to it. 0 if there are none.
  // The difference wraps at 32 bits, for the totals too, where a document
  // counts once for each of its classes.
  void fallout(std::uint32_t class_id, WeightType &value) const;

  // The count table, an empty line, the measures, an empty line. Averages are
  // micro-averages: the figures of the summed counts. `f` is the parameter of
  // the F-measure.
  void print(std::ostream &os, double f) const;

 private:
  static constexpr std::uint32_t row_rs = 0;
  static constexpr std::uint32_t row_rns = 1;
  static constexpr std::uint32_t row_nrs = 2;
  static constexpr std::uint32_t nr_rows = 3;

  std::size_t size() const { return cells_.size(); }
  void enter(std::uint32_t row, std::uint32_t class_id);
  void print_counts(std::ostream &os, std::uint32_t class_id) const;
  void print_measures(std::ostream &os, std::uint32_t class_id, double f) const;
  std::uint32_t nr_test_documents() const;

  const ClassTable &classes_;
  std::uint32_t nr_classes_;
  std::optional<std::uint32_t> nr_documents_;
  std::vector<std::uint32_t> cells_;
};

// ((f * f + 1) * P * R) / (f * f * P + R), of precision P and recall R; 0 if
// the divisor is 0. With f above 1 recall counts more than precision, with f
// below 1 less.
WeightType f_measure(WeightType precision, WeightType recall, double f);

}  // namespace vek

#endif  // VEK_EVALUATION_CONFUS_H_

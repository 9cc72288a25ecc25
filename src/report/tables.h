// The tables of a report: which rows and columns they have, and their order.
#ifndef VEK_REPORT_TABLES_H_
#define VEK_REPORT_TABLES_H_

#include <cstddef>
#include <string>
#include <vector>

#include "report/comparison.h"
#include "report/figures.h"
#include "report/predictions.h"
#include "report/table.h"

namespace vek::reporting {

// A run with all that was counted.
struct Judged {
  const ClassNames &names;
  Predictions predictions;
  std::vector<Verdict> verdicts;
  Figures figures;

  // Counts what was read into `predictions`.
  void judge();
};

Table summary_table(const Judged &run);

// Columns of class_table(). Shares go from the least up, counts from the
// greatest down, names by the alphabet; classes without a figure come last. Of
// equals, the larger class comes first.
extern const std::vector<std::string> class_columns;
enum class Order { usual, reverse };
Table class_table(const Judged &run, const std::string &sort_column,
                  Order order);

Table pair_table(const Judged &run);

// Misjudged ones first.
Table document_table(const Judged &run);

// The candidates of one document, with all that decided.
Table candidate_table(const Judged &run, const Prediction &doc);

Table compared_summary(const Comparison &comparison);
// Those that some document is in or got, the greatest difference first.
Table compared_classes(const Comparison &comparison, const ClassNames &names);
Table changed_documents(const Comparison &comparison, const Predictions &first,
                        const Predictions &second, const ClassNames &names);
Table test_table(const Comparison &comparison);

// What the test says, in sentences.
std::string conclusion(const Comparison &comparison);

}  // namespace vek::reporting

#endif  // VEK_REPORT_TABLES_H_

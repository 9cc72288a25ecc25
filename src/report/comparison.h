// Two runs over the same documents: what differs, and whether the difference
// says anything about further documents.
//
// Compared are the documents that both runs judged and that are filed in the
// same classes in both; the others are counted.
//
// Two tests, both paired. McNemar, Psychometrika 12, 1947, asks of the
// documents that exactly one run got right how likely so uneven a split of them
// is if each were a throw of a coin; here by the binomial distribution itself.
// The bootstrap (Efron, Annals of Statistics 7, 1979) draws as many documents
// again, with replacement, and looks between which bounds 95 % of the
// differences lie.
#ifndef VEK_REPORT_COMPARISON_H_
#define VEK_REPORT_COMPARISON_H_

#include <cstdint>
#include <vector>

#include "report/figures.h"
#include "report/predictions.h"

namespace vek::reporting {

// The second run's figure less the first's.
struct Difference {
  double value = 0;
  double low = 0;  // 2.5 % of the resamples lie below
  double high = 0;
  bool is_certain() const { return low > 0 || high < 0; }
};

enum class Change { better, worse, other };
const char *name_of(Change change);

struct ChangedDocument {
  std::size_t first = 0;  // places in the two runs
  std::size_t second = 0;
  Change change = Change::other;
};

struct Comparison {
  std::uint64_t nr_common = 0;
  std::uint64_t nr_only_first = 0;
  std::uint64_t nr_only_second = 0;
  std::uint64_t nr_refiled = 0;  // in both, filed differently
  Figures first;                 // over the common documents
  Figures second;
  // Those that got other classes, the order of which does not matter; by the
  // order of the first run. Better has fewer faults, classes missed or wrong.
  std::vector<ChangedDocument> changed;
  std::uint64_t nr_first_alone_right = 0;
  std::uint64_t nr_second_alone_right = 0;
  double mcnemar = 1;  // probability
  Difference micro_f1;
  Difference macro_f1;
};

Comparison compare(const Predictions &first, const Predictions &second,
                   std::uint32_t nr_classes);

// How likely a split as uneven as a to b, or more, is by throws of a coin.
double coin_probability(std::uint64_t a, std::uint64_t b);

}  // namespace vek::reporting

#endif  // VEK_REPORT_COMPARISON_H_

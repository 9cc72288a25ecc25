// The figures of a run: what was counted for each class, and what follows.
//
// As in vek's own report: a document that is filed twice in a class counts
// twice there, a document that got no class is missed in each of its own, and
// totals are sums over all classes. New documents, which are in no class, count
// nowhere.
#ifndef VEK_REPORT_FIGURES_H_
#define VEK_REPORT_FIGURES_H_

#include <cstdint>
#include <optional>
#include <vector>

#include "report/predictions.h"

namespace vek::reporting {

// What became of a document, as lists of classes by ascending id.
struct Verdict {
  std::vector<std::uint32_t> correct;
  std::vector<std::uint32_t> missed;
  std::vector<std::uint32_t> wrong;
};
Verdict verdict_on(const Prediction &doc);

enum class Outcome { is_new, right, partly, wrong, nothing };
Outcome outcome_of(const Prediction &doc, const Verdict &verdict);
const char *name_of(Outcome outcome);

// Of the best of the document's classes, from 1; 0 if none is a leaf.
std::uint32_t best_rank(const Prediction &doc);

// Fractions of 1. One that would be a division by 0 is nothing.
struct Counts {
  std::uint64_t correct = 0;
  std::uint64_t missed = 0;
  std::uint64_t wrong = 0;

  std::uint64_t support() const { return correct + missed; }
  std::uint64_t assigned() const { return correct + wrong; }
  std::optional<double> precision() const;
  std::optional<double> recall() const;
  // 2 P R / (P + R), where what does not exist is 0; nothing for a class that
  // no document is in or got.
  std::optional<double> f1() const;
};

struct ClassFigures {
  Counts counts;
  // Documents for which the class was neither missed nor wrong.
  std::uint64_t nr_agreeing = 0;
};

struct Figures {
  std::uint64_t nr_documents = 0;  // with classes
  std::uint64_t nr_new = 0;
  std::uint64_t nr_right = 0;         // got exactly their classes
  std::uint64_t nr_partly = 0;        // got some of their classes
  std::uint64_t nr_without = 0;       // got none
  std::uint64_t nr_first_right = 0;   // the best of all leaves is theirs
  double mean_reciprocal_rank = 0;    // of the best of their classes
  std::uint32_t nr_counted = 0;       // classes in the macro-averages
  std::vector<ClassFigures> classes;  // by class id
  Counts total;
  // Means over the classes that some document is in or got. What does not exist
  // for one of them counts as 0.
  double macro_precision = 0;
  double macro_recall = 0;
  double macro_f1 = 0;

  double share(std::uint64_t count) const {
    return nr_documents == 0 ? 0 : double(count) / double(nr_documents);
  }
};

// `verdicts` are those on the documents, in their order.
Figures count_figures(const Predictions &predictions,
                      const std::vector<Verdict> &verdicts,
                      std::uint32_t nr_classes);

std::vector<Verdict> judge_all(const Predictions &predictions);

// How many documents of a class got another one.
struct Confusion {
  // The pair's class where a document got nothing for the one that it missed.
  static constexpr std::uint32_t no_class = 0xFFFFFFFF;

  std::uint32_t filed_in = 0;
  std::uint32_t got = 0;
  std::uint64_t nr_documents = 0;
};

// Each class that a document got wrongly, with each one that it missed, or, if
// it missed none, with each of its own. A class that was missed where nothing
// wrong was got makes a pair with no_class. Most frequent first, then by ids.
// Time and memory are bounded: of more than 100 classes of a document, more
// than two million different pairs, or more than 100,000 in the result the rest
// is left out, and `is_complete` is false.
std::vector<Confusion> find_confusions(const Predictions &predictions,
                                       const std::vector<Verdict> &verdicts,
                                       bool &is_complete);

}  // namespace vek::reporting

#endif  // VEK_REPORT_FIGURES_H_

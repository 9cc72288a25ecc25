// Predictions as data: a line for each document that was judged, for programs
// to read.
//
// The first line names the columns, which tabs part:
//   document      the name
//   true          the classes in which it was filed, in the order of the list
//   assigned      the classes that it got, best first
//   score         of each of these
//   threshold     what that score has to exceed
//   probability   of each of these, if scores were calibrated
//   rank          of each true class among all leaves, from 1; 0 for no leaf
//   significant   1 if some class scored above its threshold, else 0
//   candidates    the best leaves, and all true ones: class, colon, score
//   thresholds    of each candidate
// Classes have their full path. Blanks part the members of a list. Names are
// escaped, as those in a list can hold tabs.
#ifndef VEK_EVALUATION_PREDICTIONS_H_
#define VEK_EVALUATION_PREDICTIONS_H_

#include <string>
#include <string_view>

#include "evaluation/judge.h"

namespace vek {

inline constexpr std::string_view predictions_header =
    "document\ttrue\tassigned\tscore\tthreshold\tprobability\trank\t"
    "significant\tcandidates\tthresholds\n";

inline constexpr std::size_t nr_candidates = 20;

// The line of a document. The judge has kept the leaves in the answer.
std::string prediction_line(const std::string &name,
                            const DocumentMap::ClassList &filed_in,
                            const Answer &answer, const Judge &judge,
                            const ClassTable &classes);

}  // namespace vek

#endif  // VEK_EVALUATION_PREDICTIONS_H_

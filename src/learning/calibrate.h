// What held-out scores teach: thresholds, probabilities, and how good the model
// is without any test list.
#ifndef VEK_LEARNING_CALIBRATE_H_
#define VEK_LEARNING_CALIBRATE_H_

#include <cstdint>
#include <iosfwd>

#include "evaluation/confus.h"
#include "evaluation/judging.h"
#include "learning/heldout.h"
#include "params/params.h"

namespace vek {

// Sets the threshold of each leaf, for answers by steps, to the break-even
// point of its scores, and writes these scores as set_leaf_thresholds() does. A
// leaf with n documents keeps n / (n + 30) of its own point; the rest it takes
// from all leaves together, in units of the logistic curve of its scores. A
// leaf without documents keeps the threshold that it has. Thresholds have six
// digits, all that a class profile's file keeps.
void set_held_out_thresholds(ClassTable &classes, const TrainingSet &set,
                             const ScoreMatrix &matrix, std::ostream &scores);

// The curves of all classes, from the documents of their fathers, and the
// thresholds of the leaves, for answers by the path. With MaxRanks 1 the sons
// of a father share the probability of 1. The threshold is the break-even point
// of the leaf's probability over all documents, which leans on the others as
// above; it is from 0.001 to 0.999.
Judging learn_judging(const ClassTable &classes, const TrainingSet &set,
                      const ScoreMatrix &matrix, std::uint32_t nr_parts,
                      const Params &params);

// Judges the held-out documents by their scores and counts the decisions.
ConfusionMatrix judge_held_out(const ClassTable &classes,
                               const TrainingSet &set,
                               const ScoreMatrix &matrix,
                               const Judging &judging, const Params &params);

}  // namespace vek

#endif  // VEK_LEARNING_CALIBRATE_H_

// Balanced Winnow with a thick threshold.
//
// Littlestone, N. (1988), Learning quickly when irrelevant attributes abound.
// Every class that has a father is a linear scorer: its terms carry a positive
// weight p and a negative weight n, and a document with term strengths w
// scores s = sum (p - n) * w. Training goes over the documents of a father
// again and again. A member of a son that scores s <= theta_plus promotes the
// son: p *= alpha, n *= beta for each of its terms in the document. A
// non-member that scores s >= theta_min demotes it: p *= beta, n *= alpha. The
// strength of a term decides the score, not the size of an update.
#ifndef VEK_LEARNING_WINNOW_H_
#define VEK_LEARNING_WINNOW_H_

#include <cstdint>
#include <ostream>
#include <vector>

#include "classes/classtab.h"
#include "evaluation/scoring.h"
#include "learning/training.h"

namespace vek {

// Trains all fathers of the class table, then sets the thresholds of all
// leaves.
void train_winnow(const Training &training);

// The difference of an entry's two weights, or the positive one alone without
// negative weights.
WeightType winnow_scoring_weight(const ClassProfileEntry &entry,
                                 const Params &params);
inline constexpr Scoring winnow_scoring = {Scoring::Kind::sum,
                                           winnow_scoring_weight};

void write_winnow_settings(std::ostream &out, const Params &params);

// Trains the sons of one father against each other. Returns the number of
// passes made, that which found nothing to do included.
unsigned train_winnow_class(const Training &training, ClassData &father);

// Gives a class with a father its start weights: 2.0 and 1.0, divided by the
// mean weight sum of the father's documents unless weights are normalised
// linearly. A father without documents, or whose documents weigh nothing,
// counts as having the mean 10000.0.
void init_winnow_weights(const Params &params, ClassData &data);

// The order of a pass: 0 to nr_docs - 1, shuffled by lrand48(), which nobody
// seeds, so that each run repeats the last and each pass has its own order.
std::vector<std::uint32_t> make_training_list(std::uint32_t nr_docs);

}  // namespace vek

#endif  // VEK_LEARNING_WINNOW_H_

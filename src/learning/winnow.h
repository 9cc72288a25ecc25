// Balanced Winnow with a thick threshold.
//
// Littlestone, N., Learning quickly when irrelevant attributes abound: a new
// linear-threshold algorithm, Machine Learning 2 (1988), pp. 285-318. The thick
// threshold: Dagan, Karov and Roth, Mistake-driven learning in text
// categorization, EMNLP 1997.
//
// Every class that has a father is a linear scorer: its terms carry a positive
// weight p and a negative weight n, and a document with term strengths w scores
//   s = sum (p - n) * w
// Training goes over the documents of a father again and again. The terms that
// a document shares with a son are changed where the score is wrong:
//   promotion, for a member with s <= theta_plus:    p *= alpha, n *= beta
//   demotion, for a non-member with s >= theta_min:  p *= beta, n *= alpha
// With theta_min below theta_plus each score between them is an error, so that
// training drives members and others apart. The strength of a term decides the
// score, not the size of an update.
#ifndef VEK_LEARNING_WINNOW_H_
#define VEK_LEARNING_WINNOW_H_

#include <cstdint>
#include <ostream>
#include <vector>

#include "classes/classtab.h"
#include "evaluation/scoring.h"
#include "learning/training.h"

namespace vek {

// Trains all fathers of the class table.
void train_winnow(const Training &training);

// The difference of an entry's two weights, or the positive one alone without
// negative weights.
WeightType winnow_scoring_weight(const ClassProfileEntry &entry,
                                 const Params &params);
inline constexpr Scoring winnow_scoring = {Scoring::Kind::sum,
                                           winnow_scoring_weight};

void write_winnow_settings(std::ostream &out, const Params &params);

// Trains the sons of one father against each other. Returns the number of
// passes made, including a last one without any update.
unsigned train_winnow_class(const Training &training, ClassData &father);

// Gives a class with a father its start weights: 2.0 and 1.0, divided by the
// mean weight sum of the father's documents unless weights are normalised
// linearly. A father without documents, or whose documents weigh nothing,
// counts as having the mean 10000.0.
void init_winnow_weights(const Params &params, ClassData &data);

// The order of a pass: 0 to nr_docs - 1, shuffled by nrand48(). Each pass draws
// on where the last one ended, so that it has an order of its own; and as every
// training begins with the same state, it goes through the same orders again.
std::vector<std::uint32_t> make_training_list(std::uint32_t nr_docs,
                                              RandomState &random);

}  // namespace vek

#endif  // VEK_LEARNING_WINNOW_H_

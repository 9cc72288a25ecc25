// Linear machines: for each class the hyperplane that parts its documents from
// those of its brothers with the widest margin, by the library liblinear (Fan,
// Chang, Hsieh, Wang and Lin, LIBLINEAR: a library for large linear
// classification, Journal of Machine Learning Research 9, 2008).
//
// For a son and the documents of its father, with x the vector of a document's
// weights for the terms that the son knows, and y = 1 for a member and -1 for
// any other, the weights w and the constant b are those that make
//   1/2 (|w|^2 + b^2) + cost * sum of loss(y * (w x + b))
// smallest, where loss(m) is
//   hinge     max(0, 1 - m)      support vector machine
//   squared   max(0, 1 - m)^2
//   logistic  ln(1 + exp(-m))    logistic regression
// Documents are measured by the root of their mean squared length, so that one
// cost serves any strength and normalisation.
//
// A score is w x + b + p, with p what a document on the plane scores. That is
// 1, so that the others' margin is at 0, where the grid of thresholds begins.
// If all training documents score above 0, p is so much lower that the lowest
// does not; and logistic regression, which has no margin, always has its lowest
// at 0. As a score is a sum, it goes on rising where a probability has
// become 1.
#ifndef VEK_LEARNING_LINEAR_H_
#define VEK_LEARNING_LINEAR_H_

#include <ostream>

#include "classes/classtab.h"
#include "evaluation/scoring.h"
#include "learning/training.h"

namespace vek {

// Trains all fathers of the class table. The same documents give the same
// weights, whatever was trained before in the process: it seeds the generator
// of rand(), which the library uses, and so one thread at a time does this. It
// also takes over what the library prints.
void train_linear(const Training &training);

// The one weight of an entry.
WeightType linear_scoring_weight(const ClassProfileEntry &entry,
                                 const Params &params);
inline constexpr Scoring linear_scoring = {Scoring::Kind::sum,
                                           linear_scoring_weight};

void write_linear_settings(std::ostream &out, const Params &params);

// Sets weights and biases of the sons of one father, which has documents, and
// the score on the plane as their thresholds: inner classes keep those.
// Weights are rounded to single precision: should a sum of the library's end in
// another last digit on another kind of machine, it vanishes.
//
// A son that has all documents has nothing to be told from: it gets the mean of
// their vectors, and the documents score 1 on average. A son that has none, or
// a cost of 0, gives weights and a bias of 0. The threshold is 1 then.
void train_linear_class(const Training &training, ClassData &father);

}  // namespace vek

#endif  // VEK_LEARNING_LINEAR_H_

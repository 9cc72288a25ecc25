// SBC, the simple Bayesian classifier: a product of term probabilities.
//
// A term's weight in a class is its relative frequency in the class's training
// text, with one added to the count: (tf + 1) / nr_terms, tf and nr_terms being
// the occurrences of the term and of all terms. No documents are read and no
// thresholds are set. It is the multinomial model of naive Bayes (McCallum and
// Nigam, A comparison of event models for naive Bayes text classification, AAAI
// workshop 1998) without priors, with each term of the document counted once.
// The divisor is not raised by the size of the vocabulary, so the weights of a
// class do not add up to 1; they are compared between classes only.
#ifndef VEK_LEARNING_SBC_H_
#define VEK_LEARNING_SBC_H_

#include <ostream>

#include "classes/classtab.h"
#include "evaluation/scoring.h"
#include "learning/training.h"

namespace vek {

// Sets the weights of the sons of all fathers that have training documents.
void train_sbc(const Training &training);

// The one weight of an entry.
WeightType sbc_scoring_weight(const ClassProfileEntry &entry,
                              const Params &params);
inline constexpr Scoring sbc_scoring = {Scoring::Kind::product,
                                        sbc_scoring_weight};

void write_sbc_settings(std::ostream &out, const Params &params);

// Sets the weights of all classes from statistics that were read, for a run
// that does not train.
void restore_sbc_weights(ClassTable &classes);

// Sets the weights of the sons of one father. A son whose statistics count no
// term occurrence at all gets weights of 0.
void sbc_set_weights(ClassData &father);

}  // namespace vek

#endif  // VEK_LEARNING_SBC_H_

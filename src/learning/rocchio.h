// Rocchio's classifier: one weight for each term of a class, in one sweep.
//
// Rocchio, J. J., Relevance feedback in information retrieval, in: Salton
// (ed.), The SMART Retrieval System, 1971, pp. 313-323. The class takes the
// place of the query, its documents that of the relevant ones. For a term of a
// son:
//   weight = beta * s / nr_docs - gamma * o / nr_others
// s      sum of the term's document weights over the son's documents
// o      the same sum over the father's other documents
// nr_docs, nr_others    how many documents these are
// beta, gamma           factors, from the parameters
// A weight below zero counts as zero unless negative weights are kept.
#ifndef VEK_LEARNING_ROCCHIO_H_
#define VEK_LEARNING_ROCCHIO_H_

#include <ostream>

#include "classes/classtab.h"
#include "evaluation/scoring.h"
#include "learning/training.h"

namespace vek {

// Trains all fathers of the class table, in the order of their names. With the
// path or with held-out parts each by its own sums; otherwise the sums of a
// class as a father and as a son run together, in the order in which they come.
void train_rocchio(const Training &training);

// The one weight of an entry.
WeightType rocchio_scoring_weight(const ClassProfileEntry &entry,
                                  const Params &params);
inline constexpr Scoring rocchio_scoring = {Scoring::Kind::sum,
                                            rocchio_scoring_weight};

void write_rocchio_settings(std::ostream &out, const Params &params);

// Weighs the documents of a father against it and adds up their weights in the
// father's profile, by term.
void rocchio_weigh_documents(const Training &training, ClassData &father);

// Adds up the same weights in the profile of each son, over its own documents.
void rocchio_sum_sons(const Training &training, ClassData &father);

// Sets the weights of the sons from these sums. What cannot be computed (a son
// without documents in this run, a term that the father lacks, both possible
// when earlier statistics were read) is a weight of 0.
void rocchio_set_weights(const Params &params, ClassData &father);

}  // namespace vek

#endif  // VEK_LEARNING_ROCCHIO_H_

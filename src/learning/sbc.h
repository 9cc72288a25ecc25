// SBC, the simple Bayesian classifier: a product of term probabilities.
//
// A term's weight in a class is its relative frequency in the class's training
// text, with one added to the count: (tf + 1) / nr_terms. No documents are
// read and no thresholds are set.
#ifndef VEK_LEARNING_SBC_H_
#define VEK_LEARNING_SBC_H_

#include "classes/classtab.h"

namespace vek {

// Sets the weights of the sons of all fathers that have training documents.
void train_sbc();

// Sets the weights of all classes from statistics that were read, for a run
// that does not train.
void restore_sbc_weights();

// Sets the weights of the sons of one father. A son whose statistics count no
// term occurrence at all gets weights of 0.
void sbc_set_weights(ClassData &father);

}  // namespace vek

#endif  // VEK_LEARNING_SBC_H_

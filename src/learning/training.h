// What a trainer works with, and what all trainers have in common.
#ifndef VEK_LEARNING_TRAINING_H_
#define VEK_LEARNING_TRAINING_H_

#include <array>
#include <cstddef>
#include <functional>
#include <ostream>

#include "base/messages.h"
#include "classes/classtab.h"
#include "classes/termset.h"
#include "intake/documents.h"
#include "params/params.h"

namespace vek {

// The state of the system's 48-bit linear congruential generator.
using RandomState = std::array<unsigned short, 3>;

// All must outlive the training.
struct Training {
  ClassTable &classes;
  Documents &documents;
  // Filled by update_profiles().
  TermSet &active_terms;
  const Params &params;
  // Receives the scores from which the thresholds are made.
  std::ostream &scores;
  Messages &messages;
  // What the order of Winnow's passes is drawn from. Two trainings that begin
  // with the same numbers go through their documents in the same orders.
  mutable RandomState random = {};
};

// Gathers the statistics of every class over its training documents, whose
// terms are below `nr_terms`, fills `active_terms`, and adds the statistics of
// active terms to those that the class profiles have from earlier runs. All
// other terms that were counted are removed from the profiles.
void update_profiles(const Training &training, std::size_t nr_terms);

// Calls `train` for each class that has sons and training documents, in the
// order of the table, with a message before each. `what` names the classifier
// in it.
void for_each_father(const Training &training, const char *what,
                     const std::function<void(ClassData &father)> &train);

}  // namespace vek

#endif  // VEK_LEARNING_TRAINING_H_

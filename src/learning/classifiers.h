// The classifiers, a record each: all that the rest of the system knows of one.
#ifndef VEK_LEARNING_CLASSIFIERS_H_
#define VEK_LEARNING_CLASSIFIERS_H_

#include <ostream>
#include <span>

#include "classes/classtab.h"
#include "classes/weightfile.h"
#include "evaluation/scoring.h"
#include "learning/training.h"
#include "params/params.h"

namespace vek {

struct Classifier {
  Algorithm algorithm;
  const char *name;    // in reports and settings
  char option_letter;  // of the command line's -a
  Scoring scoring;
  // What the data directory keeps of it.
  ClassFileFormat files;
  // Sets the weights and thresholds of all classes from their statistics, which
  // must be complete.
  void (*train)(const Training &training);
  // Sets the weights that no file keeps, since they follow from what is kept.
  // Null: there are none.
  void (*restore_weights)(ClassTable &classes);
  // Its section of the settings text, a line each.
  void (*write_settings)(std::ostream &out, const Params &params);
};

std::span<const Classifier> classifiers();

const Classifier &classifier_of(Algorithm algorithm);

}  // namespace vek

#endif  // VEK_LEARNING_CLASSIFIERS_H_

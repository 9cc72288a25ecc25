// The classifiers, a record each: everything that differs between them and that
// the rest of the system has to know.
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
  Algorithm algorithm = Algorithm::winnow;
  const char *name = "";   // in reports and settings
  char option_letter = 0;  // of the command line's -a
  Scoring scoring = {Scoring::Kind::sum, nullptr};
  // What the data directory keeps of it.
  ClassFileFormat files;
  // Its scores can be compared with a threshold.
  bool has_thresholds = true;
  // Sets the weights of all classes from their statistics, which must be
  // complete.
  void (*train)(const Training &training) = nullptr;
  // Sets the weights that no file keeps, because they follow from the
  // statistics. Null if there are none.
  void (*restore_weights)(ClassTable &classes) = nullptr;
  // Writes its section of the settings text, a line for each parameter.
  void (*write_settings)(std::ostream &out, const Params &params) = nullptr;
};

std::span<const Classifier> classifiers();

const Classifier &classifier_of(Algorithm algorithm);

// Sets the weights of all classes from their statistics, which must be
// complete, and the thresholds of all leaves from the scores of the training
// documents.
void train_classes(const Training &training, const Classifier &classifier);

// The same without thresholds, which held-out documents are to set. Numbers of
// which a file keeps but six digits have these alone, so that a kept model
// judges as this one does.
void train_for_judging(const Training &training, const Classifier &classifier);

}  // namespace vek

#endif  // VEK_LEARNING_CLASSIFIERS_H_

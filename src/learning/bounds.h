// Weights that have grown past all bounds.
#ifndef VEK_LEARNING_BOUNDS_H_
#define VEK_LEARNING_BOUNDS_H_

#include "learning/training.h"

namespace vek {

// To be called behind the training. Warns, in one line, if weights are infinite
// or no numbers, with the number of their classes and the setting that is to
// blame: their scores tell nothing apart.
void warn_of_boundless_weights(const Training &training);

}  // namespace vek

#endif  // VEK_LEARNING_BOUNDS_H_

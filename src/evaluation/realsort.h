// Sorts many real numbers: each leaf has a score of every training document.
#ifndef VEK_EVALUATION_REALSORT_H_
#define VEK_EVALUATION_REALSORT_H_

#include <span>

#include "run/helpers.h"

namespace vek {

// Ascending; 0.0 and -0.0 in any order. None may be a NaN. Needs as much memory
// again.
void sort_reals(std::span<WeightType> values);

}  // namespace vek

#endif  // VEK_EVALUATION_REALSORT_H_

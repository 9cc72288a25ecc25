// Radix sort of real numbers, for the scores of each leaf: one for every
// training document. A sort by comparison would spend its time on branches that
// the processor cannot predict.
#ifndef VEK_EVALUATION_RADIXSORT_H_
#define VEK_EVALUATION_RADIXSORT_H_

#include <span>

#include "base/helpers.h"

namespace vek {

// Ascending; 0.0 and -0.0 in any order. None may be a NaN. Needs twice as much
// memory again.
void radix_sort(std::span<WeightType> values);

}  // namespace vek

#endif  // VEK_EVALUATION_RADIXSORT_H_

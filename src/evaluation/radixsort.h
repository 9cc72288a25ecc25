// Radix sort of real numbers: each leaf has a score of every training document,
// and comparing them costs a processor that cannot foresee the outcome.
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

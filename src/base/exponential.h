// The exponential function, the same on every processor.
//
// The system's own takes other ways with and without fused multiply-add, as its
// logarithm does (logarithm.h). This one is a sum of products in one order. It
// is off by less than two units in the last place, which no use of it minds.
#ifndef VEK_BASE_EXPONENTIAL_H_
#define VEK_BASE_EXPONENTIAL_H_

namespace vek {

// e to the power of x, for x from -700 to 700; x beyond these counts as the
// nearer of them, and what is no number as -700.
double exponential(double x);

// 1 / (1 + e^-x), the standard logistic function; from 0 to 1.
double logistic(double x);

}  // namespace vek

#endif  // VEK_BASE_EXPONENTIAL_H_

// The natural logarithm, the same on every processor.
//
// The system's own is off by less than one unit in the last place, and takes
// other ways with and without fused multiply-add: a last digit differs, a score
// falls on the other side of a threshold, and a model is another one. Here it
// is taken with 113 bits and rounded to 53, which gives the double nearest to
// the logarithm (but for the one in 2^58 or so whose bits behind the 53rd are
// those of an exact half).
#ifndef VEK_BASE_LOGARITHM_H_
#define VEK_BASE_LOGARITHM_H_

namespace vek {

// ln(x), as log() has it for 0, negative numbers and what is no number. Leaves
// errno alone. Results are remembered: frequencies and their quotients come
// again and again. Not for several threads at once.
double natural_logarithm(double x);

}  // namespace vek

#endif  // VEK_BASE_LOGARITHM_H_

#include "base/exponential.h"

#include <array>
#include <bit>
#include <cstdint>

namespace vek {

double exponential(double x) {
  constexpr double largest = 700.0;
  // Written so that what is no number takes the first way.
  if (!(x > -largest)) {
    x = -largest;
  } else if (x > largest) {
    x = largest;
  }
  // x = n * ln 2 + r, with |r| <= ln 2 / 2. Both parts of ln 2 together have
  // more digits than one number holds; the first ends in zeros, so that its
  // product with n is exact (Cody and Waite, Software manual for the elementary
  // functions, 1980).
  constexpr double log2_e = 0x1.71547652b82fep0;
  constexpr double ln2_high = 0x1.62e42fee00000p-1;
  constexpr double ln2_low = 0x1.a39ef35793c76p-33;
  const double scaled = x * log2_e;
  const auto n =
      static_cast<std::int64_t>(scaled < 0.0 ? scaled - 0.5 : scaled + 0.5);
  const double r = (x - double(n) * ln2_high) - double(n) * ln2_low;
  // The series of e^r, whose next term is below 2^-57.
  constexpr std::array inverse_factorials = {1.0 / 6227020800,
                                             1.0 / 479001600,
                                             1.0 / 39916800,
                                             1.0 / 3628800,
                                             1.0 / 362880,
                                             1.0 / 40320,
                                             1.0 / 5040,
                                             1.0 / 720,
                                             1.0 / 120,
                                             1.0 / 24,
                                             1.0 / 6,
                                             1.0 / 2,
                                             1.0,
                                             1.0};
  double sum = 0.0;
  for (const double inverse_factorial : inverse_factorials)
    sum = sum * r + inverse_factorial;
  // 2^n, by its bits.
  return sum * std::bit_cast<double>(std::uint64_t(n + 1023) << 52);
}

double logistic(double x) {
  return 1.0 / (1.0 + exponential(-x));
}

}  // namespace vek

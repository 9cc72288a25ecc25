#include "base/logarithm.h"

#include <array>
#include <bit>
#include <cfloat>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "base/helpers.h"

#if LDBL_MANT_DIG < 113
// Of the compiler's library for 128-bit numbers, whose header is not where
// every compiler looks.
__extension__ using Quad = __float128;
extern "C" Quad logq(Quad);
#endif

namespace vek {
namespace {

// With 64 bits the logarithm is quickly taken, and is off by far less than
// 2^-61 of itself. Nearly always all numbers within that bound round to one
// double; only where they do not is it taken with 113 bits.
double rounded_logarithm(double x) {
  const KeepErrno keep;
  const long double roughly = std::log(static_cast<long double>(x));
#if LDBL_MANT_DIG < 113
  const long double error = roughly * 0x1p-61L;
  const auto low = static_cast<double>(roughly - error);
  if (low == static_cast<double>(roughly + error))
    return low;
  return static_cast<double>(logq(x));
#else
  return static_cast<double>(roughly);
#endif
}

struct Known {
  double x = 1.0;
  double logarithm = 0.0;
};

}  // namespace

// A table with one place for each argument: what is there is right or is
// replaced, so a result never depends on what was asked before.
double natural_logarithm(double x) {
  constexpr unsigned place_bits = 15;
  static thread_local std::array<Known, std::size_t{1} << place_bits> table;
  const std::uint64_t mixed =
      std::bit_cast<std::uint64_t>(x) * 0x9E3779B97F4A7C15;
  Known &known = table[mixed >> (64 - place_bits)];
  // Never true for what is no number.
  if (known.x != x)
    known = {x, rounded_logarithm(x)};
  return known.logarithm;
}

}  // namespace vek

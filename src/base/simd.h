// SIMD: numbers that the processor takes at once, in packs of 32 bytes. A
// processor that has no registers of that size takes half a pack at a time.
//
// Each number of a pack is computed as it would be alone, and nothing is fused:
// the results are those of a plain loop.
#ifndef VEK_BASE_SIMD_H_
#define VEK_BASE_SIMD_H_

#include <cstddef>
#include <cstring>

namespace vek {

template <class Number>
using Pack [[gnu::vector_size(32)]] = Number;
template <class Number>
using HalfPack [[gnu::vector_size(16)]] = Number;

// How many numbers a pack has.
template <class Number>
constexpr std::size_t pack_width = sizeof(Pack<Number>) / sizeof(Number);

// Neither side need be aligned.
template <class AnyPack, class Number>
[[gnu::always_inline]] inline void load_pack(AnyPack &pack,
                                             const Number *from_P) {
  std::memcpy(&pack, from_P, sizeof pack);
}

template <class AnyPack, class Number>
[[gnu::always_inline]] inline void store_pack(Number *to_P,
                                              const AnyPack &pack) {
  std::memcpy(to_P, &pack, sizeof pack);
}

// Put before a function: it is compiled for both kinds of processor, and which
// of the two runs is decided when the program starts. Sanitizers are not ready
// that early.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && \
    !defined(__SANITIZE_ADDRESS__)
#define VEK_FOR_EACH_PROCESSOR [[gnu::target_clones("default", "avx2")]]
#else
#define VEK_FOR_EACH_PROCESSOR
#endif

}  // namespace vek

#endif  // VEK_BASE_SIMD_H_

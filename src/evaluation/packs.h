// Numbers that the processor takes at once.
//
// What is written with packs is compiled for packs of 16 bytes, which every
// processor of the architecture has, and for 32 bytes; which of them runs is
// chosen when the program starts. Each number of a pack is computed as it would
// be alone, and nothing is fused: the results are the same.
#ifndef VEK_EVALUATION_PACKS_H_
#define VEK_EVALUATION_PACKS_H_

#include <cstring>

namespace vek {

template <class Number, int nr_bytes>
using Pack [[gnu::vector_size(nr_bytes)]] = Number;

template <class Number, int nr_bytes>
constexpr int pack_width = nr_bytes / int{sizeof(Number)};

// Not a result, which the calling convention has no place for on every
// processor.
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

#ifdef __x86_64__
inline bool has_wide_packs() {
  __builtin_cpu_init();
  return __builtin_cpu_supports("avx2");
}
// Put before a function that uses packs of 32 bytes.
#define VEK_WIDE_PACKS [[gnu::target("avx2")]]
#else
inline bool has_wide_packs() {
  return false;
}
#define VEK_WIDE_PACKS
#endif

}  // namespace vek

#endif  // VEK_EVALUATION_PACKS_H_

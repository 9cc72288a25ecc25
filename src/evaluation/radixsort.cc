#include "evaluation/radixsort.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace vek {
namespace {

// Below this many numbers a sort by comparison is faster.
constexpr std::size_t least_for_radix = 512;

// Only the upper 33 bits are sorted by digits, the lowest digit first: sign,
// exponent and 21 bits of the fraction. Numbers that they leave equal are
// mostly equal altogether. With 11 bits the counts of a digit fit into the
// processor's first cache.
constexpr unsigned digit_bits = 11;
constexpr unsigned nr_low_bits = 64 - 3 * digit_bits;

constexpr std::uint64_t sign_bit = std::uint64_t{1} << 63;

// Numbers whose order as integers is that of the reals. IEEE 754 numbers of one
// sign are ordered as their bits are; the bits of negative ones run the other
// way, and below the positive ones.
std::uint64_t key_of(WeightType value) {
  const auto bits = std::bit_cast<std::uint64_t>(value);
  return (bits & sign_bit) != 0 ? ~bits : bits | sign_bit;
}
WeightType real_of(std::uint64_t key) {
  return std::bit_cast<WeightType>((key & sign_bit) != 0 ? key ^ sign_bit
                                                         : ~key);
}

// Sorts by the digit that begins at bit `low`, from one array to the other.
// Keys with the same digit keep their order, on which the sort by the next
// digit relies.
void move_by_digit(unsigned low, const std::vector<std::uint64_t> &from,
                   std::vector<std::uint64_t> &to) {
  constexpr std::size_t nr_values = std::size_t{1} << digit_bits;
  const auto digit = [=](std::uint64_t key) {
    return key >> low & (nr_values - 1);
  };
  // Counted one place further up, so that the sums below make places[d] the
  // place of the first key with digit d.
  std::array<std::size_t, nr_values + 1> places = {};
  for (const std::uint64_t key : from)
    ++places[digit(key) + 1];
  for (std::size_t i = 1; i < nr_values; ++i)
    places[i] += places[i - 1];
  for (const std::uint64_t key : from)
    to[places[digit(key)]++] = key;
}

}  // namespace

void radix_sort(std::span<WeightType> values) {
  if (values.size() < least_for_radix) {
    std::sort(values.begin(), values.end());
    return;
  }
  std::vector<std::uint64_t> keys(values.size());
  std::vector<std::uint64_t> other_keys(values.size());
  std::ranges::transform(values, keys.begin(), key_of);
  for (unsigned low = nr_low_bits; low < 64; low += digit_bits) {
    move_by_digit(low, keys, other_keys);
    keys.swap(other_keys);
  }
  // What is left is to sort the runs of equal upper bits, which are short, or
  // of equal scores and sorted already.
  for (auto begin = keys.begin(); begin != keys.end();) {
    auto end = begin + 1;
    while (end != keys.end() && *end >> nr_low_bits == *begin >> nr_low_bits)
      ++end;
    if (!std::is_sorted(begin, end))
      std::sort(begin, end);
    begin = end;
  }
  std::ranges::transform(keys, values.begin(), real_of);
}

}  // namespace vek

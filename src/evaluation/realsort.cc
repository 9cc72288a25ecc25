#include "evaluation/realsort.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace vek {
namespace {

// Below this many numbers comparing them is faster.
constexpr std::size_t least_for_radix = 512;

// Only the upper bits are sorted by digits. What they leave equal is mostly
// equal altogether.
constexpr unsigned digit_bits = 11;
constexpr unsigned nr_digits = 3;
constexpr unsigned nr_low_bits = 64 - nr_digits * digit_bits;
constexpr std::size_t nr_digit_values = std::size_t{1} << digit_bits;

constexpr std::uint64_t sign_bit = std::uint64_t{1} << 63;

// Numbers whose order as integers is that of the reals.
std::uint64_t key_of(WeightType value) {
  const auto bits = std::bit_cast<std::uint64_t>(value);
  return (bits & sign_bit) != 0 ? ~bits : bits | sign_bit;
}
WeightType real_of(std::uint64_t key) {
  return std::bit_cast<WeightType>((key & sign_bit) != 0 ? key ^ sign_bit
                                                         : ~key);
}

std::size_t digit_of(std::uint64_t key, unsigned digit) {
  return key >> (nr_low_bits + digit * digit_bits) & (nr_digit_values - 1);
}

// How often each value of each digit occurs.
using Counts =
    std::array<std::array<std::uint32_t, nr_digit_values>, nr_digits>;

// Sorts by one digit, the lowest first in turn, from one array to the other.
// False if all keys have the same there: then nothing is done.
bool move_by_digit(unsigned digit, Counts &counts,
                   const std::vector<std::uint64_t> &from,
                   std::vector<std::uint64_t> &to) {
  auto &places = counts[digit];
  if (places[digit_of(from.front(), digit)] == from.size())
    return false;
  std::uint32_t place = 0;
  for (std::uint32_t &count : places) {
    const std::uint32_t nr_keys = count;
    count = place;
    place += nr_keys;
  }
  for (const std::uint64_t key : from)
    to[places[digit_of(key, digit)]++] = key;
  return true;
}

// Sorts each run of keys with equal upper bits.
void sort_runs(std::vector<std::uint64_t> &keys) {
  for (auto begin = keys.begin(); begin != keys.end();) {
    const std::uint64_t upper = *begin >> nr_low_bits;
    auto end = begin + 1;
    bool is_sorted = true;
    for (; end != keys.end() && *end >> nr_low_bits == upper; ++end)
      is_sorted = is_sorted && *(end - 1) <= *end;
    if (!is_sorted)
      std::sort(begin, end);
    begin = end;
  }
}

}  // namespace

void sort_reals(std::span<WeightType> values) {
  if (values.size() < least_for_radix) {
    std::sort(values.begin(), values.end());
    return;
  }
  // Kept from call to call: a leaf has as many scores as the one before.
  static std::vector<std::uint64_t> keys;
  static std::vector<std::uint64_t> other_keys;
  keys.resize(values.size());
  other_keys.resize(values.size());
  static Counts counts;
  counts = {};
  for (std::size_t i = 0; i < values.size(); ++i) {
    keys[i] = key_of(values[i]);
#pragma GCC unroll 3
    for (unsigned digit = 0; digit < nr_digits; ++digit)
      ++counts[digit][digit_of(keys[i], digit)];
  }
  for (unsigned digit = 0; digit < nr_digits; ++digit) {
    if (move_by_digit(digit, counts, keys, other_keys))
      keys.swap(other_keys);
  }
  sort_runs(keys);
  std::ranges::transform(keys, values.begin(), real_of);
}

}  // namespace vek

#include "classes/termstats.h"

#include <algorithm>
#include <bit>
#include <boost/sort/spreadsort/integer_sort.hpp>
#include <utility>

namespace vek {
namespace {

constexpr std::size_t least_size = 64;

}  // namespace

void TermStatsTable::settle() {
  std::erase_if(slots_, [](const Slot &slot) { return slot.term == no_term; });
  slots_.shrink_to_fit();
  most_used_ = 0;
}

void TermStatsTable::sort() {
  boost::sort::spreadsort::integer_sort(
      slots_.begin(), slots_.end(),
      [](const Slot &slot, unsigned offset) { return slot.term >> offset; },
      [](const Slot &a, const Slot &b) { return a.term < b.term; });
}

// Leaves at least half of the slots free, or none is needed by two terms.
void TermStatsTable::grow() {
  const std::size_t size =
      std::max(least_size, std::bit_ceil(3 * (nr_used_ + 1)));
  const bool has_all = size >= nr_terms_;
  const std::vector<Slot> old =
      std::exchange(slots_, std::vector<Slot>(has_all ? nr_terms_ : size));
  factor_ = has_all ? 1 : 0x9E3779B1;
  shift_ = has_all ? 0 : 32 - static_cast<unsigned>(std::countr_zero(size));
  most_used_ = has_all ? nr_terms_ + 1 : size / 3 * 2;
  nr_used_ = 0;
  for (const Slot &slot : old) {
    if (slot.term != no_term)
      (*this)[slot.term] = slot.stats;
  }
}

}  // namespace vek

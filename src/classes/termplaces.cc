#include "classes/termplaces.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace vek {
namespace {

constexpr std::size_t least_size = 16;

// Slots for so many terms, at least half of them free.
std::size_t size_for(std::size_t nr_terms) {
  return std::max(least_size, std::bit_ceil(2 * nr_terms));
}

}  // namespace

// The term's slot, or the free one where it belongs.
std::size_t TermPlaces::slot_of(std::uint32_t term) const {
  std::size_t i = home(term);
  while (slots_[i].term != term && !slots_[i].is_free())
    i = behind(i);
  return i;
}

std::uint32_t TermPlaces::find_or_insert(std::uint32_t term,
                                         std::uint32_t place) {
  if (2 * (nr_terms_ + 1) > slots_.size())
    resize(size_for(2 * (nr_terms_ + 1)));
  Slot &slot = slots_[slot_of(term)];
  if (slot.is_free()) {
    slot = {term, place};
    ++nr_terms_;
  }
  return slot.place;
}

void TermPlaces::set(std::uint32_t term, std::uint32_t place) {
  slots_[slot_of(term)].place = place;
}

// Closes the gap, so that no search ends at it which has to go on.
void TermPlaces::erase(std::uint32_t term) {
  if (find(term) == nowhere)
    return;
  std::size_t gap = slot_of(term);
  for (std::size_t i = behind(gap); !slots_[i].is_free(); i = behind(i)) {
    const std::size_t mask = slots_.size() - 1;
    // A slot may move to the gap unless its home lies behind the gap.
    if (((i - home(slots_[i].term)) & mask) >= ((i - gap) & mask))
      slots_[std::exchange(gap, i)] = slots_[i];
  }
  slots_[gap] = {};
  --nr_terms_;
}

void TermPlaces::reserve(std::size_t nr_terms) {
  if (size_for(nr_terms) > slots_.size())
    resize(size_for(nr_terms));
}

void TermPlaces::resize(std::size_t size) {
  const std::vector<Slot> old = std::exchange(slots_, std::vector<Slot>(size));
  shift_ = 32 - static_cast<unsigned>(std::countr_zero(size));
  for (const Slot &slot : old) {
    if (!slot.is_free())
      slots_[slot_of(slot.term)] = slot;
  }
}

}  // namespace vek

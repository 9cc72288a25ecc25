// From term ids to places in an array: a hash table with linear probing.
//
// Terms are looked up for every word of every document, in the profile of a
// class and in the rows of a scorer. Ids are dense numbers, so a multiplication
// spreads them well enough, and most searches end at the first slot.
#ifndef VEK_CLASSES_TERMPLACES_H_
#define VEK_CLASSES_TERMPLACES_H_

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vek {

class TermPlaces {
 public:
  static constexpr std::uint32_t nowhere = 0xFFFFFFFF;

  // The term's place, or `nowhere`.
  std::uint32_t find(std::uint32_t term) const {
    if (slots_.empty())
      return nowhere;
    std::size_t i = home(term);
    while (slots_[i].term != term && !slots_[i].is_free())
      i = behind(i);
    return slots_[i].place;
  }

  // The term's place if it has one; otherwise it gets `place`, which is below
  // `nowhere`.
  std::uint32_t find_or_insert(std::uint32_t term, std::uint32_t place);

  // Moves a term that has a place.
  void set(std::uint32_t term, std::uint32_t place);

  void erase(std::uint32_t term);

  // Makes room for `nr_terms` terms in all.
  void reserve(std::size_t nr_terms);

 private:
  struct Slot {
    bool is_free() const { return place == nowhere; }

    std::uint32_t term = 0;
    std::uint32_t place = nowhere;
  };

  std::size_t home(std::uint32_t term) const {
    return (term * std::uint32_t{0x9E3779B1}) >> shift_;
  }
  std::size_t behind(std::size_t i) const {
    return (i + 1) & (slots_.size() - 1);
  }
  std::size_t slot_of(std::uint32_t term) const;
  void resize(std::size_t size);

  std::vector<Slot> slots_;  // none, or a power of two
  std::size_t nr_terms_ = 0;
  unsigned shift_ = 32;
};

}  // namespace vek

#endif  // VEK_CLASSES_TERMPLACES_H_

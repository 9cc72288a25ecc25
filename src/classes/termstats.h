// What the training documents of one class say about its terms, until term
// selection has judged them.
//
// The terms of all classes together are many times those that are selected, so
// these records are kept small and apart from the class profiles, which get the
// counts of the selected terms only.
#ifndef VEK_CLASSES_TERMSTATS_H_
#define VEK_CLASSES_TERMSTATS_H_

#include <boost/unordered/unordered_flat_map.hpp>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace vek {

// Over the class's training documents of this run. All wrap at 32 bits.
struct TermStats {
  // Sums of the term's relative frequency, in thousandths, and of its square.
  std::uint32_t sum = 0;
  std::uint32_t sum_of_squares = 0;
  // Sum of frequencies, and number of documents with the term.
  std::uint32_t tf = 0;
  std::uint32_t df = 0;
};

class TermStatsTable {
 public:
  struct Slot {
    std::uint32_t term;
    TermStats stats;
  };

  // The record of a term, all zero if it is new.
  TermStats &operator[](std::uint32_t term) {
    const auto [place, is_new] =
        places_.try_emplace(term, static_cast<std::uint32_t>(slots_.size()));
    if (is_new)
      slots_.push_back({term, {}});
    return slots_[place->second].stats;
  }

  // To be called when all documents have been counted: sorts the records by
  // term and gives back what finding them took.
  void settle();

  // By ascending term, once settled.
  std::vector<Slot>::const_iterator begin() const { return slots_.begin(); }
  std::vector<Slot>::const_iterator end() const { return slots_.end(); }
  std::size_t size() const { return slots_.size(); }
  bool empty() const { return slots_.empty(); }

 private:
  std::vector<Slot> slots_;
  boost::unordered_flat_map<std::uint32_t, std::uint32_t> places_;
};

}  // namespace vek

#endif  // VEK_CLASSES_TERMSTATS_H_

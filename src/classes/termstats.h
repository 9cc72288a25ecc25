// What the training documents of one class say about its terms, until term
// selection has judged them.
//
// The terms of all classes together are many times those that are selected, so
// these records are kept small and apart from the class profiles, which get the
// counts of the selected terms only.
#ifndef VEK_CLASSES_TERMSTATS_H_
#define VEK_CLASSES_TERMSTATS_H_

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace vek {

// Over the class's training documents of this run. All wrap at 32 bits.
struct TermStats {
  std::uint32_t term = 0;
  // Sums of the term's relative frequency, in thousandths, and of its square.
  std::uint32_t sum = 0;
  std::uint32_t sum_of_squares = 0;
  // Sum of frequencies, and number of documents with the term.
  std::uint32_t tf = 0;
  std::uint32_t df = 0;
};

// Each term once.
using TermStatsList = std::vector<TermStats>;

// Makes the list of one class after the other. Ids are dense, so an array that
// leads from each term to its record is smaller than a hash table that is half
// full. It is cleared by going over the list, not over the vocabulary.
class TermStatsCollector {
 public:
  // All terms that come will be less than `nr_terms`.
  explicit TermStatsCollector(std::size_t nr_terms)
      : places_(nr_terms, nowhere) {}

  // The record of a term, all zero if it is new; good until the next call.
  TermStats &operator[](std::uint32_t term) {
    std::uint32_t &place = places_[term];
    if (place == nowhere) {
      place = static_cast<std::uint32_t>(list_.size());
      list_.push_back({term});
    }
    return list_[place];
  }

  // Hands out the records, in the order in which they came, and starts an empty
  // list.
  TermStatsList take() {
    for (const TermStats &stats : list_)
      places_[stats.term] = nowhere;
    list_.shrink_to_fit();
    return std::exchange(list_, {});
  }

 private:
  static constexpr std::uint32_t nowhere = 0xFFFFFFFF;

  std::vector<std::uint32_t> places_;
  TermStatsList list_;
};

}  // namespace vek

#endif  // VEK_CLASSES_TERMSTATS_H_

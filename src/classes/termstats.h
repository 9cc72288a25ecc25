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
#include <limits>
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

// While documents are counted, an array of slots that are found by a hash of
// the term, with linear probing, or one slot for each term there is, if those
// are no more; once settled, the used slots alone.
class TermStatsTable {
 public:
  struct Slot {
    std::uint32_t term = no_term;
    TermStats stats;
  };

  // To be called before any term comes: all of them will be less than
  // `nr_terms`.
  void set_nr_terms(std::size_t nr_terms) { nr_terms_ = nr_terms; }

  // The record of a term, all zero if it is new; good until the next call. A
  // settled table is opened again. Not for the term 0xFFFFFFFF, which no table
  // of terms gives out.
  TermStats &operator[](std::uint32_t term) {
    if (nr_used_ >= most_used_)
      grow();
    std::size_t i = home(term);
    while (slots_[i].term != term) {
      if (slots_[i].term == no_term) {
        slots_[i].term = term;
        ++nr_used_;
        break;
      }
      i = (i + 1) & (slots_.size() - 1);
    }
    return slots_[i].stats;
  }

  // To be called when all documents have been counted: gives back what finding
  // the records took.
  void settle();

  // Gives up all records for which is_wanted(slot) is false, and sorts the
  // others by term. The table must be settled.
  template <class IsWanted>
  void keep_if(IsWanted is_wanted) {
    std::erase_if(slots_, [&](const Slot &slot) { return !is_wanted(slot); });
    nr_used_ = slots_.size();
    sort();
  }

  // In no certain order, once settled.
  std::vector<Slot>::const_iterator begin() const { return slots_.begin(); }
  std::vector<Slot>::const_iterator end() const { return slots_.end(); }
  std::size_t size() const { return nr_used_; }
  bool empty() const { return nr_used_ == 0; }

 private:
  static constexpr std::uint32_t no_term = 0xFFFFFFFF;

  // The upper bits of a product, so that a walk over the old slots fills the
  // new ones from front to back.
  std::size_t home(std::uint32_t term) const {
    return (term * factor_) >> shift_;
  }
  void grow();
  void sort();

  std::size_t nr_terms_ = std::numeric_limits<std::size_t>::max();
  // A power of two or nr_terms_ of them, until they are settled.
  std::vector<Slot> slots_;
  std::size_t nr_used_ = 0;
  std::size_t most_used_ = 0;  // more make the table grow; 0 when settled
  // With a slot for each term it is 1, and nothing is shifted.
  std::uint32_t factor_ = 1;
  unsigned shift_ = 0;
};

}  // namespace vek

#endif  // VEK_CLASSES_TERMSTATS_H_

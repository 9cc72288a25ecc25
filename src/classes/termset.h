// A set of term ids. Ids are dense, so one bit for each is both the smallest
// and the fastest set.
#ifndef VEK_CLASSES_TERMSET_H_
#define VEK_CLASSES_TERMSET_H_

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vek {

class TermSet {
 public:
  void insert(std::uint32_t term) {
    const std::size_t word = term / 64;
    if (word >= bits_.size())
      bits_.resize(word + 1);
    const std::uint64_t bit = std::uint64_t{1} << (term % 64);
    if ((bits_[word] & bit) == 0)
      ++nr_terms_;
    bits_[word] |= bit;
  }
  bool contains(std::uint32_t term) const {
    const std::size_t word = term / 64;
    return word < bits_.size() && (bits_[word] >> (term % 64) & 1) != 0;
  }
  std::size_t size() const { return nr_terms_; }
  bool empty() const { return nr_terms_ == 0; }

 private:
  std::vector<std::uint64_t> bits_;
  std::size_t nr_terms_ = 0;
};

}  // namespace vek

#endif  // VEK_CLASSES_TERMSET_H_

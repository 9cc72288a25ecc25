#include "evaluation/termindex.h"

namespace vek {
namespace {

// A row is made full if at least one class in so many knows its term: adding
// up a place of a full row costs a fraction of one that has to be led to its
// class, and memory may grow by this factor at most.
constexpr std::size_t fullness = 4;

// Twice as many places at once on a processor that can, chosen when the program
// starts. Each sum still gets the same product added to it, and both are
// rounded: the result is the same.
#if defined(__x86_64__) && defined(__OPTIMIZE__) && !defined(__clang__) && \
    !defined(__SANITIZE_ADDRESS__)
#define VEK_WIDE_CLONES [[gnu::target_clones("avx2", "default")]]
#else
#define VEK_WIDE_CLONES
#endif

VEK_WIDE_CLONES
void add_full_row(const WeightType *__restrict value_P, WeightType weight,
                  std::size_t length, WeightType *__restrict sum_P) {
  for (std::size_t i = 0; i < length; ++i)
    sum_P[i] += value_P[i] * weight;
}

}  // namespace

TermIndex::TermIndex(const std::vector<ClassData *> &classes)
    : nr_classes_(classes.size()) {
  std::vector<std::uint32_t> lengths;
  for (ClassData *class_data_P : classes) {
    for (const ClassProfile::Slot &slot : class_data_P->profile) {
      const auto [place, is_new] = rows_by_term_.try_emplace(
          slot.term, static_cast<std::uint32_t>(lengths.size()));
      if (is_new)
        lengths.push_back(0);
      ++lengths[place->second];
    }
  }
  lay_out(lengths);
  std::vector<std::uint32_t> nr_seen(rows_.size());
  for (std::size_t number = 0; number < classes.size(); ++number) {
    for (const ClassProfile::Slot &slot : classes[number]->profile) {
      const std::uint32_t row = rows_by_term_.find(slot.term)->second;
      if (rows_[row].is_full)
        continue;
      class_numbers_[rows_[row].numbers + nr_seen[row]++] =
          static_cast<std::uint32_t>(number);
    }
  }
}

void TermIndex::lay_out(const std::vector<std::uint32_t> &lengths) {
  rows_.reserve(lengths.size());
  std::size_t nr_numbers = 0;
  for (const std::uint32_t length : lengths) {
    const bool is_full = length * fullness >= nr_classes_;
    const std::size_t nr_places = is_full ? nr_classes_ : length;
    rows_.push_back({nr_places_, nr_numbers,
                     static_cast<std::uint32_t>(nr_places), is_full});
    nr_places_ += nr_places;
    if (!is_full)
      nr_numbers += length;
  }
  class_numbers_.resize(nr_numbers);
}

void TermIndex::add_row(std::uint32_t row,
                        const std::vector<WeightType> &values,
                        WeightType weight,
                        std::vector<WeightType> &sums) const {
  const Row &r = rows_[row];
  const WeightType *__restrict value_P = values.data() + r.place;
  WeightType *__restrict sum_P = sums.data();
  if (r.is_full) {
    add_full_row(value_P, weight, r.length, sum_P);
    return;
  }
  const std::uint32_t *__restrict number_P = class_numbers_.data() + r.numbers;
  for (std::size_t i = 0; i < r.length; ++i) {
    sum_P[number_P[i]] += value_P[i] * weight;
  }
}

}  // namespace vek

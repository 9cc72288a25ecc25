#include "evaluation/invertedindex.h"

#include <algorithm>
#include <array>

#include "base/simd.h"

namespace vek {
namespace {

// A row is made full if at least one class in so many knows its term. A place
// of a full row costs a fraction of one whose class has to be looked up, and
// memory grows by this factor at most.
constexpr std::size_t fullness = 12;

// A full row, and what its values are multiplied with.
template <class Number>
struct FullRow {
  const Number *value_P;
  Number weight;
};
template <class Number>
using FullRows = std::span<const FullRow<Number>>;

// Full rows that follow each other in a document are added up together, at most
// this many: each sum is then loaded and stored once for all of them.
constexpr std::size_t most_rows = 64;

// Places of a full row, and sums, come in multiples of this: what a pack of
// doubles has, and half a pack of floats.
constexpr std::size_t least_places = pack_width<double>;

// So many packs of sums stay in registers while all rows are gone through: half
// of the 16 that a processor with AVX2 has, which leaves the others to the
// values.
constexpr std::size_t block_size = 8;

// Adds `nr_packs` packs of each row, `start` places from its first.
template <class AnyPack, std::size_t nr_packs, class Number>
[[gnu::always_inline]] inline void add_block(FullRows<Number> rows,
                                             std::size_t start, Number *sum_P) {
  constexpr std::size_t width = sizeof(AnyPack) / sizeof(Number);
  // A fixed number of packs and unrolled loops, or the compiler would keep the
  // sums in memory.
  AnyPack sums[nr_packs];
#pragma GCC unroll 8
  for (std::size_t i = 0; i < nr_packs; ++i)
    load_pack(sums[i], sum_P + start + i * width);
  for (const FullRow<Number> &row : rows) {
    const Number *value_P = row.value_P + start;
#pragma GCC unroll 8
    for (std::size_t i = 0; i < nr_packs; ++i) {
      AnyPack values;
      load_pack(values, value_P + i * width);
      // One product and one addition for each place, in the order of the rows,
      // and no fused operation: what a plain loop over the terms gives, to the
      // last bit.
      sums[i] += values * row.weight;
    }
  }
#pragma GCC unroll 8
  for (std::size_t i = 0; i < nr_packs; ++i)
    store_pack(sum_P + start + i * width, sums[i]);
}

// The same for a number of packs from 0 to `most_packs`.
template <std::size_t most_packs, class Number>
[[gnu::always_inline]] inline void add_last_block(FullRows<Number> rows,
                                                  std::size_t start,
                                                  Number *sum_P,
                                                  std::size_t nr_packs) {
  // By recursion at compile time, so that add_block() has its constant.
  if (nr_packs == most_packs) {
    add_block<Pack<Number>, most_packs>(rows, start, sum_P);
  } else if constexpr (most_packs > 1) {
    add_last_block<most_packs - 1>(rows, start, sum_P, nr_packs);
  }
}

// Adds the rows to `nr_sums` sums. Each sum gets its products in the order of
// the rows.
template <class Number>
[[gnu::always_inline]] inline void add_in_blocks(FullRows<Number> rows,
                                                 std::size_t nr_sums,
                                                 Number *sum_P) {
  constexpr std::size_t width = pack_width<Number>;
  std::size_t start = 0;
  for (; start + block_size * width <= nr_sums; start += block_size * width)
    add_block<Pack<Number>, block_size>(rows, start, sum_P);
  const std::size_t nr_packs = (nr_sums - start) / width;
  add_last_block<block_size - 1>(rows, start, sum_P, nr_packs);
  start += nr_packs * width;
  if (start < nr_sums)
    add_block<HalfPack<Number>, 1>(rows, start, sum_P);
}

// Compiled for several processors, of which the best that is there is chosen at
// the start. The results are equal: wider packs hold more sums, but no sum is
// split.
VEK_FOR_EACH_PROCESSOR void add_full_rows(FullRows<float> rows,
                                          std::size_t nr_sums, float *sum_P) {
  add_in_blocks(rows, nr_sums, sum_P);
}
VEK_FOR_EACH_PROCESSOR void add_full_rows(FullRows<double> rows,
                                          std::size_t nr_sums, double *sum_P) {
  add_in_blocks(rows, nr_sums, sum_P);
}

}  // namespace

InvertedIndex::InvertedIndex(const std::vector<ClassData *> &classes)
    : nr_classes_(classes.size()),
      nr_sums_((classes.size() + least_places - 1) / least_places *
               least_places) {
  // First how many classes know each term, which decides whether its row is
  // full; then where the rows lie; then what is in the sparse ones.
  std::vector<TermCount> terms;
  count_terms(classes, terms);
  lay_out(terms);
  number_classes(classes);
}

void InvertedIndex::count_terms(const std::vector<ClassData *> &classes,
                                std::vector<TermCount> &terms) {
  for (const ClassData *class_data_P : classes)
    rows_.expect(class_data_P->profile.size(),
                 class_data_P->profile.largest_term());
  for (const ClassData *class_data_P : classes) {
    for (const ClassProfile::Slot &slot : class_data_P->profile) {
      // Until the layout is known, `rows_` leads to the place in `terms`.
      const std::uint32_t place = rows_.find_or_insert(
          slot.term, static_cast<std::uint32_t>(terms.size()));
      if (place == terms.size())
        terms.push_back({slot.term, 0});
      ++terms[place].length;
    }
  }
}

// Gives each term its row.
void InvertedIndex::lay_out(const std::vector<TermCount> &terms) {
  const auto fills_row = [&](const TermCount &term) {
    return term.length * fullness >= nr_classes_;
  };
  nr_full_rows_ =
      static_cast<std::uint32_t>(std::ranges::count_if(terms, fills_row));
  // All full rows lie in front, so that a row's number alone tells its kind
  // and, for a full one, its place.
  nr_places_ = nr_full_rows_ * nr_sums_;
  std::size_t nr_numbers = 0;
  std::uint32_t next_full = 0;
  std::uint32_t next_sparse = nr_full_rows_;
  for (const TermCount &term : terms) {
    if (fills_row(term)) {
      rows_.set(term.term, next_full++);
      continue;
    }
    rows_.set(term.term, next_sparse++);
    sparse_rows_.push_back({nr_places_, nr_numbers, term.length});
    nr_places_ += term.length;
    nr_numbers += term.length;
  }
  class_numbers_.resize(nr_numbers);
}

// Notes which class each place of a sparse row is for.
void InvertedIndex::number_classes(const std::vector<ClassData *> &classes) {
  // How many places of each row are taken. Classes come by ascending number, so
  // the numbers in a row ascend too.
  std::vector<std::uint32_t> nr_seen(sparse_rows_.size());
  for (std::size_t number = 0; number < classes.size(); ++number) {
    for (const ClassProfile::Slot &slot : classes[number]->profile) {
      const std::uint32_t row = row_of(slot.term);
      if (is_full(row))
        continue;
      class_numbers_[sparse_row(row).numbers + nr_seen[row - nr_full_rows_]++] =
          static_cast<std::uint32_t>(number);
    }
  }
}

void InvertedIndex::find_rows(const DocProfile &doc,
                              std::vector<RowWeight<WeightType>> &rows) const {
  rows.clear();
  for (const DocProfileEntry &entry : doc) {
    const std::uint32_t row = row_of(entry.term);
    if (row != no_row)
      rows.push_back({row, entry.weight});
  }
}

template <class Number>
void InvertedIndex::add_rows(std::span<const RowWeight<Number>> terms,
                             const std::vector<Number> &values,
                             std::vector<Number> &sums) const {
  // Not initialised, for speed: only what was written is read.
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init)
  std::array<FullRow<Number>, most_rows> full_rows;
  // Full rows are gathered and added up together. A sparse row between them
  // comes first, so that each sum keeps the order of the terms.
  std::size_t nr_full = 0;
  const auto add_full = [&] {
    add_full_rows(FullRows<Number>(full_rows.data(), nr_full), nr_sums_,
                  sums.data());
    nr_full = 0;
  };
  for (const RowWeight<Number> &term : terms) {
    if (is_full(term.row)) {
      if (nr_full == most_rows)
        add_full();
      full_rows[nr_full++] = {values.data() + term.row * nr_sums_, term.weight};
      continue;
    }
    if (nr_full > 0)
      add_full();
    add_sparse_row(sparse_row(term.row), term.weight, values, sums);
  }
  add_full();
}

template void InvertedIndex::add_rows(std::span<const RowWeight<float>>,
                                      const std::vector<float> &,
                                      std::vector<float> &) const;
template void InvertedIndex::add_rows(std::span<const RowWeight<WeightType>>,
                                      const std::vector<WeightType> &,
                                      std::vector<WeightType> &) const;

template <class Number>
void InvertedIndex::add_sparse_row(const SparseRow &row, Number weight,
                                   const std::vector<Number> &values,
                                   std::vector<Number> &sums) const {
  // The three arrays never overlap, and without being told the compiler would
  // load the pointers again behind each store.
  const Number *__restrict value_P = values.data() + row.place;
  const std::uint32_t *__restrict number_P =
      class_numbers_.data() + row.numbers;
  Number *__restrict sum_P = sums.data();
  for (std::size_t i = 0; i < row.length; ++i) {
    sum_P[number_P[i]] += value_P[i] * weight;
  }
}

}  // namespace vek

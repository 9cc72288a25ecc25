#include "evaluation/termindex.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace vek {
namespace {

// A row is made full if at least one class in so many knows its term: adding
// up a place of a full row costs a fraction of one that has to be led to its
// class, and memory may grow by this factor at most.
constexpr std::size_t fullness = 6;

// A full row, and what its values are multiplied with.
struct FullRow {
  const WeightType *value_P;
  WeightType weight;
};
using FullRows = std::span<const FullRow>;

// Full rows that follow each other in a document are added up together, at most
// this many.
constexpr std::size_t most_rows = 64;

// Places of a full row, and sums, come in multiples of this: the widest pack.
constexpr std::size_t least_places = 4;

// So many packs of sums stay in registers while all rows are gone through.
constexpr int block_size = 8;

// Numbers that the processor takes at once.
using Pack2 [[gnu::vector_size(2 * sizeof(WeightType))]] = WeightType;
using Pack4 [[gnu::vector_size(4 * sizeof(WeightType))]] = WeightType;

// Adds `nr_packs` packs of each row, `start` places from its first.
template <class Pack, int nr_packs>
[[gnu::always_inline]] inline void add_block(FullRows rows, std::size_t start,
                                             WeightType *sum_P) {
  constexpr int width = sizeof(Pack) / sizeof(WeightType);
  Pack sums[nr_packs];
#pragma GCC unroll 8
  for (int i = 0; i < nr_packs; ++i)
    std::memcpy(&sums[i], sum_P + start + i * width, sizeof(Pack));
  for (const FullRow &row : rows) {
    const WeightType *value_P = row.value_P + start;
#pragma GCC unroll 8
    for (int i = 0; i < nr_packs; ++i) {
      Pack values;
      std::memcpy(&values, value_P + i * width, sizeof values);
      sums[i] += values * row.weight;
    }
  }
#pragma GCC unroll 8
  for (int i = 0; i < nr_packs; ++i)
    std::memcpy(sum_P + start + i * width, &sums[i], sizeof(Pack));
}

// The same for a number of packs from 0 to `most_packs`.
template <class Pack, int most_packs>
[[gnu::always_inline]] inline void add_last_block(FullRows rows,
                                                  std::size_t start,
                                                  WeightType *sum_P,
                                                  std::size_t nr_packs) {
  if (nr_packs == most_packs) {
    add_block<Pack, most_packs>(rows, start, sum_P);
  } else if constexpr (most_packs > 1) {
    add_last_block<Pack, most_packs - 1>(rows, start, sum_P, nr_packs);
  }
}

template <class Pack>
[[gnu::always_inline]] inline void add_in_packs(FullRows rows,
                                                std::size_t nr_sums,
                                                WeightType *sum_P) {
  constexpr std::size_t width = sizeof(Pack) / sizeof(WeightType);
  constexpr std::size_t step = width * block_size;
  std::size_t start = 0;
  for (; start + step <= nr_sums; start += step)
    add_block<Pack, block_size>(rows, start, sum_P);
  add_last_block<Pack, block_size - 1>(rows, start, sum_P,
                                       (nr_sums - start) / width);
}

void add_by_two(FullRows rows, std::size_t nr_sums, WeightType *sum_P) {
  add_in_packs<Pack2>(rows, nr_sums, sum_P);
}

// More places at once on a processor that can, chosen when the program starts.
// Each sum still gets the same products added to it in the same order, and all
// are rounded: the result is the same.
#ifdef __x86_64__
[[gnu::target("avx2")]] void add_by_four(FullRows rows, std::size_t nr_sums,
                                         WeightType *sum_P) {
  add_in_packs<Pack4>(rows, nr_sums, sum_P);
}

auto *choose_adder() {
  __builtin_cpu_init();
  return __builtin_cpu_supports("avx2") ? add_by_four : add_by_two;
}
#else
auto *choose_adder() {
  return add_by_two;
}
#endif

// Adds the rows to `nr_sums` sums.
auto *const add_full_rows = choose_adder();

}  // namespace

TermIndex::TermIndex(const std::vector<ClassData *> &classes)
    : nr_classes_(classes.size()),
      nr_sums_((classes.size() + least_places - 1) / least_places *
               least_places) {
  std::vector<TermCount> terms;
  count_terms(classes, terms);
  lay_out(terms);
  number_classes(classes);
}

void TermIndex::count_terms(const std::vector<ClassData *> &classes,
                            std::vector<TermCount> &terms) {
  for (const ClassData *class_data_P : classes) {
    for (const ClassProfile::Slot &slot : class_data_P->profile) {
      const std::uint32_t place = rows_by_term_.find_or_insert(
          slot.term, static_cast<std::uint32_t>(terms.size()));
      if (place == terms.size())
        terms.push_back({slot.term, 0});
      ++terms[place].length;
    }
  }
}

// Gives each term its row.
void TermIndex::lay_out(const std::vector<TermCount> &terms) {
  const auto fills_row = [&](const TermCount &term) {
    return term.length * fullness >= nr_classes_;
  };
  nr_full_rows_ =
      static_cast<std::uint32_t>(std::ranges::count_if(terms, fills_row));
  nr_places_ = nr_full_rows_ * nr_sums_;
  std::size_t nr_numbers = 0;
  std::uint32_t next_full = 0;
  std::uint32_t next_sparse = nr_full_rows_;
  for (const TermCount &term : terms) {
    if (fills_row(term)) {
      rows_by_term_.set(term.term, next_full++);
      continue;
    }
    rows_by_term_.set(term.term, next_sparse++);
    sparse_rows_.push_back({nr_places_, nr_numbers, term.length});
    nr_places_ += term.length;
    nr_numbers += term.length;
  }
  class_numbers_.resize(nr_numbers);
}

// Notes which class each place of a sparse row is for.
void TermIndex::number_classes(const std::vector<ClassData *> &classes) {
  std::vector<std::uint32_t> nr_seen(sparse_rows_.size());
  for (std::size_t number = 0; number < classes.size(); ++number) {
    for (const ClassProfile::Slot &slot : classes[number]->profile) {
      const std::uint32_t row = rows_by_term_.find(slot.term);
      if (is_full(row))
        continue;
      class_numbers_[sparse_row(row).numbers + nr_seen[row - nr_full_rows_]++] =
          static_cast<std::uint32_t>(number);
    }
  }
}

void TermIndex::add_rows(std::span<const RowWeight> terms,
                         const std::vector<WeightType> &values,
                         std::vector<WeightType> &sums) const {
  std::array<FullRow, most_rows> full_rows = {};
  std::size_t nr_full = 0;
  const auto add_full = [&] {
    add_full_rows({full_rows.data(), nr_full}, nr_sums_, sums.data());
    nr_full = 0;
  };
  for (const RowWeight &term : terms) {
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

void TermIndex::add_sparse_row(const SparseRow &row, WeightType weight,
                               const std::vector<WeightType> &values,
                               std::vector<WeightType> &sums) const {
  const WeightType *__restrict value_P = values.data() + row.place;
  const std::uint32_t *__restrict number_P =
      class_numbers_.data() + row.numbers;
  WeightType *__restrict sum_P = sums.data();
  for (std::size_t i = 0; i < row.length; ++i) {
    sum_P[number_P[i]] += value_P[i] * weight;
  }
}

}  // namespace vek

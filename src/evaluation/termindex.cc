#include "evaluation/termindex.h"

#include <algorithm>
#include <array>

#include "evaluation/packs.h"

namespace vek {
namespace {

// A row is made full if at least one class in so many knows its term: adding
// up a place of a full row costs a fraction of one that has to be led to its
// class, and memory may grow by this factor at most.
constexpr std::size_t fullness = 12;

// Rows are found by the term's number itself if at least one number in so many
// is that of a term.
constexpr std::size_t most_spread = 8;

// A full row, and what its values are multiplied with.
template <class Number>
struct FullRow {
  const Number *value_P;
  Number weight;
};
template <class Number>
using FullRows = std::span<const FullRow<Number>>;

// Full rows that follow each other in a document are added up together, at most
// this many.
constexpr std::size_t most_rows = 64;

// Places of a full row, and sums, come in multiples of this: what the widest
// pack of doubles has, and half the widest of floats.
constexpr std::size_t least_places = 4;

// So many packs of sums stay in registers while all rows are gone through.
constexpr int block_size = 8;

// Adds `nr_packs` packs of each row, `start` places from its first.
template <class Number, int nr_bytes, int nr_packs>
[[gnu::always_inline]] inline void add_block(FullRows<Number> rows,
                                             std::size_t start, Number *sum_P) {
  constexpr int width = pack_width<Number, nr_bytes>;
  Pack<Number, nr_bytes> sums[nr_packs];
#pragma GCC unroll 8
  for (int i = 0; i < nr_packs; ++i)
    load_pack(sums[i], sum_P + start + i * width);
  for (const FullRow<Number> &row : rows) {
    const Number *value_P = row.value_P + start;
#pragma GCC unroll 8
    for (int i = 0; i < nr_packs; ++i) {
      Pack<Number, nr_bytes> values;
      load_pack(values, value_P + i * width);
      sums[i] += values * row.weight;
    }
  }
#pragma GCC unroll 8
  for (int i = 0; i < nr_packs; ++i)
    store_pack(sum_P + start + i * width, sums[i]);
}

// The same for a number of packs from 0 to `most_packs`.
template <class Number, int nr_bytes, int most_packs>
[[gnu::always_inline]] inline void add_last_block(FullRows<Number> rows,
                                                  std::size_t start,
                                                  Number *sum_P,
                                                  std::size_t nr_packs) {
  if (nr_packs == most_packs) {
    add_block<Number, nr_bytes, most_packs>(rows, start, sum_P);
  } else if constexpr (most_packs > 1) {
    add_last_block<Number, nr_bytes, most_packs - 1>(rows, start, sum_P,
                                                     nr_packs);
  }
}

template <class Number, int nr_bytes>
[[gnu::always_inline]] inline void add_in_packs(FullRows<Number> rows,
                                                std::size_t nr_sums,
                                                Number *sum_P) {
  constexpr std::size_t width = pack_width<Number, nr_bytes>;
  constexpr std::size_t step = width * block_size;
  std::size_t start = 0;
  for (; start + step <= nr_sums; start += step)
    add_block<Number, nr_bytes, block_size>(rows, start, sum_P);
  const std::size_t nr_packs = (nr_sums - start) / width;
  add_last_block<Number, nr_bytes, block_size - 1>(rows, start, sum_P,
                                                   nr_packs);
  start += nr_packs * width;
  if constexpr (width > least_places) {
    if (start < nr_sums)
      add_block<Number, nr_bytes / 2, 1>(rows, start, sum_P);
  }
}

template <class Number>
void add_in_16_bytes(FullRows<Number> rows, std::size_t nr_sums,
                     Number *sum_P) {
  add_in_packs<Number, 16>(rows, nr_sums, sum_P);
}

template <class Number>
VEK_WIDE_PACKS void add_in_32_bytes(FullRows<Number> rows, std::size_t nr_sums,
                                    Number *sum_P) {
  add_in_packs<Number, 32>(rows, nr_sums, sum_P);
}

// Adds the rows to `nr_sums` sums. Each sum gets its products in the order of
// the rows.
template <class Number>
auto *const add_full_rows = has_wide_packs() ? add_in_32_bytes<Number>
                                             : add_in_16_bytes<Number>;

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
  const auto last = std::ranges::max_element(terms, {}, &TermCount::term);
  if (last == terms.end() || last->term / most_spread > terms.size())
    return;
  near_rows_.assign(std::size_t{last->term} + 1, no_row);
  for (const TermCount &term : terms)
    near_rows_[term.term] = rows_by_term_.find(term.term);
  rows_by_term_ = {};
}

// Notes which class each place of a sparse row is for.
void TermIndex::number_classes(const std::vector<ClassData *> &classes) {
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

void TermIndex::find_rows(const DocProfile &doc,
                          std::vector<RowWeight<WeightType>> &rows) const {
  rows.clear();
  for (const DocProfileEntry &entry : doc) {
    const std::uint32_t row = row_of(entry.term);
    if (row != no_row)
      rows.push_back({row, entry.weight});
  }
}

template <class Number>
void TermIndex::add_rows(std::span<const RowWeight<Number>> terms,
                         const std::vector<Number> &values,
                         std::vector<Number> &sums) const {
  // No more of it is read than was written.
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init)
  std::array<FullRow<Number>, most_rows> full_rows;
  std::size_t nr_full = 0;
  const auto add_full = [&] {
    add_full_rows<Number>({full_rows.data(), nr_full}, nr_sums_, sums.data());
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

template void TermIndex::add_rows(std::span<const RowWeight<float>>,
                                  const std::vector<float> &,
                                  std::vector<float> &) const;
template void TermIndex::add_rows(std::span<const RowWeight<WeightType>>,
                                  const std::vector<WeightType> &,
                                  std::vector<WeightType> &) const;

template <class Number>
void TermIndex::add_sparse_row(const SparseRow &row, Number weight,
                               const std::vector<Number> &values,
                               std::vector<Number> &sums) const {
  const Number *__restrict value_P = values.data() + row.place;
  const std::uint32_t *__restrict number_P =
      class_numbers_.data() + row.numbers;
  Number *__restrict sum_P = sums.data();
  for (std::size_t i = 0; i < row.length; ++i) {
    sum_P[number_P[i]] += value_P[i] * weight;
  }
}

}  // namespace vek

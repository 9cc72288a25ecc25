// An inverted index: the classes that know each term, with room for a number
// for each of them.
//
// One row a term. A class's number is its position in the list from which the
// index was made. Numbers that belong to a term and a class stand in arrays of
// the index's users, at the entry's place, so that those of one term are
// neighbours. A row in which many classes have a number gets a place for every
// class, in order: adding up such a full row needs no class numbers, and the
// processor takes several places at once. All other rows are sparse.
#ifndef VEK_EVALUATION_INVERTEDINDEX_H_
#define VEK_EVALUATION_INVERTEDINDEX_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "base/helpers.h"
#include "classes/classtab.h"
#include "classes/termmap.h"
#include "intake/docprof.h"

namespace vek {

// A term of a document: its row, and what the row's values are multiplied with.
template <class Number>
struct RowWeight {
  std::uint32_t row;
  Number weight;
};

class InvertedIndex {
 public:
  static constexpr std::uint32_t no_row = TermMap::nowhere;

  explicit InvertedIndex(const std::vector<ClassData *> &classes);

  std::uint32_t row_of(std::uint32_t term) const { return rows_.find(term); }

  // Sets `rows` to those of the document's terms, in its order. A term that no
  // class knows is left out.
  void find_rows(const DocProfile &doc,
                 std::vector<RowWeight<WeightType>> &rows) const;

  std::size_t nr_classes() const { return nr_classes_; }
  // How many sums add_rows() needs: one for each class, and some padding up to
  // a multiple of what the processor adds at once.
  std::size_t nr_sums() const { return nr_sums_; }
  // Places of classes that do not know the term are among them; what stands
  // there has to be 0.
  std::size_t nr_places() const { return nr_places_; }

  // Full rows that follow each other are added up fastest.
  bool is_full(std::uint32_t row) const { return row < nr_full_rows_; }

  // The place in a row for a class that knows its term.
  std::size_t place_of(std::uint32_t row, std::uint32_t number) const {
    if (is_full(row))
      return row * nr_sums_ + number;
    const SparseRow &r = sparse_row(row);
    const std::uint32_t *const first_P = class_numbers_.data() + r.numbers;
    return r.place +
           std::size_t(std::find(first_P, first_P + r.length, number) -
                       first_P);
  }

  // Calls visit(place, class number) for the places of a row.
  template <class Visit>
  void for_each_in_row(std::uint32_t row, Visit visit) const {
    if (is_full(row)) {
      for (std::uint32_t number = 0; number < nr_classes_; ++number)
        visit(row * nr_sums_ + number, number);
      return;
    }
    const SparseRow &r = sparse_row(row);
    for (std::size_t i = 0; i < r.length; ++i)
      visit(r.place + i, class_numbers_[r.numbers + i]);
  }

  // Calls visit(place, class number, entry) for every entry of every class.
  template <class Visit>
  void for_each(const std::vector<ClassData *> &classes, Visit visit) const {
    std::vector<std::uint32_t> nr_seen(sparse_rows_.size());
    for (std::size_t number = 0; number < classes.size(); ++number) {
      for (ClassProfile::Slot &slot : classes[number]->profile) {
        const std::uint32_t row = row_of(slot.term);
        visit(is_full(row)
                  ? row * nr_sums_ + number
                  : sparse_row(row).place + nr_seen[row - nr_full_rows_]++,
              static_cast<std::uint32_t>(number), slot.entry);
      }
    }
  }

  // Adds, for one term after the other, values[place] * weight to the sum of
  // each class of the term's row. A full row adds 0 to those that do not know
  // the term, which changes no sum: none is ever -0.0, since none starts there.
  // Number is WeightType or float.
  template <class Number>
  void add_rows(std::span<const RowWeight<Number>> terms,
                const std::vector<Number> &values,
                std::vector<Number> &sums) const;

 private:
  // A term, and how many classes know it.
  struct TermCount {
    std::uint32_t term;
    std::uint32_t length;
  };
  struct SparseRow {
    std::size_t place;    // of its first class
    std::size_t numbers;  // where its class numbers begin
    std::uint32_t length;
  };

  const SparseRow &sparse_row(std::uint32_t row) const {
    return sparse_rows_[row - nr_full_rows_];
  }
  void count_terms(const std::vector<ClassData *> &classes,
                   std::vector<TermCount> &terms);
  void lay_out(const std::vector<TermCount> &terms);
  void number_classes(const std::vector<ClassData *> &classes);
  template <class Number>
  void add_sparse_row(const SparseRow &row, Number weight,
                      const std::vector<Number> &values,
                      std::vector<Number> &sums) const;

  std::size_t nr_classes_;
  std::size_t nr_sums_;
  std::size_t nr_places_ = 0;
  TermMap rows_;  // by term
  // The full rows come first, of nr_sums_ places each.
  std::uint32_t nr_full_rows_ = 0;
  std::vector<SparseRow> sparse_rows_;
  std::vector<std::uint32_t> class_numbers_;
};

}  // namespace vek

#endif  // VEK_EVALUATION_INVERTEDINDEX_H_

// Scores one document against many classes at once.
//
// Looking up every term of a document in every class's profile is what a run
// would spend its time on. Here the weights of all classes are laid out term
// by term, so that a term is looked up once and the classes that know it stand
// next to each other. Each class's score still takes the document's terms in
// their order, so it equals score_document() to the last bit.
#ifndef VEK_EVALUATION_SCORER_H_
#define VEK_EVALUATION_SCORER_H_

#include <boost/unordered/unordered_flat_map.hpp>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "classes/classtab.h"
#include "intake/docprof.h"
#include "run/helpers.h"

namespace vek {

// The classes that know each term: rows of class numbers, one row a term. A
// class's number is its position in the list that the index was made of.
class TermIndex {
 public:
  static constexpr std::uint32_t no_row = 0xFFFFFFFF;

  explicit TermIndex(const std::vector<ClassData *> &classes);

  std::uint32_t row_of(std::uint32_t term) const {
    const auto place = rows_.find(term);
    return place == rows_.end() ? no_row : place->second;
  }
  std::size_t row_begin(std::uint32_t row) const { return starts_[row]; }
  std::size_t row_end(std::uint32_t row) const { return starts_[row + 1]; }
  // By place, from 0 to nr_places(): ascending within a row.
  std::uint32_t class_number(std::size_t place) const {
    return class_numbers_[place];
  }
  std::size_t nr_places() const { return class_numbers_.size(); }

  // Calls visit(place, entry) for every entry of every class.
  template <class Visit>
  void for_each(const std::vector<ClassData *> &classes, Visit visit) const {
    std::vector<std::size_t> next(starts_.begin(), starts_.end() - 1);
    for (ClassData *class_data_P : classes) {
      for (ClassProfile::Slot &slot : class_data_P->profile) {
        visit(next[rows_.find(slot.term)->second]++, slot.entry);
      }
    }
  }

 private:
  boost::unordered_flat_map<std::uint32_t, std::uint32_t> rows_;
  std::vector<std::size_t> starts_;
  std::vector<std::uint32_t> class_numbers_;
};

class ClassScorer {
 public:
  // Takes the weights as they are now.
  explicit ClassScorer(const std::vector<ClassData *> &classes);

  // Sets scores[i] to the score against the i-th class, for each class.
  void score(const DocProfile &doc, std::vector<WeightType> &scores) const;

 private:
  void add_up(const DocProfile &doc, std::vector<WeightType> &scores) const;
  void multiply(const DocProfile &doc, std::vector<WeightType> &scores) const;

  std::size_t nr_classes_;
  TermIndex index_;
  // By place: what the algorithm multiplies with.
  std::vector<WeightType> weights_;
};

}  // namespace vek

#endif  // VEK_EVALUATION_SCORER_H_

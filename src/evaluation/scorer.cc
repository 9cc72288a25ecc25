#include "evaluation/scorer.h"

#include "evaluation/testing.h"
#include "params/params.h"

namespace vek {

TermIndex::TermIndex(const std::vector<ClassData *> &classes) {
  std::vector<std::size_t> sizes;
  for (ClassData *class_data_P : classes) {
    for (const ClassProfile::Slot &slot : class_data_P->profile) {
      const auto [place, is_new] = rows_.try_emplace(
          slot.term, static_cast<std::uint32_t>(sizes.size()));
      if (is_new)
        sizes.push_back(0);
      ++sizes[place->second];
    }
  }
  starts_.reserve(sizes.size() + 1);
  std::size_t start = 0;
  for (const std::size_t size : sizes) {
    starts_.push_back(start);
    start += size;
  }
  starts_.push_back(start);
  class_numbers_.resize(start);
  std::vector<std::size_t> next(starts_.begin(), starts_.end() - 1);
  for (std::size_t number = 0; number < classes.size(); ++number) {
    for (const ClassProfile::Slot &slot : classes[number]->profile) {
      const std::uint32_t row = rows_.find(slot.term)->second;
      class_numbers_[next[row]++] = static_cast<std::uint32_t>(number);
    }
  }
}

ClassScorer::ClassScorer(const std::vector<ClassData *> &classes)
    : nr_classes_(classes.size()),
      index_(classes),
      weights_(index_.nr_places()) {
  index_.for_each(classes, [&](std::size_t place, ClassProfileEntry &entry) {
    weights_[place] = scoring_weight(entry);
  });
}

void ClassScorer::score(const DocProfile &doc,
                        std::vector<WeightType> &scores) const {
  if (params.algorithm() == Algorithm::sbc) {
    multiply(doc, scores);
  } else {
    add_up(doc, scores);
  }
}

void ClassScorer::add_up(const DocProfile &doc,
                         std::vector<WeightType> &scores) const {
  scores.assign(nr_classes_, 0.0);
  for (const DocProfileEntry &entry : doc) {
    const std::uint32_t row = index_.row_of(entry.term);
    if (row == TermIndex::no_row)
      continue;
    const std::size_t end = index_.row_end(row);
    for (std::size_t place = index_.row_begin(row); place < end; ++place) {
      scores[index_.class_number(place)] += weights_[place] * entry.weight;
    }
  }
}

void ClassScorer::multiply(const DocProfile &doc,
                           std::vector<WeightType> &scores) const {
  scores.assign(nr_classes_, 1.0);
  std::vector<WeightType> factors(nr_classes_, unknown_term_factor);
  for (const DocProfileEntry &entry : doc) {
    const std::uint32_t row = index_.row_of(entry.term);
    const bool known = row != TermIndex::no_row;
    const std::size_t begin = known ? index_.row_begin(row) : 0;
    const std::size_t end = known ? index_.row_end(row) : 0;
    for (std::size_t place = begin; place < end; ++place) {
      factors[index_.class_number(place)] = weights_[place];
    }
    for (std::size_t i = 0; i < nr_classes_; ++i)
      scores[i] *= factors[i];
    for (std::size_t place = begin; place < end; ++place) {
      factors[index_.class_number(place)] = unknown_term_factor;
    }
  }
}

}  // namespace vek

#include "evaluation/scorer.h"

namespace vek {

ClassScorer::ClassScorer(const std::vector<ClassData *> &classes,
                         const Scoring &scoring, const Params &params)
    : kind_(scoring.kind),
      index_(classes),
      biases_(index_.nr_sums()),
      weights_(index_.nr_places()),
      is_known_(index_.nr_places()) {
  for (std::size_t i = 0; i < classes.size(); ++i)
    biases_[i] = classes[i]->profile.bias();
  index_.for_each(classes, [&](std::size_t place, std::uint32_t,
                               const ClassProfileEntry &entry) {
    weights_[place] = scoring.weight(entry, params);
    // A full row also has places of classes that do not know the term. For a
    // sum their weight of 0 is right; a product has to tell them from a weight
    // that is 0.
    is_known_[place] = 1;
  });
}

void ClassScorer::score(const DocProfile &doc,
                        std::vector<WeightType> &scores) const {
  if (kind_ == Scoring::Kind::product) {
    multiply(doc, scores);
  } else {
    add_up(doc, scores);
  }
}

void ClassScorer::add_up(const DocProfile &doc,
                         std::vector<WeightType> &scores) const {
  std::vector<RowWeight<WeightType>> rows;
  index_.find_rows(doc, rows);
  scores = biases_;
  index_.add_rows<WeightType>(rows, weights_, scores);
  // Without the padding that add_rows() needs.
  scores.resize(index_.nr_classes());
}

void ClassScorer::multiply(const DocProfile &doc,
                           std::vector<WeightType> &scores) const {
  scores.assign(index_.nr_classes(), 1.0);
  std::vector<WeightType> factors(index_.nr_classes());
  for (const DocProfileEntry &entry : doc) {
    // A product counts a term that a class does not know, so for each term all
    // classes have a factor, and not only those in its row.
    factors.assign(factors.size(), unknown_term_factor);
    const std::uint32_t row = index_.row_of(entry.term);
    if (row != InvertedIndex::no_row) {
      index_.for_each_in_row(row, [&](std::size_t place, std::uint32_t number) {
        if (is_known_[place] != 0)
          factors[number] = weights_[place];
      });
    }
    for (std::size_t i = 0; i < scores.size(); ++i)
      scores[i] *= factors[i];
  }
}

}  // namespace vek

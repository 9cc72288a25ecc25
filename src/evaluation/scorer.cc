#include "evaluation/scorer.h"

#include <algorithm>
#include <limits>

#include "base/logarithm.h"

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

void ClassScorer::find_evidence(const DocProfile &doc,
                                std::vector<WeightType> &evidence) const {
  if (kind_ == Scoring::Kind::sum) {
    add_up(doc, evidence);
    return;
  }
  // As multiply(), with sums of logarithms.
  const WeightType unknown = natural_logarithm(unknown_term_factor);
  std::vector<WeightType> sums(index_.nr_classes());
  std::size_t nr_terms = 0;
  for (const DocProfileEntry &entry : doc) {
    const std::uint32_t row = index_.row_of(entry.term);
    // What no class knows tells nothing, and has been dropped from some
    // documents.
    if (row == InvertedIndex::no_row)
      continue;
    ++nr_terms;
    for (WeightType &sum : sums)
      sum += unknown;
    index_.for_each_in_row(row, [&](std::size_t place, std::uint32_t number) {
      // A weight of 0 counts as one that is very small.
      if (is_known_[place] != 0) {
        sums[number] +=
            natural_logarithm(std::max(weights_[place], 1e-30)) - unknown;
      }
    });
  }
  evidence.assign(sums.size(), 0.0);
  if (sums.size() < 2)
    return;
  const std::size_t best =
      std::size_t(std::ranges::max_element(sums) - sums.begin());
  WeightType second = -std::numeric_limits<WeightType>::infinity();
  for (std::size_t i = 0; i < sums.size(); ++i) {
    if (i != best)
      second = std::max(second, sums[i]);
  }
  for (std::size_t i = 0; i < sums.size(); ++i)
    evidence[i] = (sums[i] - (i == best ? second : sums[best])) /
                  double(std::max<std::size_t>(nr_terms, 1));
}

}  // namespace vek

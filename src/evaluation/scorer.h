// Scores one document against many classes at once.
//
// Looking up every term of a document in every class's profile would take most
// of a run's time. Here the weights of all classes are laid out term by term,
// so that a term is looked up once and the classes that know it stand next to
// each other. Each class's score still takes the document's terms in their
// order, so it equals score_document() to the last bit.
#ifndef VEK_EVALUATION_SCORER_H_
#define VEK_EVALUATION_SCORER_H_

#include <cstdint>
#include <vector>

#include "base/helpers.h"
#include "classes/classtab.h"
#include "evaluation/invertedindex.h"
#include "evaluation/scoring.h"
#include "intake/docprof.h"

namespace vek {

class ClassScorer {
 public:
  // Copies the weights: later changes of the profiles have no effect.
  ClassScorer(const std::vector<ClassData *> &classes, const Scoring &scoring,
              const Params &params);

  // Sets scores[i] to the score against the i-th class, for each class.
  void score(const DocProfile &doc, std::vector<WeightType> &scores) const;

  // Sets evidence[i] to what probabilities are made from: the score, if it is a
  // sum. A product soon falls below the least double, and says more the longer
  // the document is; then it is the logarithm of the odds of the class against
  // the best of the others, for one term that some class knows in the mean.
  void find_evidence(const DocProfile &doc,
                     std::vector<WeightType> &evidence) const;

 private:
  void add_up(const DocProfile &doc, std::vector<WeightType> &scores) const;
  void multiply(const DocProfile &doc, std::vector<WeightType> &scores) const;

  Scoring::Kind kind_;
  InvertedIndex index_;
  // By sum of the index: what it begins with.
  std::vector<WeightType> biases_;
  // By place: what the document's weights are multiplied with.
  std::vector<WeightType> weights_;
  // By place: the class knows the term.
  std::vector<std::uint8_t> is_known_;
};

}  // namespace vek

#endif  // VEK_EVALUATION_SCORER_H_

// The way of a document down the hierarchy, from the top class to the leaves
// that are its answer: the same for test documents, for new ones, and where an
// observer has the way explained.
#ifndef VEK_EVALUATION_WALK_H_
#define VEK_EVALUATION_WALK_H_

#include <map>
#include <memory>
#include <vector>

#include "classes/classtab.h"
#include "evaluation/ranks.h"
#include "evaluation/scorer.h"
#include "evaluation/scoring.h"
#include "intake/docprof.h"
#include "params/params.h"

namespace vek {

// Why a ranking was taken from a list: it lay below the least score to stay, or
// the list was longer than MaxRanks.
enum class Cut { below_threshold, max_ranks };

// Receives the steps of a walk, in their order.
class WalkObserver {
 public:
  virtual ~WalkObserver() = default;

  // The sons of `father` have their scaled scores, highest first. The document
  // is weighed against `father`.
  virtual void scored(const ClassData & /*father*/, const Ranks & /*scores*/) {}
  // The walk goes on to a class below: to its sons, or it is a leaf and joins
  // the answer. `threshold` is what makes the document significant.
  virtual void entered(const ClassData & /*class_data*/,
                       const Ranking & /*ranking*/, WeightType /*threshold*/) {}
  // Where the sons of `father` are done, the ranking of a leaf below it is
  // dropped; `least` is the score with which it would have stayed, for
  // Cut::below_threshold.
  virtual void cut(const ClassData & /*father*/, const Ranking & /*ranking*/,
                   Cut /*reason*/, WeightType /*least*/) {}
};

class Walk {
 public:
  // Copies the weights of a class's sons when they are needed first; weights
  // that change after that need a new walk. The parameters must outlive it.
  Walk(const Scoring &scoring, const Params &params)
      : scoring_(scoring), params_(params) {}

  // Weighs the document against the class and sets `scores` to its scaled
  // score for each son, highest first.
  void score_sons(const ClassData &father, DocProfile &doc, Ranks &scores);

  // Weighs the document against the class and sets `evidence` to what speaks
  // for each of its sons (ClassScorer::find_evidence()), in their order.
  void find_evidence(const ClassData &father, DocProfile &doc,
                     std::vector<WeightType> &evidence);

  // Walks down the hierarchy below a class that has sons, given the scores of
  // its sons, and leaves in the empty `ranks` the leaf classes that the
  // document belongs to, highest score first: as many as pass their thresholds,
  // but at least MinRanks and at most MaxRanks. Returns whether the document is
  // significant: some class on the way scored above its threshold.
  bool classify(const ClassData &top, DocProfile &doc, const Ranks &scores,
                Ranks &ranks, WalkObserver *observer_P = nullptr);

  // Until it is called again: the scores are not made from documents, but taken
  // from a row that has one for each class id. With a null pointer they are
  // made again.
  void take_scores(const WeightType *row_P) { row_P_ = row_P; }

  // What a score must exceed: 1.0 for scaled ones.
  WeightType decision_threshold(const ClassData &data) const;

 private:
  const ClassScorer &scorer_of_sons(const ClassData &father);
  bool take_row(const ClassData &father, std::vector<WeightType> &scores) const;
  WeightType least_to_stay(const ClassData &father,
                           const ClassData &data) const;
  void cut_ranks(const ClassData &father, Ranks &ranks,
                 WalkObserver *observer_P) const;

  const Scoring scoring_;
  const Params &params_;
  const WeightType *row_P_ = nullptr;
  std::map<const ClassData *, std::unique_ptr<ClassScorer>> scorers_;
};

}  // namespace vek

#endif  // VEK_EVALUATION_WALK_H_

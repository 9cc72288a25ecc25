// The judgement of a document: which classes it gets, for test documents and
// for new ones.
//
// Either step by step, as walk.h has it: sons are compared with their brothers
// alone. Or by the path: each step down has a probability, that of a leaf is
// the product along its path, and leaves are compared with all other leaves.
#ifndef VEK_EVALUATION_JUDGE_H_
#define VEK_EVALUATION_JUDGE_H_

#include <span>
#include <vector>

#include "classes/classtab.h"
#include "evaluation/judging.h"
#include "evaluation/ranks.h"
#include "evaluation/scorer.h"
#include "evaluation/walk.h"
#include "intake/docprof.h"
#include "params/params.h"

namespace vek {

struct Answer {
  // What the rank file of a test has: by steps, the scaled scores of the top
  // class's sons; by the path, the probabilities of the leaves, from 0.001 and
  // at least one.
  Ranks scores;
  // The leaves that were found, best first: scaled scores, or probabilities.
  Ranks ranks;
  // All leaves, best first, if the judge keeps them; otherwise empty.
  Ranks leaves;
  // By steps, some class on the way scored above its threshold; by the path,
  // some leaf has a probability above its threshold.
  bool significant = false;
};

class Judge {
 public:
  // `judging` may be empty. All must outlive the judge.
  Judge(const ClassTable &classes, const Scoring &scoring, const Params &params,
        const Judging &judging);

  // Judges a document against the hierarchy below the top class, which must
  // have sons. `observer_P` sees each step of the walk. By the path, it sees
  // the sons of every father with what speaks for each (the unscaled score, or
  // for a product its logarithm), and then the leaves that were found.
  void judge(DocProfile &doc, Answer &answer,
             WalkObserver *observer_P = nullptr);

  // The same for a document that has been scored: a row with what speaks for
  // each class, by class id.
  void judge_scores(std::span<const WeightType> row, Answer &answer);

  // From now on answers have all leaves.
  void keep_leaves() { keeps_leaves_ = true; }

  // What the leaf's score has to exceed in an answer.
  WeightType threshold(const ClassData &leaf) const;
  // Scores are probabilities.
  bool has_probabilities() const;

  // The classes that the document gets: those found, if it is significant, and
  // otherwise none or the best one, as the parameters have it.
  std::span<const Ranking> assigned(const Answer &answer) const;

 private:
  void judge_path(DocProfile &doc, Answer &answer, WalkObserver *observer_P);

  const ClassTable &classes_;
  const Params &params_;
  const Judging &judging_;
  bool keeps_leaves_ = false;
  Walk walk_;
  std::vector<WeightType> values_;         // of the sons of a father
  std::vector<WeightType> evidence_;       // by class id
  std::vector<WeightType> probabilities_;  // by class id
};

}  // namespace vek

#endif  // VEK_EVALUATION_JUDGE_H_

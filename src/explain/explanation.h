// Why a document got its classes: the steps of its way with all their scores,
// what each term did for a score, and what became of each leaf.
//
// All scores are those of the judge. What terms do for a class is added up as
// the plain form of the score has it (evaluation/scoring.h), and the result is
// compared with what the judge had.
#ifndef VEK_EXPLAIN_EXPLANATION_H_
#define VEK_EXPLAIN_EXPLANATION_H_

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "answering/kept_model.h"
#include "base/failure.h"
#include "base/helpers.h"
#include "evaluation/judge.h"
#include "intake/docprof.h"

namespace vek::explaining {

// A class among its brothers.
struct SonScore {
  const ClassData *class_P = nullptr;
  // Unscaled. Of a classifier whose score is a product and the path: the
  // logarithm of its odds (ClassScorer::find_evidence()).
  WeightType score = 0.0;
  // In units of the class's own threshold, if scores are scaled.
  std::optional<WeightType> scaled;
  // What the score or scaled score has to exceed.
  std::optional<WeightType> threshold;
  // By the path: of the whole path to the class.
  std::optional<WeightType> probability;
  // The way to an assigned leaf, or else to the best one, goes on here.
  bool is_on_way = false;
};

struct Step {
  const ClassData *father_P = nullptr;
  std::vector<SonScore> sons;  // best first
};

// A term of the document and one class.
struct TermShare {
  std::uint32_t term = 0;
  std::uint32_t frequency = 0;
  // In the document, weighed against the class's father; a product has no use
  // for it.
  WeightType strength = 0.0;
  // In the class: what the strength is multiplied with, or the factor of a
  // product.
  WeightType weight = 0.0;
  // Winnow's two, of which it is the difference.
  WeightType positive = 0.0;
  WeightType negative = 0.0;
  // To the total.
  WeightType contribution = 0.0;
  // By how much it favours the class: the contribution, or in a product the
  // logarithm of the factor less that of the rival's.
  WeightType favour = 0.0;
};

// What a score is made of.
struct TermShares {
  const ClassData *class_P = nullptr;
  // Of the parts: the score, or in a product its logarithm; by the path the
  // logarithm of the odds.
  WeightType total = 0.0;
  WeightType bias = 0.0;
  // In a product, the best of the brothers; may be null.
  const ClassData *rival_P = nullptr;
  // The terms that change the total, in the document's order.
  std::vector<TermShare> terms;
};

// What became of a leaf.
struct LeafOutcome {
  const ClassData *class_P = nullptr;
  WeightType score = 0.0;  // as in a rank file: scaled, or a probability
  WeightType threshold = 0.0;
  bool is_assigned = false;
  std::string reason;  // in words
};

class Explanation {
 public:
  // Judges the document. Both must outlive the explanation.
  Explanation(KeptModel &model, DocProfile &doc);

  const Answer &answer() const { return answer_; }
  // All leaves, best first.
  const std::vector<LeafOutcome> &leaves() const { return leaves_; }

  // The steps to the assigned leaves, or else to the best one; from the top.
  std::vector<Step> steps_on_way() const;
  // The step that judges a class; not the top class.
  Step step_to(const ClassData &data) const;

  // False, with `failure` filled in, if the sum is not what the judge had,
  // which would be a fault of this program.
  bool find_shares(const ClassData &data, TermShares &shares, Failure &failure);

  // Scores are products of the terms' factors.
  bool is_product() const;

 private:
  class Recorder;

  void find_probabilities();
  void find_outcomes();
  std::string reason_of(const Ranking &leaf, bool is_assigned) const;
  WeightType seen_score(const ClassData &data) const;
  WeightType unscaled_score(const ClassData &data) const;
  void add_sum(const ClassData &data, TermShares &shares) const;
  void add_product(const ClassData &data, TermShares &shares) const;

  KeptModel &model_;
  DocProfile &doc_;
  const bool by_path_;
  Answer answer_;
  // By class id, as the judge had them: scaled by steps, evidence by the path.
  std::vector<WeightType> scores_;
  std::vector<WeightType> probabilities_;  // by class id, by the path
  std::vector<bool> is_on_way_;            // by class id
  struct CutMade {
    Cut reason;
    WeightType least;
  };
  std::map<std::uint32_t, CutMade> cuts_;  // by class id
  std::vector<LeafOutcome> leaves_;
};

}  // namespace vek::explaining

#endif  // VEK_EXPLAIN_EXPLANATION_H_

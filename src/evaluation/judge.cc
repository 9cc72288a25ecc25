#include "evaluation/judge.h"

#include <algorithm>

#include "base/require.h"

namespace vek {
namespace {

// Less is not worth a word in a rank file.
constexpr WeightType least_probability = 0.001;

// Takes each leaf that a walk enters.
class LeafKeeper : public WalkObserver {
 public:
  explicit LeafKeeper(Ranks &leaves) : leaves_(leaves) {}
  void entered(const ClassData &data, const Ranking &ranking,
               WeightType /*threshold*/) override {
    if (data.sons.empty())
      leaves_.push_back(ranking);
  }

 private:
  Ranks &leaves_;
};

}  // namespace

Judge::Judge(const ClassTable &classes, const Scoring &scoring,
             const Params &params, const Judging &judging)
    : classes_(classes),
      params_(params),
      judging_(judging),
      walk_(scoring, params) {}

void Judge::judge(DocProfile &doc, Answer &answer, WalkObserver *observer_P) {
  answer = {};
  const ClassData &top = classes_.get_data(0);
  if (params_.walk == WalkKind::path) {
    judge_path(doc, answer, observer_P);
    return;
  }
  walk_.score_sons(top, doc, answer.scores);
  LeafKeeper keeper(answer.leaves);
  if (keeps_leaves_ && observer_P == nullptr)
    observer_P = &keeper;
  answer.significant =
      walk_.classify(top, doc, answer.scores, answer.ranks, observer_P);
  answer.leaves.sort();
}

void Judge::judge_scores(std::span<const WeightType> row, Answer &answer) {
  DocProfile none;
  walk_.take_scores(row.data());
  judge(none, answer);
  walk_.take_scores(nullptr);
}

WeightType Judge::threshold(const ClassData &leaf) const {
  // Without calibration a share has no threshold: the leaf's own score decides.
  return has_probabilities() ? judging_.threshold(leaf.id)
                             : walk_.decision_threshold(leaf);
}

bool Judge::has_probabilities() const {
  return params_.walk == WalkKind::path && !judging_.classes.empty();
}

std::span<const Ranking> Judge::assigned(const Answer &answer) const {
  const std::span<const Ranking> all = answer.ranks;
  if (answer.significant)
    return all;
  return all.first(params_.insignificant == Insignificant::best
                       ? std::min<std::size_t>(all.size(), 1)
                       : 0);
}

void Judge::judge_path(DocProfile &doc, Answer &answer,
                       WalkObserver *observer_P) {
  require(!classes_.get_data(0).sons.empty(), "class_data_P->sons.size() > 0");
  const bool is_calibrated = has_probabilities();
  evidence_.resize(classes_.size());
  probabilities_.resize(classes_.size());
  for (std::uint32_t id = 0; id < classes_.size(); ++id) {
    const ClassData &father = classes_.get_data(id);
    if (father.sons.empty())
      continue;
    walk_.find_evidence(father, doc, values_);
    if (observer_P != nullptr) {
      Ranks seen;
      for (std::size_t i = 0; i < values_.size(); ++i)
        seen.add(father.sons[i], values_[i]);
      seen.sort();
      observer_P->scored(father, seen);
    }
    for (std::size_t i = 0; i < values_.size(); ++i) {
      const ClassData &son = *father.sons[i];
      evidence_[son.id] = is_calibrated ? values_[i]
                                        : scaled_score(params_, values_[i],
                                                       son.profile.threshold());
    }
  }
  if (is_calibrated) {
    path_probabilities(classes_, judging_, evidence_, probabilities_);
  } else {
    path_shares(classes_, params_.max_ranks == 1, evidence_, probabilities_);
  }
  for (const auto &[key, data] : classes_) {
    if (data.sons.empty())
      answer.scores.add(&data, probabilities_[data.id]);
  }
  answer.scores.sort();
  for (const Ranking &ranking : answer.scores) {
    const ClassData &leaf = *ranking.class_data_P;
    const WeightType score = is_calibrated ? ranking.score : evidence_[leaf.id];
    const bool passes = score > threshold(leaf);
    answer.significant = answer.significant || passes;
    if (answer.ranks.size() < params_.max_ranks &&
        (passes || answer.ranks.size() < params_.min_ranks)) {
      answer.ranks.push_back(ranking);
    }
  }
  if (keeps_leaves_)
    answer.leaves = answer.scores;
  const auto first_unlikely =
      std::ranges::find_if(answer.scores, [](const Ranking &ranking) {
        return !(ranking.score >= least_probability);
      });
  answer.scores.erase(
      std::max(first_unlikely, std::next(answer.scores.begin())),
      answer.scores.end());
  if (observer_P != nullptr) {
    for (const Ranking &ranking : answer.ranks) {
      observer_P->entered(*ranking.class_data_P, ranking,
                          threshold(*ranking.class_data_P));
    }
  }
}

}  // namespace vek

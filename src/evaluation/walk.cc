#include "evaluation/walk.h"

#include <cstddef>
#include <utility>
#include <vector>

#include "base/require.h"

namespace vek {
namespace {

// One step of the way: the scores of a class's sons, and which comes next.
struct Level {
  const ClassData *class_data_P;
  Ranks scores;
  std::size_t next = 0;
};

}  // namespace

const ClassScorer &Walk::scorer_of_sons(const ClassData &father) {
  std::unique_ptr<ClassScorer> &scorer = scorers_[&father];
  // Made once for each father that a document reaches. Making it costs a walk
  // over the profiles of all sons; most fathers are reached again and again.
  if (scorer == nullptr)
    scorer = std::make_unique<ClassScorer>(father.sons, scoring_, params_);
  return *scorer;
}

bool Walk::take_row(const ClassData &father,
                    std::vector<WeightType> &scores) const {
  if (row_P_ == nullptr)
    return false;
  scores.clear();
  for (const ClassData *son_P : father.sons)
    scores.push_back(row_P_[son_P->id]);
  return true;
}

WeightType Walk::decision_threshold(const ClassData &data) const {
  return params_.scaling ? 1.0 : data.profile.threshold();
}

// The least score with which a class stays in the list when the sons of
// `father` are judged: the threshold for a son, and 0.0 for any other leaf in
// the list, which its own father judges.
WeightType Walk::least_to_stay(const ClassData &father,
                               const ClassData &data) const {
  return data.father == &father ? decision_threshold(data) : 0.0;
}

// Cuts the sorted list: by the thresholds down to MinRanks, then by length.
// Only the end is looked at, so a class below its threshold stays if one with a
// lower score passes.
void Walk::cut_ranks(const ClassData &father, Ranks &ranks,
                     WalkObserver *observer_P) const {
  const auto drop_last = [&](Cut reason, WeightType least) {
    if (observer_P != nullptr)
      observer_P->cut(father, ranks.back(), reason, least);
    ranks.pop_back();
  };
  while (ranks.size() > params_.min_ranks) {
    const WeightType least = least_to_stay(father, *ranks.back().class_data_P);
    // Written so that a score that is not a number stays: it compares false.
    if (!(ranks.back().score < least))
      break;
    drop_last(Cut::below_threshold, least);
  }
  while (ranks.size() > params_.max_ranks)
    drop_last(Cut::max_ranks, 0.0);
}

void Walk::score_sons(const ClassData &father, DocProfile &doc, Ranks &scores) {
  std::vector<WeightType> unscaled;
  if (!take_row(father, unscaled)) {
    doc.weigh(father, params_);
    scorer_of_sons(father).score(doc, unscaled);
  }
  scores.clear();
  for (std::size_t i = 0; i < unscaled.size(); ++i) {
    const ClassData *son_P = father.sons[i];
    scores.add(son_P,
               scaled_score(params_, unscaled[i], son_P->profile.threshold()));
  }
  scores.sort();
}

void Walk::find_evidence(const ClassData &father, DocProfile &doc,
                         std::vector<WeightType> &evidence) {
  if (take_row(father, evidence))
    return;
  doc.weigh(father, params_);
  scorer_of_sons(father).find_evidence(doc, evidence);
}

bool Walk::classify(const ClassData &top, DocProfile &doc, const Ranks &scores,
                    Ranks &ranks, WalkObserver *observer_P) {
  require(!top.sons.empty(), "class_data_P->sons.size() > 0");
  bool significant = false;
  // Not by recursion: a stored hierarchy can be deeper than the stack.
  std::vector<Level> levels;
  const auto go_down = [&](const ClassData &father, Ranks sons_scores) {
    if (observer_P != nullptr)
      observer_P->scored(father, sons_scores);
    levels.push_back({&father, std::move(sons_scores)});
  };
  go_down(top, scores);
  while (!levels.empty()) {
    Level &level = levels.back();
    // All sons are done. The list holds every leaf found so far, not only those
    // below this class, and is cut as a whole.
    if (level.next == level.scores.size()) {
      ranks.sort();
      cut_ranks(*level.class_data_P, ranks, observer_P);
      levels.pop_back();
      continue;
    }
    // A copy: go_down() adds a level, and `level` is then no longer valid.
    const Ranking ranking = level.scores[level.next++];
    const ClassData &son = *ranking.class_data_P;
    const WeightType threshold = decision_threshold(son);
    // Any class on the way will do, an inner one too. The score must lie above
    // the threshold; to stay in the list it may equal it.
    significant = significant || ranking.score > threshold;
    if (observer_P != nullptr)
      observer_P->entered(son, ranking, threshold);
    // Every son is entered, whatever its score: the thresholds only cut the
    // list of leaves.
    if (son.sons.empty()) {
      ranks.push_back(ranking);
    } else {
      Ranks sons_scores;
      score_sons(son, doc, sons_scores);
      go_down(son, std::move(sons_scores));
    }
  }
  return significant;
}

}  // namespace vek

#include "learning/calibrate.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <ostream>
#include <vector>

#include "base/exponential.h"
#include "base/logarithm.h"
#include "base/textio.h"
#include "evaluation/judge.h"
#include "evaluation/testing.h"
#include "evaluation/thresholds.h"

namespace vek {
namespace {

// With so many documents a class's own threshold counts half.
constexpr WeightType half_trust = 30.0;

constexpr WeightType least_threshold = 0.001;

std::vector<std::uint8_t> members_of(const ClassData &data,
                                     const TrainingSet &set) {
  std::vector<std::uint8_t> is_member(set.documents().size());
  for (const auto &[name, classes] : data.train_docs)
    is_member[set.place_of(name)] = 1;
  return is_member;
}

std::vector<WeightType> scores_of(const ClassData &data, const TrainingSet &set,
                                  const ScoreMatrix &matrix) {
  std::vector<WeightType> scores;
  scores.reserve(set.documents().size());
  for (std::size_t i = 0; i < set.documents().size(); ++i)
    scores.push_back(matrix.row(i)[data.id]);
  return scores;
}

// Of all documents.
CalibrationColumn column_of(const ClassData &data, const TrainingSet &set,
                            const ScoreMatrix &matrix) {
  return {scores_of(data, set, matrix), {}, members_of(data, set)};
}

// Of the documents at those places.
CalibrationColumn part_of(const CalibrationColumn &column,
                          const std::vector<std::size_t> &places) {
  CalibrationColumn part;
  for (const std::size_t place : places) {
    part.scores.push_back(column.scores[place]);
    part.is_member.push_back(column.is_member[place]);
    if (!column.inclusive.empty())
      part.inclusive.push_back(column.inclusive[place]);
  }
  for (const std::vector<WeightType> &scores : column.scores_of_sons) {
    std::vector<WeightType> &kept = part.scores_of_sons.emplace_back();
    for (const std::size_t place : places)
      kept.push_back(scores[place]);
  }
  return part;
}

void append(const CalibrationColumn &column, CalibrationColumn &all) {
  all.scores.insert(all.scores.end(), column.scores.begin(),
                    column.scores.end());
  all.is_member.insert(all.is_member.end(), column.is_member.begin(),
                       column.is_member.end());
}

// Between a class's own value and that of all classes.
WeightType lean(WeightType own, WeightType common, std::size_t nr_docs) {
  const WeightType trust = double(nr_docs) / (double(nr_docs) + half_trust);
  return trust * own + (1.0 - trust) * common;
}

WeightType logit_of(WeightType probability) {
  const WeightType p =
      std::clamp(probability, least_threshold, 1.0 - least_threshold);
  return natural_logarithm(p / (1.0 - p));
}

// Fits the curves of the sons and returns the class's inclusive value for each
// document.
std::vector<WeightType> fit_father(
    const TrainingSet &set, const ScoreMatrix &matrix, const ClassData &father,
    const std::map<std::uint32_t, std::vector<WeightType>> &inclusive,
    Judging &judging) {
  const std::size_t nr_docs = set.documents().size();
  std::vector<std::size_t> places;
  for (const auto &[name, sons] : father.train_docs)
    places.push_back(set.place_of(name));
  std::vector<CalibrationColumn> columns;
  for (const ClassData *son_P : father.sons) {
    columns.push_back(column_of(*son_P, set, matrix));
    if (!son_P->sons.empty())
      columns.back().inclusive = inclusive.at(son_P->id);
    const auto heard = heard_classes(*son_P, matrix.nr_classes);
    if (father.sons.size() == 1 || heard.size() > Calibration::most_heard)
      continue;
    for (const ClassData *heard_P : heard)
      columns.back().scores_of_sons.push_back(scores_of(*heard_P, set, matrix));
  }
  // An only son is certain, and hands on what it hears.
  if (columns.size() == 1) {
    return columns[0].inclusive.empty() ? std::vector<WeightType>(nr_docs)
                                        : columns[0].inclusive;
  }
  std::vector<CalibrationColumn> parts;
  for (const CalibrationColumn &column : columns)
    parts.push_back(part_of(column, places));
  const std::vector<Calibration> curves = fit_sons(parts, judging.share);
  for (std::size_t i = 0; i < curves.size(); ++i)
    judging.classes[father.sons[i]->id].calibration = curves[i];
  std::vector<WeightType> result(nr_docs);
  std::vector<WeightType> logits(curves.size());
  std::vector<WeightType> heard;
  for (std::size_t doc = 0; doc < nr_docs; ++doc) {
    for (std::size_t i = 0; i < curves.size(); ++i) {
      const CalibrationColumn &column = columns[i];
      heard.clear();
      for (const std::vector<WeightType> &scores : column.scores_of_sons)
        heard.push_back(scores[doc]);
      logits[i] = curves[i].logit(
          column.scores[doc],
          column.inclusive.empty() ? 0.0 : column.inclusive[doc], heard);
    }
    result[doc] = inclusive_value(logits);
  }
  return result;
}

}  // namespace

void set_held_out_thresholds(ClassTable &classes, const TrainingSet &set,
                             const ScoreMatrix &matrix, std::ostream &scores) {
  struct Leaf {
    ClassData *data_P;
    Calibration curve;
    WeightType point;
  };
  std::vector<Leaf> leaves;
  CalibrationColumn all;
  for (auto &[key, data] : classes) {
    if (!data.sons.empty())
      continue;
    CalibrationColumn column = column_of(data, set, matrix);
    ScoreTable table;
    for (std::size_t i = 0; i < column.scores.size(); ++i)
      (column.is_member[i] != 0 ? table.pos : table.neg)
          .push_back(column.scores[i]);
    table.complete();
    table.write(scores, key.name);
    leaves.push_back({&data, fit_logistic(column), break_even(column)});
    for (WeightType &score : column.scores)
      score = leaves.back().curve.factor * score + leaves.back().curve.offset;
    append(column, all);
  }
  const WeightType common = break_even(all);
  for (const Leaf &leaf : leaves) {
    // Where scores tell nothing, there is no way back from a logit.
    if (!std::isfinite(leaf.point) || !(leaf.curve.factor > 0.0))
      continue;
    const WeightType own = leaf.curve.factor * leaf.point + leaf.curve.offset;
    const WeightType threshold =
        (lean(own, common, leaf.data_P->train_docs.size()) -
         leaf.curve.offset) /
        leaf.curve.factor;
    if (std::isfinite(threshold))
      leaf.data_P->profile.set_threshold(as_written(std::max(threshold, 0.0)));
  }
}

Judging learn_judging(const ClassTable &classes, const TrainingSet &set,
                      const ScoreMatrix &matrix, std::uint32_t nr_parts,
                      const Params &params) {
  Judging judging;
  judging.algorithm = params.algorithm;
  judging.nr_parts = nr_parts;
  judging.share = params.max_ranks == 1;
  judging.classes.resize(classes.size());
  // From below: the inclusive value of a class is known before its curve is
  // fitted. Of each class that has sons, by document.
  std::map<std::uint32_t, std::vector<WeightType>> inclusive;
  for (auto id = static_cast<std::uint32_t>(classes.size()); id-- > 0;) {
    const ClassData &father = classes.get_data(id);
    if (!father.sons.empty())
      inclusive[id] = fit_father(set, matrix, father, inclusive, judging);
  }
  // The probabilities of all leaves.
  ScoreMatrix paths{matrix.nr_classes, {}};
  paths.scores.resize(matrix.scores.size());
  for (std::size_t i = 0; i < set.documents().size(); ++i) {
    path_probabilities(classes, judging, {matrix.row(i), matrix.nr_classes},
                       {paths.row(i), matrix.nr_classes});
  }
  CalibrationColumn all;
  for (const auto &[key, data] : classes) {
    if (data.sons.empty())
      append(column_of(data, set, paths), all);
  }
  const WeightType common = logit_of(break_even(all));
  for (const auto &[key, data] : classes) {
    if (!data.sons.empty())
      continue;
    const WeightType point = break_even(column_of(data, set, paths));
    const WeightType own = std::isfinite(point) ? logit_of(point) : common;
    judging.classes[data.id].threshold =
        logistic(lean(own, common, data.train_docs.size()));
  }
  return judging;
}

ConfusionMatrix judge_held_out(const ClassTable &classes,
                               const TrainingSet &set,
                               const ScoreMatrix &matrix,
                               const Judging &judging, const Params &params) {
  ConfusionMatrix counts(classes,
                         static_cast<std::uint32_t>(set.documents().size()));
  // Documents are not scored, so how they would be is all the same.
  Judge judge(classes, {Scoring::Kind::sum, nullptr}, params, judging);
  for (std::size_t i = 0; i < set.documents().size(); ++i) {
    Answer answer;
    judge.judge_scores({matrix.row(i), matrix.nr_classes}, answer);
    const auto assigned = judge.assigned(answer);
    count_decision({assigned.begin(), assigned.end()},
                   set.documents()[i].filed_in, counts);
  }
  return counts;
}

}  // namespace vek

#include "explain/explanation.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "base/logarithm.h"
#include "base/textio.h"
#include "evaluation/judging.h"

namespace vek::explaining {
namespace {

// As ClassScorer::find_evidence() has it for a weight of 0.
constexpr WeightType least_factor = 1e-30;

std::string number_text(WeightType value) {
  std::string text;
  append_real(text, value);
  return text;
}

}  // namespace

// Takes down what the judge does.
class Explanation::Recorder : public WalkObserver {
 public:
  explicit Recorder(Explanation &explanation) : to_(explanation) {}

  void scored(const ClassData & /*father*/, const Ranks &scores) override {
    for (const Ranking &ranking : scores)
      to_.scores_[ranking.class_data_P->id] = ranking.score;
  }
  void entered(const ClassData &data, const Ranking &ranking,
               WeightType /*threshold*/) override {
    // By the path the answer has all leaves itself.
    if (!to_.by_path_ && data.sons.empty())
      leaves_.push_back(ranking);
  }
  void cut(const ClassData & /*father*/, const Ranking &ranking, Cut reason,
           WeightType least) override {
    to_.cuts_[ranking.class_data_P->id] = {reason, least};
  }

  Ranks &leaves() { return leaves_; }

 private:
  Explanation &to_;
  Ranks leaves_;
};

Explanation::Explanation(KeptModel &model, DocProfile &doc)
    : model_(model),
      doc_(doc),
      by_path_(model.params().walk == WalkKind::path),
      scores_(model.model().classes().size()),
      is_on_way_(scores_.size()) {
  Recorder recorder(*this);
  model_.judge().keep_leaves();
  model_.judge().judge(doc_, answer_, &recorder);
  if (by_path_) {
    find_probabilities();
  } else {
    answer_.leaves = recorder.leaves();
    answer_.leaves.sort();
  }
  find_outcomes();
}

bool Explanation::is_product() const {
  return model_.classifier().scoring.kind == Scoring::Kind::product;
}

// In the judge's words, but for inner classes too.
void Explanation::find_probabilities() {
  const ClassTable &classes = model_.model().classes();
  probabilities_.resize(classes.size());
  std::vector<WeightType> evidence = scores_;
  if (model_.judge().has_probabilities()) {
    path_probabilities(classes, model_.model().judging(), evidence,
                       probabilities_);
    return;
  }
  for (std::uint32_t id = 1; id < classes.size(); ++id) {
    evidence[id] = scaled_score(model_.params(), evidence[id],
                                classes.get_data(id).profile.threshold());
  }
  path_shares(classes, model_.params().max_ranks == 1, evidence,
              probabilities_);
}

void Explanation::find_outcomes() {
  const std::span<const Ranking> assigned = model_.judge().assigned(answer_);
  for (const Ranking &leaf : answer_.leaves) {
    const ClassData *const class_P = leaf.class_data_P;
    const bool is_assigned =
        std::ranges::find(assigned, class_P, &Ranking::class_data_P) !=
        assigned.end();
    leaves_.push_back({class_P, leaf.score, model_.judge().threshold(*class_P),
                       is_assigned, reason_of(leaf, is_assigned)});
    const bool is_goal =
        is_assigned || (assigned.empty() && leaves_.size() == 1);
    for (const ClassData *on_way_P = class_P; is_goal && on_way_P != nullptr;
         on_way_P = on_way_P->father) {
      is_on_way_[on_way_P->id] = true;
    }
  }
}

// A leaf is judged by its probability, by its scaled score where shares say
// nothing of thresholds, or by its score.
std::string Explanation::reason_of(const Ranking &leaf,
                                   bool is_assigned) const {
  const ClassData &data = *leaf.class_data_P;
  const Params &params = model_.params();
  const bool is_probability = model_.judge().has_probabilities();
  const WeightType threshold = model_.judge().threshold(data);
  const WeightType score =
      by_path_ && !is_probability
          ? scaled_score(params, scores_[data.id], data.profile.threshold())
          : leaf.score;
  const bool passes = score > threshold;
  const bool is_found =
      std::ranges::find(answer_.ranks, &data, &Ranking::class_data_P) !=
      answer_.ranks.end();
  const std::string below =
      (is_probability ? "not above the threshold " : "below the threshold ") +
      number_text(threshold);
  const std::string max_ranks = "MaxRanks " + std::to_string(params.max_ranks);
  if (is_assigned) {
    if (passes)
      return "assigned";
    return answer_.significant ? "assigned though " + below + ": MinRanks " +
                                     std::to_string(params.min_ranks)
                               : "assigned as the best, though " + below;
  }
  if (is_found) {
    return params.insignificant == Insignificant::best
               ? "no class is above its threshold: only the best is assigned"
               : "no class is above its threshold";
  }
  if (by_path_)
    return passes ? max_ranks : below;
  const auto place = cuts_.find(data.id);
  if (place == cuts_.end() || place->second.reason == Cut::max_ranks)
    return max_ranks;
  return "below the threshold " + number_text(place->second.least);
}

WeightType Explanation::unscaled_score(const ClassData &data) const {
  return by_path_ ? scores_[data.id]
                  : score_document(model_.classifier().scoring, model_.params(),
                                   data.profile, doc_);
}

Step Explanation::step_to(const ClassData &data) const {
  const ClassData &father = *data.father;
  const Params &params = model_.params();
  const bool is_calibrated = model_.judge().has_probabilities();
  doc_.weigh(father, params);
  Step step{&father, {}};
  for (const ClassData *const son_P : father.sons) {
    SonScore son;
    son.class_P = son_P;
    son.score = unscaled_score(*son_P);
    if (by_path_)
      son.probability = probabilities_[son_P->id];
    if (is_calibrated) {
      if (son_P->sons.empty())
        son.threshold = model_.judge().threshold(*son_P);
    } else if (model_.classifier().has_thresholds) {
      son.threshold = son_P->profile.threshold();
      if (params.scaling)
        son.scaled = scaled_score(params, son.score, *son.threshold);
    }
    son.is_on_way = is_on_way_[son_P->id];
    step.sons.push_back(son);
  }
  std::ranges::stable_sort(
      step.sons, std::greater{}, [this](const SonScore &son) {
        const WeightType score =
            by_path_ ? *son.probability : scores_[son.class_P->id];
        return std::isnan(score) ? -HUGE_VAL : score;
      });
  return step;
}

std::vector<Step> Explanation::steps_on_way() const {
  const ClassTable &classes = model_.model().classes();
  std::vector<Step> steps;
  // A father has a lower id than its sons.
  for (std::uint32_t id = 0; id < classes.size(); ++id) {
    const ClassData &father = classes.get_data(id);
    if (is_on_way_[id] && !father.sons.empty())
      steps.push_back(step_to(*father.sons.front()));
  }
  return steps;
}

bool Explanation::find_shares(const ClassData &data, TermShares &shares,
                              Failure &failure) {
  doc_.weigh(*data.father, model_.params());
  shares = {};
  shares.class_P = &data;
  if (is_product())
    add_product(data, shares);
  else
    add_sum(data, shares);
  const WeightType score = unscaled_score(data);
  const WeightType seen =
      by_path_ ? score
               : scaled_score(model_.params(), score, data.profile.threshold());
  const bool is_equal =
      is_product() && by_path_
          // The same logarithms in another order.
          ? std::abs(shares.total - score) <=
                1e-9 * std::max(1.0, std::abs(score))
          : is_product() || shares.total == score || std::isnan(score);
  if (is_equal && (seen == scores_[data.id] || std::isnan(seen))) {
    if (!is_product() || by_path_)
      shares.total = score;
    return true;
  }
  failure = {model_.model().classes().full_name(data.id), "",
             "its terms add up to " + number_text(shares.total) +
                 ", but the score is " + number_text(score)};
  return false;
}

// score = bias + sum of weight * strength, over the document's terms in their
// order; of those that the class does not know there is none.
void Explanation::add_sum(const ClassData &data, TermShares &shares) const {
  shares.bias = data.profile.bias();
  shares.total = shares.bias;
  for (const DocProfileEntry &entry : doc_) {
    const ClassProfileEntry *const entry_P = data.profile.find(entry.term);
    if (entry_P == nullptr)
      continue;
    TermShare share;
    share.term = entry.term;
    share.frequency = entry.freq;
    share.strength = entry.weight;
    share.weight =
        model_.classifier().scoring.weight(*entry_P, model_.params());
    share.positive = entry_P->pos_weight;
    share.negative = entry_P->neg_weight;
    share.contribution = share.weight * share.strength;
    share.favour = share.contribution;
    shares.total += share.contribution;
    shares.terms.push_back(share);
  }
}

// By steps: ln(score) = sum of ln(factor), over the document's terms in their
// order. By the path: ((sum of ln(factor)) - (the same of the rival)) / (number
// of terms that some brother knows), over those terms.
void Explanation::add_product(const ClassData &data, TermShares &shares) const {
  const std::vector<ClassData *> &brothers = data.father->sons;
  for (const ClassData *const brother_P : brothers) {
    if (brother_P == &data)
      continue;
    if (shares.rival_P == nullptr ||
        scores_[brother_P->id] > scores_[shares.rival_P->id]) {
      shares.rival_P = brother_P;
    }
  }
  const auto factor = [&](const ClassData &of, std::uint32_t term) {
    const ClassProfileEntry *const entry_P = of.profile.find(term);
    return entry_P == nullptr
               ? unknown_term_factor
               : model_.classifier().scoring.weight(*entry_P, model_.params());
  };
  const auto logarithm = [&](WeightType value) {
    return natural_logarithm(by_path_ ? std::max(value, least_factor) : value);
  };
  std::size_t nr_known = 0;
  for (const DocProfileEntry &entry : doc_) {
    const bool is_known =
        std::ranges::any_of(brothers, [&](const ClassData *of) {
          return of->profile.find(entry.term) != nullptr;
        });
    if (by_path_ && !is_known)
      continue;
    ++nr_known;
    TermShare share;
    share.term = entry.term;
    share.frequency = entry.freq;
    share.weight = factor(data, entry.term);
    share.contribution = logarithm(share.weight);
    share.favour = share.contribution;
    if (shares.rival_P != nullptr)
      share.favour -= logarithm(factor(*shares.rival_P, entry.term));
    shares.terms.push_back(share);
  }
  for (TermShare &share : shares.terms) {
    if (by_path_) {
      share.contribution =
          shares.rival_P == nullptr ? 0.0 : share.favour / double(nr_known);
    }
    shares.total += share.contribution;
  }
}

}  // namespace vek::explaining

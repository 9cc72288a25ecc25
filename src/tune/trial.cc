#include "tune/trial.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <span>
#include <sstream>

#include "base/messages.h"
#include "evaluation/confus.h"
#include "evaluation/judge.h"
#include "learning/calibrate.h"
#include "learning/classifiers.h"
#include "learning/heldout.h"
#include "learning/training.h"

namespace vek::tuning {
namespace {

bool has_words_only(const Settings &settings) {
  return settings.value("terms") == "words";
}

class ExampleDocuments : public Documents {
 public:
  ExampleDocuments(const Examples &examples, const Settings &settings,
                   const TermSet &active)
      : Documents(active),
        examples_(examples),
        words_only_(has_words_only(settings)) {}
  void read_profile(const std::string &name, DocProfile &profile) override {
    examples_.read(name, words_only_, profile);
  }

 private:
  const Examples &examples_;
  const bool words_only_;
};

Decision decide(std::span<const Ranking> assigned,
                const std::vector<std::uint32_t> &filed_in) {
  Decision decision;
  std::multiset<std::uint32_t> ids;
  for (const Ranking &ranking : assigned)
    ids.insert(ranking.class_data_P->id);
  for (const std::uint32_t id : filed_in) {
    const auto place = ids.find(id);
    if (place == ids.end()) {
      ++decision.missed;
    } else {
      ++decision.found;
      ids.erase(place);
    }
  }
  decision.wrong = static_cast<std::uint16_t>(ids.size());
  return decision;
}

Decisions judge(const ClassTable &classes, const TrainingSet &set,
                const ScoreMatrix &matrix, std::uint32_t nr_parts,
                const Params &params) {
  const Judging judging = learn_judging(classes, set, matrix, nr_parts, params);
  Judge judge(classes, {Scoring::Kind::sum, nullptr}, params, judging);
  Decisions decisions;
  for (std::size_t i = 0; i < set.documents().size(); ++i) {
    Answer answer;
    judge.judge_scores({matrix.row(i), matrix.nr_classes}, answer);
    decisions.push_back(
        decide(judge.assigned(answer), set.documents()[i].filed_in));
  }
  return decisions;
}

struct Sums {
  double numerator = 0.0;
  double denominator = 0.0;
};

// The F-measure of counts is the quotient.
Sums sums_of(const Decision &decision, double f_parameter) {
  const double f2 = f_parameter * f_parameter;
  const double numerator = (f2 + 1.0) * decision.found;
  return {numerator, numerator + f2 * decision.missed + decision.wrong};
}

Sums sums_of(const Decisions &decisions, double f_parameter) {
  Sums all;
  for (const Decision &decision : decisions) {
    const Sums one = sums_of(decision, f_parameter);
    all.numerator += one.numerator;
    all.denominator += one.denominator;
  }
  return all;
}

}  // namespace

std::vector<Decisions> try_out(const Examples &examples, const Trial &trial) {
  ClassTable classes;
  examples.fill(trial.nr_docs, classes);
  TermSet active_terms;
  ExampleDocuments documents(examples, trial.settings, active_terms);
  const TrainingSet set(classes, documents);
  const Params params = trial.settings.params();
  const Classifier &classifier = classifier_of(params.algorithm);
  const ScoreMatrix matrix = held_out_scores(
      classes, set, deal_to_parts(classes, set, trial.nr_parts), trial.nr_parts,
      classifier, params, examples.nr_terms(), 1);
  std::vector<Params> ways = {params};
  for (const std::string &changes : trial.other_judging)
    ways.push_back(trial.settings.with(changes).params());
  const bool has_steps = std::ranges::any_of(
      ways, [](const Params &way) { return way.walk == WalkKind::steps; });
  if (has_steps) {
    // Inner classes have the thresholds of their training.
    std::ostringstream no_scores;
    Messages no_messages;
    const Training training = {classes, documents, active_terms,
                               params,  no_scores, no_messages};
    update_profiles(training, examples.nr_terms());
    train_for_judging(training, classifier);
    if (classifier.has_thresholds)
      set_held_out_thresholds(classes, set, matrix, no_scores);
  }
  std::vector<Decisions> results;
  for (const Params &way : ways)
    results.push_back(judge(classes, set, matrix, trial.nr_parts, way));
  return results;
}

double work_of(const Settings &settings, std::uint32_t nr_parts,
               const Examples::Size &size) {
  // Measured on ten collections, in microseconds of a processor of its time.
  constexpr double learn = 0.8;
  constexpr double winnow_pass = 0.1;
  constexpr double machine = 0.012;
  constexpr double judge_class = 1.0;
  const Params params = settings.params();
  double training = learn * size.nr_terms;
  if (params.algorithm == Algorithm::winnow) {
    training += winnow_pass * params.winnow.max_iters * size.nr_terms;
  } else if (params.algorithm == Algorithm::linear) {
    training += machine * size.nr_terms_by_son;
  }
  if (has_words_only(settings))
    training *= size.share_of_words;
  return double(nr_parts - 1) * training +
         judge_class * double(size.nr_docs) * double(size.nr_classes);
}

Quality quality_of(const Decisions &decisions, double f_parameter) {
  double found = 0.0;
  double missed = 0.0;
  double wrong = 0.0;
  for (const Decision &decision : decisions) {
    found += decision.found;
    missed += decision.missed;
    wrong += decision.wrong;
  }
  Quality quality;
  quality.precision = found > 0.0 ? found / (found + wrong) : 0.0;
  quality.recall = found > 0.0 ? found / (found + missed) : 0.0;
  quality.f = f_measure(quality.precision, quality.recall, f_parameter);
  return quality;
}

double error_of_difference(const Decisions &a, const Decisions &b,
                           double f_parameter) {
  const Sums sums_a = sums_of(a, f_parameter);
  const Sums sums_b = sums_of(b, f_parameter);
  if (a.size() != b.size() || !(sums_a.denominator > 0.0) ||
      !(sums_b.denominator > 0.0)) {
    return 0.0;
  }
  const double f_a = sums_a.numerator / sums_a.denominator;
  const double f_b = sums_b.numerator / sums_b.denominator;
  double squares = 0.0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const Sums one_a = sums_of(a[i], f_parameter);
    const Sums one_b = sums_of(b[i], f_parameter);
    const double part =
        (one_a.numerator - f_a * one_a.denominator) / sums_a.denominator -
        (one_b.numerator - f_b * one_b.denominator) / sums_b.denominator;
    squares += part * part;
  }
  return std::sqrt(squares);
}

}  // namespace vek::tuning

#include "report/figures.h"

#include <algorithm>
#include <iterator>
#include <tuple>

namespace vek::reporting {
namespace {

using Ids = std::vector<std::uint32_t>;

std::optional<double> divide(std::uint64_t a, std::uint64_t b) {
  if (b == 0)
    return std::nullopt;
  return double(a) / double(b);
}

Ids without_repeats(Ids ids) {
  ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
  return ids;
}

// The table takes a place by the low bits, in which many pairs are equal.
struct PairHash {
  std::size_t operator()(std::uint64_t pair) const {
    pair = (pair ^ pair >> 32) * 0x9E3779B97F4A7C15;  // 2^64 / golden ratio
    return pair ^ pair >> 32;
  }
};

// Pairs grow with the square of what one document has, and of the classes.
constexpr std::size_t most_of_document = 100;
constexpr std::size_t most_counted = 2'000'000;
constexpr std::size_t most_told = 100'000;

void count_document(const Prediction &doc, const Verdict &verdict,
                    Figures &figures) {
  for (const std::uint32_t id : verdict.correct)
    ++figures.classes[id].counts.correct;
  for (const std::uint32_t id : verdict.missed)
    ++figures.classes[id].counts.missed;
  for (const std::uint32_t id : verdict.wrong)
    ++figures.classes[id].counts.wrong;
  for (const Ids *ids_P : {&verdict.missed, &verdict.wrong}) {
    for (const std::uint32_t id : without_repeats(*ids_P))
      --figures.classes[id].nr_agreeing;
  }
  const Outcome outcome = outcome_of(doc, verdict);
  figures.nr_right += outcome == Outcome::right;
  figures.nr_partly += outcome == Outcome::partly;
  figures.nr_without += outcome == Outcome::nothing;
  const std::uint32_t rank = best_rank(doc);
  figures.nr_first_right += rank == 1;
  if (rank != 0)
    figures.mean_reciprocal_rank += 1.0 / rank;
}

void find_averages(Figures &figures) {
  for (const auto &[counts, nr_agreeing] : figures.classes) {
    figures.total.correct += counts.correct;
    figures.total.missed += counts.missed;
    figures.total.wrong += counts.wrong;
    if (!counts.f1())
      continue;
    ++figures.nr_counted;
    figures.macro_precision += counts.precision().value_or(0);
    figures.macro_recall += counts.recall().value_or(0);
    figures.macro_f1 += *counts.f1();
  }
  const double divisor = std::max(figures.nr_counted, 1U);
  figures.macro_precision /= divisor;
  figures.macro_recall /= divisor;
  figures.macro_f1 /= divisor;
  figures.mean_reciprocal_rank /=
      double(std::max<std::uint64_t>(figures.nr_documents, 1));
}

}  // namespace

Verdict verdict_on(const Prediction &doc) {
  Verdict verdict;
  if (!doc.is_judged())
    return verdict;
  Ids filed_in = doc.filed_in;
  Ids assigned;
  for (const Scored &scored : doc.assigned)
    assigned.push_back(scored.class_id);
  std::ranges::sort(filed_in);
  std::ranges::sort(assigned);
  std::ranges::set_intersection(filed_in, assigned,
                                std::back_inserter(verdict.correct));
  std::ranges::set_difference(filed_in, assigned,
                              std::back_inserter(verdict.missed));
  std::ranges::set_difference(assigned, filed_in,
                              std::back_inserter(verdict.wrong));
  return verdict;
}

Outcome outcome_of(const Prediction &doc, const Verdict &verdict) {
  if (!doc.is_judged())
    return Outcome::is_new;
  if (verdict.missed.empty() && verdict.wrong.empty())
    return Outcome::right;
  if (doc.assigned.empty())
    return Outcome::nothing;
  return verdict.correct.empty() ? Outcome::wrong : Outcome::partly;
}

const char *name_of(Outcome outcome) {
  switch (outcome) {
    case Outcome::is_new:
      return "new";
    case Outcome::right:
      return "right";
    case Outcome::partly:
      return "partly";
    case Outcome::wrong:
      return "wrong";
    case Outcome::nothing:
      break;
  }
  return "nothing";
}

std::uint32_t best_rank(const Prediction &doc) {
  std::uint32_t best = 0;
  for (const std::uint32_t rank : doc.ranks) {
    if (rank != 0 && (best == 0 || rank < best))
      best = rank;
  }
  return best;
}

std::optional<double> Counts::precision() const {
  return divide(correct, assigned());
}

std::optional<double> Counts::recall() const {
  return divide(correct, support());
}

std::optional<double> Counts::f1() const {
  if (correct + missed + wrong == 0)
    return std::nullopt;
  const double p = precision().value_or(0);
  const double r = recall().value_or(0);
  return p + r == 0 ? 0 : 2 * p * r / (p + r);
}

Figures count_figures(const Predictions &predictions,
                      const std::vector<Verdict> &verdicts,
                      std::uint32_t nr_classes) {
  Figures figures;
  figures.classes.resize(nr_classes);
  for (const Prediction &doc : predictions.documents)
    ++(doc.is_judged() ? figures.nr_documents : figures.nr_new);
  for (ClassFigures &data : figures.classes)
    data.nr_agreeing = figures.nr_documents;
  for (std::size_t i = 0; i < verdicts.size(); ++i) {
    if (predictions.documents[i].is_judged())
      count_document(predictions.documents[i], verdicts[i], figures);
  }
  find_averages(figures);
  return figures;
}

std::vector<Verdict> judge_all(const Predictions &predictions) {
  std::vector<Verdict> verdicts;
  verdicts.reserve(predictions.documents.size());
  for (const Prediction &doc : predictions.documents)
    verdicts.push_back(verdict_on(doc));
  return verdicts;
}

std::vector<Confusion> find_confusions(const Predictions &predictions,
                                       const std::vector<Verdict> &verdicts,
                                       bool &is_complete) {
  const Ids nothing = {Confusion::no_class};
  tsl::robin_map<std::uint64_t, std::uint64_t, PairHash> counts;
  is_complete = true;
  for (std::size_t i = 0; i < verdicts.size(); ++i) {
    if (!predictions.documents[i].is_judged())
      continue;
    const Verdict &verdict = verdicts[i];
    Ids from = without_repeats(verdict.missed.empty() ? verdict.correct
                                                      : verdict.missed);
    Ids to = without_repeats(verdict.wrong);
    if (verdict.missed.empty() && to.empty())
      continue;
    for (Ids *ids_P : {&from, &to}) {
      is_complete = is_complete && ids_P->size() <= most_of_document;
      ids_P->resize(std::min(ids_P->size(), most_of_document));
    }
    for (const std::uint32_t filed_in : from) {
      for (const std::uint32_t got : to.empty() ? nothing : to) {
        const std::uint64_t pair = std::uint64_t{filed_in} << 32 | got;
        if (counts.size() < most_counted || counts.contains(pair))
          ++counts[pair];
        else
          is_complete = false;
      }
    }
  }
  std::vector<Confusion> confusions;
  confusions.reserve(counts.size());
  for (const auto &[pair, count] : counts) {
    confusions.push_back({static_cast<std::uint32_t>(pair >> 32),
                          static_cast<std::uint32_t>(pair), count});
  }
  std::ranges::sort(confusions, [](const Confusion &a, const Confusion &b) {
    return std::tuple(b.nr_documents, a.filed_in, a.got) <
           std::tuple(a.nr_documents, b.filed_in, b.got);
  });
  is_complete = is_complete && confusions.size() <= most_told;
  confusions.resize(std::min(confusions.size(), most_told));
  return confusions;
}

}  // namespace vek::reporting

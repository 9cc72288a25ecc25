#include "report/comparison.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <string_view>

namespace vek::reporting {
namespace {

constexpr std::size_t nr_resamples = 1000;
constexpr std::size_t nr_outside = 25;  // on each side

struct Pair {
  std::size_t first = 0;
  std::size_t second = 0;
};

std::vector<std::uint32_t> sorted(std::vector<std::uint32_t> ids) {
  std::ranges::sort(ids);
  return ids;
}

std::vector<std::uint32_t> sorted_classes(const Prediction &doc) {
  std::vector<std::uint32_t> ids;
  for (const Scored &scored : doc.assigned)
    ids.push_back(scored.class_id);
  return sorted(std::move(ids));
}

// By the order of the first run.
std::vector<Pair> find_pairs(const Predictions &first,
                             const Predictions &second,
                             Comparison &comparison) {
  tsl::robin_map<std::string_view, std::size_t> places;
  for (std::size_t i = 0; i < second.documents.size(); ++i) {
    if (second.documents[i].is_judged())
      places.emplace(second.documents[i].name, i);
  }
  std::vector<Pair> pairs;
  for (std::size_t i = 0; i < first.documents.size(); ++i) {
    const Prediction &doc = first.documents[i];
    if (!doc.is_judged())
      continue;
    const auto place = places.find(doc.name);
    if (place == places.end()) {
      ++comparison.nr_only_first;
    } else if (sorted(doc.filed_in) !=
               sorted(second.documents[place->second].filed_in)) {
      ++comparison.nr_refiled;
    } else {
      pairs.push_back({i, place->second});
    }
  }
  comparison.nr_common = pairs.size();
  comparison.nr_only_second =
      places.size() - pairs.size() - comparison.nr_refiled;
  return pairs;
}

// What the figures are made from, without the candidates, which take most room.
Prediction without_candidates(const Prediction &doc) {
  Prediction copy;
  copy.name = doc.name;
  copy.filed_in = doc.filed_in;
  copy.ranks = doc.ranks;
  copy.assigned = doc.assigned;
  return copy;
}

void find_changes(const Predictions &first, const Predictions &second,
                  const std::vector<Pair> &pairs, Comparison &comparison) {
  const auto nr_faults = [](const Verdict &verdict) {
    return verdict.missed.size() + verdict.wrong.size();
  };
  for (const Pair &pair : pairs) {
    const Prediction &before = first.documents[pair.first];
    const Prediction &after = second.documents[pair.second];
    if (sorted_classes(before) == sorted_classes(after))
      continue;
    const std::size_t faults_before = nr_faults(verdict_on(before));
    const std::size_t faults_after = nr_faults(verdict_on(after));
    const Change change = faults_after < faults_before   ? Change::better
                          : faults_after > faults_before ? Change::worse
                                                         : Change::other;
    comparison.changed.push_back({pair.first, pair.second, change});
    comparison.nr_first_alone_right += faults_before == 0 && faults_after != 0;
    comparison.nr_second_alone_right += faults_after == 0 && faults_before != 0;
  }
}

// The averages of a run over documents of which some are drawn several times.
class Resampler {
 public:
  Resampler(const std::vector<Verdict> &verdicts, std::uint32_t nr_classes)
      : verdicts_(verdicts), counts_(nr_classes) {}

  void count(const std::vector<std::uint32_t> &times) {
    std::ranges::fill(counts_, Counts());
    for (std::size_t i = 0; i < verdicts_.size(); ++i) {
      if (times[i] == 0)
        continue;
      for (const std::uint32_t id : verdicts_[i].correct)
        counts_[id].correct += times[i];
      for (const std::uint32_t id : verdicts_[i].missed)
        counts_[id].missed += times[i];
      for (const std::uint32_t id : verdicts_[i].wrong)
        counts_[id].wrong += times[i];
    }
    Counts total;
    double sum = 0;
    double nr_counted = 0;
    for (const Counts &counts : counts_) {
      total.correct += counts.correct;
      total.missed += counts.missed;
      total.wrong += counts.wrong;
      if (const std::optional<double> f1 = counts.f1()) {
        sum += *f1;
        ++nr_counted;
      }
    }
    micro_ = total.f1().value_or(0);
    macro_ = sum / std::max(nr_counted, 1.0);
  }

  double micro() const { return micro_; }
  double macro() const { return macro_; }

 private:
  const std::vector<Verdict> &verdicts_;
  std::vector<Counts> counts_;  // by class id
  double micro_ = 0;
  double macro_ = 0;
};

void set_bounds(std::vector<double> &differences, Difference &difference) {
  std::ranges::sort(differences);
  difference.low = differences[nr_outside];
  difference.high = differences[differences.size() - 1 - nr_outside];
}

void draw_resamples(const std::vector<Verdict> &first,
                    const std::vector<Verdict> &second,
                    std::uint32_t nr_classes, Comparison &comparison) {
  // The generator is the same everywhere, unlike the library's distributions.
  std::mt19937 generator(19470601);
  Resampler before(first, nr_classes);
  Resampler after(second, nr_classes);
  std::vector<std::uint32_t> times(first.size());
  std::vector<double> micro;
  std::vector<double> macro;
  for (std::size_t round = 0; round < nr_resamples; ++round) {
    std::ranges::fill(times, 0);
    for (std::size_t i = 0; i < times.size(); ++i)
      ++times[std::uint64_t{generator()} * times.size() >> 32];
    before.count(times);
    after.count(times);
    micro.push_back(after.micro() - before.micro());
    macro.push_back(after.macro() - before.macro());
  }
  set_bounds(micro, comparison.micro_f1);
  set_bounds(macro, comparison.macro_f1);
}

}  // namespace

const char *name_of(Change change) {
  return change == Change::better  ? "better"
         : change == Change::worse ? "worse"
                                   : "other";
}

Comparison compare(const Predictions &first, const Predictions &second,
                   std::uint32_t nr_classes) {
  Comparison comparison;
  const std::vector<Pair> pairs = find_pairs(first, second, comparison);
  Predictions before;
  Predictions after;
  for (const Pair &pair : pairs) {
    before.documents.push_back(without_candidates(first.documents[pair.first]));
    after.documents.push_back(
        without_candidates(second.documents[pair.second]));
  }
  const std::vector<Verdict> verdicts_before = judge_all(before);
  const std::vector<Verdict> verdicts_after = judge_all(after);
  comparison.first = count_figures(before, verdicts_before, nr_classes);
  comparison.second = count_figures(after, verdicts_after, nr_classes);
  find_changes(first, second, pairs, comparison);
  comparison.mcnemar = coin_probability(comparison.nr_first_alone_right,
                                        comparison.nr_second_alone_right);
  comparison.micro_f1.value = comparison.second.total.f1().value_or(0) -
                              comparison.first.total.f1().value_or(0);
  comparison.macro_f1.value =
      comparison.second.macro_f1 - comparison.first.macro_f1;
  if (!pairs.empty())
    draw_resamples(verdicts_before, verdicts_after, nr_classes, comparison);
  return comparison;
}

double coin_probability(std::uint64_t a, std::uint64_t b) {
  const double nr_throws = double(a) + double(b);
  const double all = std::lgamma(nr_throws + 1) - nr_throws * std::log(2.0);
  double sum = 0;
  for (std::uint64_t i = 0; i <= std::min(a, b); ++i) {
    sum += std::exp(all - std::lgamma(double(i) + 1) -
                    std::lgamma(nr_throws - double(i) + 1));
  }
  return std::min(1.0, 2 * sum);
}

}  // namespace vek::reporting

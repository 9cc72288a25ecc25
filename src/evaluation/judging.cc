#include "evaluation/judging.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/textio.h"

namespace vek {
namespace {

constexpr std::string_view first_word = "vek-judging 2\n";
constexpr std::string_view older_first_word = "vek-judging 1\n";

bool read_class(FieldReader &fields, ClassJudging &record) {
  Calibration &calibration = record.calibration;
  WeightType *const numbers[] = {&calibration.factor,    &calibration.offset,
                                 &calibration.slopes[0], &calibration.slopes[1],
                                 &calibration.slopes[2], &calibration.intercept,
                                 &calibration.inclusion, &record.threshold};
  for (WeightType *number_P : numbers) {
    if (!fields.read(*number_P) || !std::isfinite(*number_P))
      return false;
  }
  return record.threshold >= 0.0 && record.threshold <= 1.0;
}

bool read_factors(FieldReader &fields, std::size_t nr_heard,
                  std::vector<WeightType> &factors) {
  std::uint32_t count = 0;
  if (!fields.read(count) || (count != 0 && count != nr_heard))
    return false;
  factors.resize(count);
  for (WeightType &factor : factors) {
    if (!fields.read(factor) || !std::isfinite(factor))
      return false;
  }
  return true;
}

// They stand in the order of their ids.
std::span<ClassData *const> sons_of(const ClassData &data,
                                    std::size_t nr_classes) {
  const auto end = std::ranges::lower_bound(
      data.sons, nr_classes, {},
      [](const ClassData *son_P) -> std::size_t { return son_P->id; });
  return {data.sons.begin(), end};
}

// A father stands before its sons in the order of ids. Those from `nr_classes`
// on get 0.
template <class ProbabilitiesOfSons>
void go_down(const ClassTable &classes, std::size_t nr_classes,
             std::span<WeightType> probabilities,
             ProbabilitiesOfSons probabilities_of_sons) {
  std::vector<WeightType> values;
  std::ranges::fill(probabilities, 0.0);
  probabilities[0] = 1.0;
  for (std::uint32_t id = 0; id < nr_classes; ++id) {
    const auto sons = sons_of(classes.get_data(id), nr_classes);
    values.assign(sons.size(), 1.0);
    if (sons.size() > 1)
      probabilities_of_sons(sons, values);
    for (std::size_t i = 0; i < sons.size(); ++i)
      probabilities[sons[i]->id] = probabilities[id] * values[i];
  }
}

}  // namespace

std::string Judging::text() const {
  std::string text(first_word);
  append_number(text, nr_parts);
  text += share ? "\t1\t" : "\t0\t";
  append_number(text, classes.size());
  text += '\t';
  append_number(
      text, static_cast<std::uint32_t>(algorithm.value_or(Algorithm::winnow)));
  text += '\n';
  for (const ClassJudging &record : classes) {
    const Calibration &calibration = record.calibration;
    for (const WeightType number :
         {calibration.factor, calibration.offset, calibration.slopes[0],
          calibration.slopes[1], calibration.slopes[2], calibration.intercept,
          calibration.inclusion}) {
      append_exact_real(text, number);
      text += '\t';
    }
    append_exact_real(text, record.threshold);
    text += '\t';
    append_number(text, calibration.factors_of_sons.size());
    for (const WeightType factor : calibration.factors_of_sons) {
      text += '\t';
      append_exact_real(text, factor);
    }
    text += '\n';
  }
  return text;
}

bool Judging::parse(std::string_view text, const ClassTable &table) {
  *this = {};
  const bool is_older = text.starts_with(older_first_word);
  if (!is_older && !text.starts_with(first_word))
    return false;
  FieldReader fields(text.substr(first_word.size()));
  Judging read;
  std::uint32_t shares = 0;
  std::uint32_t count = 0;
  if (!fields.read(read.nr_parts) || !fields.read(shares) || shares > 1 ||
      !fields.read(count) || count > table.size() ||
      (count == 0 && table.size() > 0)) {
    return false;
  }
  std::uint32_t number = 0;
  if (!is_older) {
    if (!fields.read(number) ||
        number > static_cast<std::uint32_t>(Algorithm::linear)) {
      return false;
    }
    read.algorithm = static_cast<Algorithm>(number);
  }
  read.share = shares == 1;
  read.classes.resize(count);
  for (std::uint32_t id = 0; id < count; ++id) {
    ClassJudging &record = read.classes[id];
    if (!read_class(fields, record) ||
        (!is_older &&
         !read_factors(fields, heard_classes(table.get_data(id), count).size(),
                       record.calibration.factors_of_sons))) {
      return false;
    }
  }
  if (!fields.at_end())
    return false;
  *this = std::move(read);
  return true;
}

std::span<ClassData *const> heard_classes(const ClassData &data,
                                          std::size_t nr_classes) {
  auto sons = sons_of(data, nr_classes);
  while (sons.size() == 1)
    sons = sons_of(*sons.front(), nr_classes);
  return sons;
}

void path_probabilities(const ClassTable &classes, const Judging &judging,
                        std::span<const WeightType> evidence,
                        std::span<WeightType> probabilities) {
  // Upwards first: a class hears its sons, which stand behind it.
  const std::size_t nr_known = judging.classes.size();
  std::vector<WeightType> logits(nr_known);
  std::vector<WeightType> inclusive(nr_known);
  std::vector<WeightType> values;
  for (auto id = static_cast<std::uint32_t>(nr_known); id-- > 0;) {
    const ClassData &data = classes.get_data(id);
    const auto sons = sons_of(data, nr_known);
    values.clear();
    for (const ClassData *son_P : sons)
      values.push_back(logits[son_P->id]);
    // An only son has no logit, and hands on what it hears.
    inclusive[id] = sons.size() == 1 ? inclusive[sons.front()->id]
                                     : inclusive_value(values);
    const Calibration &calibration = judging.classes[id].calibration;
    values.clear();
    if (!calibration.factors_of_sons.empty()) {
      for (const ClassData *son_P : heard_classes(data, nr_known))
        values.push_back(evidence[son_P->id]);
    }
    logits[id] = calibration.logit(evidence[id], inclusive[id], values);
  }
  go_down(classes, nr_known, probabilities,
          [&](std::span<ClassData *const> sons,
              std::vector<WeightType> &probabilities_of_sons) {
            for (std::size_t i = 0; i < sons.size(); ++i)
              probabilities_of_sons[i] = logits[sons[i]->id];
            logits_to_probabilities(probabilities_of_sons, judging.share);
          });
}

void path_shares(const ClassTable &classes, bool share,
                 std::span<const WeightType> scores,
                 std::span<WeightType> probabilities) {
  go_down(
      classes, classes.size(), probabilities,
      [&](std::span<ClassData *const> sons, std::vector<WeightType> &values) {
        // Scores that no sum of squares can hold are as good as one that it
        // can.
        constexpr WeightType largest = 1e100;
        WeightType sum = share ? 0.0 : 1.0;
        for (std::size_t i = 0; i < sons.size(); ++i) {
          const WeightType score = scores[sons[i]->id];
          const WeightType x = score > 0.0 ? std::min(score, largest) : 0.0;
          values[i] = x * x;
          if (share)
            sum += values[i];
        }
        for (WeightType &value : values) {
          if (share) {
            value = sum > 0.0 ? value / sum : 1.0 / double(sons.size());
          } else {
            value /= 1.0 + value;
          }
        }
      });
}

}  // namespace vek

#include "evaluation/judging.h"

#include <cmath>
#include <limits>

#include "base/textio.h"

namespace vek {
namespace {

constexpr std::string_view first_word = "vek-judging 1\n";

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

// A father stands before its sons in the order of ids.
template <class ProbabilitiesOfSons>
void go_down(const ClassTable &classes, std::span<WeightType> probabilities,
             ProbabilitiesOfSons probabilities_of_sons) {
  std::vector<WeightType> values;
  probabilities[0] = 1.0;
  for (std::uint32_t id = 0; id < classes.size(); ++id) {
    const std::vector<ClassData *> &sons = classes.get_data(id).sons;
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
    text += '\n';
  }
  return text;
}

bool Judging::parse(std::string_view text, std::size_t nr_classes) {
  *this = {};
  if (!text.starts_with(first_word))
    return false;
  FieldReader fields(text.substr(first_word.size()));
  Judging read;
  std::uint32_t shares = 0;
  std::uint32_t count = 0;
  if (!fields.read(read.nr_parts) || !fields.read(shares) || shares > 1 ||
      !fields.read(count) || count != nr_classes) {
    return false;
  }
  read.share = shares == 1;
  read.classes.resize(nr_classes);
  for (ClassJudging &record : read.classes) {
    if (!read_class(fields, record))
      return false;
  }
  if (!fields.at_end())
    return false;
  *this = std::move(read);
  return true;
}

void path_probabilities(const ClassTable &classes, const Judging &judging,
                        std::span<const WeightType> evidence,
                        std::span<WeightType> probabilities) {
  // Upwards first: a class hears its sons, which stand behind it.
  std::vector<WeightType> logits(classes.size());
  std::vector<WeightType> inclusive(classes.size());
  std::vector<WeightType> values;
  for (auto id = static_cast<std::uint32_t>(classes.size()); id-- > 0;) {
    const ClassData &data = classes.get_data(id);
    values.clear();
    for (const ClassData *son_P : data.sons)
      values.push_back(logits[son_P->id]);
    // An only son has no logit, and hands on what it hears.
    inclusive[id] = data.sons.size() == 1 ? inclusive[data.sons.front()->id]
                                          : inclusive_value(values);
    logits[id] =
        judging.classes[id].calibration.logit(evidence[id], inclusive[id]);
  }
  go_down(classes, probabilities,
          [&](const std::vector<ClassData *> &sons,
              std::vector<WeightType> &probabilities_of_sons) {
            for (std::size_t i = 0; i < sons.size(); ++i)
              probabilities_of_sons[i] = logits[sons[i]->id];
            logits_to_probabilities(probabilities_of_sons, judging.share);
          });
}

void path_shares(const ClassTable &classes, bool share,
                 std::span<const WeightType> scores,
                 std::span<WeightType> probabilities) {
  go_down(classes, probabilities,
          [&](const std::vector<ClassData *> &sons,
              std::vector<WeightType> &values) {
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

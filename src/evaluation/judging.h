// What a run has learnt about its own scores: the probabilities that they stand
// for, and from which probability on a class is the answer.
#ifndef VEK_EVALUATION_JUDGING_H_
#define VEK_EVALUATION_JUDGING_H_

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/helpers.h"
#include "classes/classtab.h"
#include "evaluation/calibration.h"

namespace vek {

struct ClassJudging {
  // To the probability of the class given its father.
  Calibration calibration;
  // A document belongs to the class if the probability of the whole path is
  // higher.
  WeightType threshold = 0.5;

  bool operator==(const ClassJudging &) const = default;
};

struct Judging {
  // Parts of the training documents that were held out in turn.
  std::uint32_t nr_parts = 0;
  // The sons of a father share the probability of 1.
  bool share = true;
  // By class id; empty if nothing was learnt.
  std::vector<ClassJudging> classes;

  bool operator==(const Judging &) const = default;

  // The text form: `vek-judging 1`, nr_parts, 1 or 0 for `share` and the number
  // of classes, then a line for each class by id: factor, offset, three slopes,
  // intercept, inclusion and threshold. Numbers have all their digits, and tabs
  // between them.
  std::string text() const;
  // Reads that form. False, and nothing learnt, if the text is not of it, or is
  // about another number of classes than `nr_classes`.
  bool parse(std::string_view text, std::size_t nr_classes);
};

// Given the evidence for each class among its brothers (by class id; the top
// class's is not looked at), sets `probabilities` to those of the whole path to
// each class: the product of those of its steps. An only son has the
// probability of its father. `judging` must not be empty.
void path_probabilities(const ClassTable &classes, const Judging &judging,
                        std::span<const WeightType> evidence,
                        std::span<WeightType> probabilities);

// The same where nothing was learnt about the scores, which are scaled ones: a
// son has a share by the square of its score, of the sum over its brothers with
// `share`, of the sum with 1 otherwise; a score below 0 counts as 0.
void path_shares(const ClassTable &classes, bool share,
                 std::span<const WeightType> scores,
                 std::span<WeightType> probabilities);

}  // namespace vek

#endif  // VEK_EVALUATION_JUDGING_H_

// From the score of a class to the probability that a document is in it, given
// that it is in the class's father.
//
// First a logistic curve is laid through the scores (Platt, Probabilistic
// outputs for support vector machines, 1999, with his targets for few
// documents). Scores are seldom logistic to the ends, so the curve may then
// bend where its probability is about 1/8 and 7/8: its logit is a line in three
// pieces. A class with sons also hears them, for a group may be so wide that
// its own terms tell little, while its sons are easy to tell. To its logit
// comes a part of their inclusive value, the logarithm of the sum of e^logit
// (the nested logit model; McFadden, Modelling the choice of residential
// location, 1978), and, where they are not too many, the score of each son by a
// factor of its own (stacked generalisation; Ting and Witten, Issues in stacked
// generalization, Journal of Artificial Intelligence Research 10, 1999).
//
// Where a document has one class, the sons of a father share the probability of
// 1 (a softmax of their logits; Guo, Pleiss, Sun and Weinberger, On calibration
// of modern neural networks, ICML 2017, who call it vector scaling), and their
// curves are fitted to that together. What few documents say cannot bend a
// curve far: each parameter is drawn to where it began by a normal prior of
// variance 1, the factors of sons (for scores with the deviation 1) by one of
// variance 1/30.
//
// All fits are maxima of a likelihood that has only one, by Newton's method
// with steps that never lessen it; all sums have one order.
#ifndef VEK_EVALUATION_CALIBRATION_H_
#define VEK_EVALUATION_CALIBRATION_H_

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "base/helpers.h"

namespace vek {

struct Calibration {
  static constexpr std::size_t nr_pieces = 3;
  // The pieces of the line meet at -knot and knot.
  static constexpr WeightType knot = 2.0;
  // Of a class without documents: 6 in a million.
  static constexpr WeightType hopeless = -12.0;

  // The logistic curve: factor * score + offset. The factor is at least 0.
  WeightType factor = 0.0;
  WeightType offset = hopeless;
  // The slope of each piece, at least 0, and the logit of the whole curve where
  // that of the first is -knot.
  std::array<WeightType, nr_pieces> slopes = {1.0, 1.0, 1.0};
  WeightType intercept = -knot;
  // How much of the inclusive value is added, at least 0.
  WeightType inclusion = 0.0;
  // The factor of each son's score; empty if they are not heard one by one.
  std::vector<WeightType> factors_of_sons;

  // More sons are heard by their inclusive value alone: a fit takes time by the
  // square of their number.
  static constexpr std::size_t most_heard = 64;

  // What the score says, the inclusive value of the sons (of a leaf, 0) and
  // their scores, as many as there are factors; a score that is no number says
  // `hopeless`, that of a son counts as 0.
  WeightType logit(WeightType score, WeightType inclusive,
                   std::span<const WeightType> scores_of_sons = {}) const;

  bool operator==(const Calibration &) const = default;
};

// What the curve of one class is fitted to: the score of each document that is
// in the father, the inclusive value of the class's sons (none for a leaf), and
// whether the document is in the class; and of each son that is heard the
// scores of these documents.
struct CalibrationColumn {
  std::vector<WeightType> scores;
  std::vector<WeightType> inclusive;
  std::vector<std::uint8_t> is_member;
  std::vector<std::vector<WeightType>> scores_of_sons = {};
};

// The logistic curve alone. Without a member it is `hopeless`; where scores say
// nothing, or the opposite, its factor is 0.
Calibration fit_logistic(const CalibrationColumn &column);

// The curves of the sons of one father; the columns are about the same
// documents in the same order. With `share` the sons share the probability of
// 1, and documents that are in no son are left out.
std::vector<Calibration> fit_sons(std::span<const CalibrationColumn> columns,
                                  bool share);

// ln(sum of e^value); of no values, 0.
WeightType inclusive_value(std::span<const WeightType> logits);

// Turns logits into probabilities: each by itself, or with `share` so that they
// add up to 1.
void logits_to_probabilities(std::span<WeightType> values, bool share);

// The score from which on a document counts as being in the class: as many
// others lie above it as documents of the class lie below (break-even point).
// Half-way between two scores; infinite without a member or a score.
WeightType break_even(const CalibrationColumn &column);

}  // namespace vek

#endif  // VEK_EVALUATION_CALIBRATION_H_

// What a run has learnt about its own scores: the probabilities that they stand
// for, and from which probability on a class is the answer.
#ifndef VEK_EVALUATION_JUDGING_H_
#define VEK_EVALUATION_JUDGING_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/helpers.h"
#include "classes/classtab.h"
#include "evaluation/calibration.h"
#include "params/params.h"

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
  // Whose scores they were; empty if that is not known.
  std::optional<Algorithm> algorithm;
  // Parts of the training documents that were held out in turn.
  std::uint32_t nr_parts = 0;
  // The sons of a father share the probability of 1.
  bool share = true;
  // By class id; empty if nothing was learnt. Of classes behind these, which
  // a test list has named since, nothing is known: they have the probability 0.
  std::vector<ClassJudging> classes;

  WeightType threshold(std::uint32_t id) const {
    return id < classes.size() ? classes[id].threshold
                               : ClassJudging().threshold;
  }

  bool operator==(const Judging &) const = default;

  // The text form: `vek-judging 2`, nr_parts, 1 or 0 for `share`, the number of
  // classes and that of the algorithm, then a line for each class by id:
  // factor, offset, three slopes, intercept, inclusion, threshold, the number
  // of sons that are heard one by one, and their factors. Numbers have all
  // their digits, and tabs between them.
  std::string text() const;
  // Reads that form, or that of `vek-judging 1`, which has no algorithm, and
  // whose lines end with the threshold. False, and nothing learnt, if the text
  // is of neither, or does not fit the first of these classes.
  bool parse(std::string_view text, const ClassTable &table);
  // It says nothing of the scores of that algorithm.
  bool is_of_another(Algorithm other) const {
    return algorithm && *algorithm != other;
  }
};

// The classes that a class hears: its sons, or those of an only son. Empty for
// a leaf. Ids from `nr_classes` on do not count.
std::span<ClassData *const> heard_classes(const ClassData &data,
                                          std::size_t nr_classes);

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

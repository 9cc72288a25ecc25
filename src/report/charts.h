// What the page draws: how well the scores of a class tell its documents from
// others, whether probabilities hold what they promise, and how the branches of
// the hierarchy fare.
#ifndef VEK_REPORT_CHARTS_H_
#define VEK_REPORT_CHARTS_H_

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "report/figures.h"
#include "report/predictions.h"

namespace vek::reporting {

// The scores of one class in all documents that have it among their candidates,
// the best leaves and their own. Where it is not among them, its score is taken
// to be lower than all others, so a member without a score is never found.
struct ScoreChart {
  struct Point {
    double recall = 0;
    double precision = 0;
  };
  static constexpr std::size_t nr_bins = 24;

  // What a threshold at each score would have led to, from the highest score
  // down; thinned out so that neighbours differ visibly.
  std::vector<Point> curve;
  // Precision at each member's score, summed up and divided by the number of
  // members: 1 if all members are above all others.
  double average_precision = 0;
  // Equal bins from `low` to `high`, between which nearly all scores lie; the
  // others are in the first and the last bin. All 0 if there are no scores.
  double low = 0;
  double high = 0;
  std::array<std::uint32_t, nr_bins> members{};
  std::array<std::uint32_t, nr_bins> others{};
};

// By class id.
std::vector<ScoreChart> chart_scores(const Predictions &predictions,
                                     std::uint32_t nr_classes);

// What a score of each class has to exceed, by class id, as the first document
// tells; no number for a class that never has a score.
std::vector<double> find_thresholds(const Predictions &predictions,
                                    std::uint32_t nr_classes);

// Classes that were assigned with a probability in the same tenth.
struct ReliabilityBin {
  std::uint64_t nr_assigned = 0;
  std::uint64_t nr_correct = 0;
  double sum = 0;  // of the probabilities
};
struct Reliability {
  static constexpr std::size_t nr_bins = 10;

  std::array<ReliabilityBin, nr_bins> bins;
  std::uint64_t nr_assigned = 0;  // 0 without probabilities
  // Over the bins, weighted by nr_assigned: distance of the mean probability
  // from the share that is correct.
  double error = 0;
};
Reliability measure_reliability(const Predictions &predictions);

// A class or a father of classes. A document is in it, or got it, if it is in
// or got any class at or below it, and counts once.
struct TreeNode {
  static constexpr std::uint32_t none = 0xFFFFFFFF;

  std::string_view name;  // last component of the path; of the class names
  std::uint32_t father = none;
  std::uint32_t class_id = none;  // none if no document is filed here
  Counts counts;
};
// Fathers come before sons. Components behind the 64th level stay together, as
// a name with slashes.
std::vector<TreeNode> build_tree(const ClassNames &names,
                                 const Predictions &predictions);

}  // namespace vek::reporting

#endif  // VEK_REPORT_CHARTS_H_

// The scores of all training documents for one class, and the threshold that
// follows from them.
//
// The threshold is the point at which as many documents of the class lie below
// it as other documents lie above it, found on a grid of score bins and
// refined by linear interpolation.
#ifndef VEK_EVALUATION_SCORETABLE_H_
#define VEK_EVALUATION_SCORETABLE_H_

#include <cstddef>
#include <string>
#include <vector>

#include "classes/classtab.h"
#include "run/helpers.h"
#include "run/output_file.h"

namespace vek {

class ScoreTable {
 public:
  using Scores = std::vector<WeightType>;

  // The scores of the class's training documents, and of all others, each in
  // ascending order with duplicates once the table is complete.
  Scores pos;
  Scores neg;

  // Fills the empty table with the unscaled score of every cached profile, its
  // weights as they are, and writes the class's two lines to `scores`.
  void collect(ClassData *class_data_P);

  // Sorts what was put in; what is not a number goes last.
  void complete();

  // Writes two lines to `scores`: the name, " + " and the `pos` scores, then
  // the name, " - " and the `neg` scores, each followed by a blank.
  void write(const std::string &class_name) const;

  // Both sides have a score, all scores are finite, and the grid has a crossing
  // to be found: without these there is no threshold.
  bool has_threshold() const;

  // The threshold, never negative. Needs has_threshold().
  //
  // With n the number of `pos` scores and w the width of all scores, edge i of
  // the grid stands at (i * w) / n, counted from 0 and not from the lowest
  // score; only the outer edges lie at the ends of the scores. A score equal
  // to the highest is in no bin.
  WeightType determine_threshhold() const;

 private:
  struct Grid;
  Grid make_grid() const;
};

// How many scores x of an ascending list have low <= x < high.
int count_scores(const ScoreTable::Scores &values, WeightType low,
                 WeightType high);

// Scores every leaf class of the table, in the order of the table, writes its
// lines to `scores`, sets its threshold and logs it. A leaf that has none
// keeps the one that it has.
void set_leaf_thresholds();

// scores.dat, open while a training run trains and tests.
extern OutputFile scores;

}  // namespace vek

#endif  // VEK_EVALUATION_SCORETABLE_H_

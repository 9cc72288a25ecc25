// Thresholds: from which score on a document is in a class, judged by the
// scores of all training documents.
//
// The threshold of a class is its break-even point: as many documents of the
// class lie below it as other documents lie above it, so that precision equals
// recall (Lewis, An evaluation of phrasal and clustered representations on a
// text categorization task, SIGIR 1992; called Scut in Yang, A study on
// thresholding strategies for text categorization, SIGIR 2001). It is found on
// a grid of score bins and refined by linear interpolation.
#ifndef VEK_EVALUATION_THRESHOLDS_H_
#define VEK_EVALUATION_THRESHOLDS_H_

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "base/helpers.h"
#include "base/messages.h"
#include "classes/classtab.h"
#include "evaluation/scoring.h"
#include "intake/documents.h"

namespace vek {

class ScoreTable {
 public:
  using Scores = std::vector<WeightType>;

  // The scores of the class's training documents, and of all others, each in
  // ascending order with duplicates once the table is complete.
  Scores pos;
  Scores neg;

  // Sorts both lists. Scores that are not a number go last.
  void complete();

  // Writes two lines: the name, " + " and the `pos` scores, then the name,
  // " - " and the `neg` scores, each followed by a blank.
  void write(std::ostream &os, const std::string &class_name) const;

  // The threshold, never negative; none unless both sides have a score, all
  // scores are finite, and the grid has a crossing to be found.
  //
  // With n the number of `pos` scores and w the width of all scores, edge i of
  // the grid stands at (i * w) / n, counted from 0 and not from the lowest
  // score; only the outer edges lie at the ends of the scores. A score equal
  // to the highest is in no bin.
  std::optional<WeightType> threshold() const;

 private:
  struct Grid;
  Grid make_grid() const;
};

// How many scores x of an ascending list have low <= x < high.
int count_scores(const ScoreTable::Scores &values, WeightType low,
                 WeightType high);

// Scores every leaf class of the table, in its order, against every document,
// with the weights that the documents have: those of the father against which
// they were weighed last. Writes the leaf's lines to `scores`, sets its
// threshold and says so in a message. A leaf without a threshold of its own
// keeps the one that it has.
void set_leaf_thresholds(ClassTable &classes, const Documents::Cache &documents,
                         const Scoring &scoring, const Params &params,
                         std::ostream &scores, Messages &messages);

}  // namespace vek

#endif  // VEK_EVALUATION_THRESHOLDS_H_

// The ordered answer for one document: how strongly it belongs to which class.
#ifndef VEK_EVALUATION_RANKS_H_
#define VEK_EVALUATION_RANKS_H_

#include <string>
#include <vector>

#include "base/helpers.h"
#include "classes/classtab.h"

namespace vek {

struct Ranking {
  // Not owned: lives in the class table.
  const ClassData *class_data_P;
  WeightType score;
};

class Ranks : public std::vector<Ranking> {
 public:
  void add(const ClassData *class_data_P, const WeightType &score) {
    push_back({class_data_P, score});
  }

  // Highest score first. Equal scores keep their order, so that it does not
  // depend on the library's sort which of them a cut drops. Scores that are not
  // a number go last.
  void sort();

  // The line of a rank file: the document's name with its ".txt", then each
  // class's full name, a colon and the score with five significant digits.
  std::string line(const std::string &name, const ClassTable &classes) const;
};

}  // namespace vek

#endif  // VEK_EVALUATION_RANKS_H_

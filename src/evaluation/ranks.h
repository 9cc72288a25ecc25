// The ordered answer for one document: how strongly it belongs to which class.
#ifndef VEK_EVALUATION_RANKS_H_
#define VEK_EVALUATION_RANKS_H_

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include "classes/classtab.h"
#include "run/helpers.h"

namespace vek {

struct Ranking {
  // Not owned: lives in the class table.
  ClassData *class_data_P;
  WeightType score;
};

class Ranks : public std::vector<Ranking> {
 public:
  void add(ClassData *class_data_P, const WeightType &score) {
    push_back({class_data_P, score});
  }

  // Highest score first. Equal scores keep their order, so that what a cut
  // drops does not depend on a library; what is not a number goes last.
  void sort();

  // Writes one line: the document's name with its ".txt", then each class's
  // full name, a colon and the score with five significant digits. Ends the run
  // if the stream has failed behind a list that is not empty.
  void print(const std::string &name, std::ostream &os) const;
};

// Sets `buffer` to "rank" and a number that is 0 in the first call of a run
// and grows by one with each. A name that would not fit into `size` bytes with
// its end is cut.
void next_rank_file_name(char *buffer, std::size_t size);

}  // namespace vek

#endif  // VEK_EVALUATION_RANKS_H_

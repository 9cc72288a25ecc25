// With which brothers a class is confused, by the predictions of a run.
#ifndef VEK_SHOW_CONFUSIONS_H_
#define VEK_SHOW_CONFUSIONS_H_

#include <cstdint>
#include <string>
#include <vector>

#include "base/failure.h"

namespace vek::showing {

struct Confused {
  std::string with;           // a class; empty: no class
  std::uint64_t nr_lost = 0;  // documents of the class that got that one
  std::uint64_t nr_won = 0;   // documents of that one that got the class
};

struct Confusions {
  std::string file;             // of the predictions; empty: there is none
  std::vector<Confused> pairs;  // most frequent first
};

// Looks into that predictions file, or into the newest one in that directory
// that has test documents. A class with sons stands for all below it, and
// what lies below a brother counts as the brother; other classes stand for
// themselves. False, with `failure` filled in, if there is none or if it is
// damaged.
bool find_confusions(const std::string &place, const std::string &class_path,
                     Confusions &confusions, Failure &failure);

// Whether the place has one at all.
bool has_predictions(const std::string &place);

}  // namespace vek::showing

#endif  // VEK_SHOW_CONFUSIONS_H_

// What people have set right in folders of classes, for the training list of
// the model.
//
// In a directory that vek-sort sorts into, a text that stands where it was
// brought says nothing. One that somebody has moved is learnt, and from then on
// stands where it was learnt. In any other directory all texts are learnt.
//
// Two texts of the same size and time, links or copies, that have the same
// words are one in several classes.
#ifndef VEK_SORT_LEARN_H_
#define VEK_SORT_LEARN_H_

#include <cstddef>
#include <functional>
#include <string>

#include "base/failure.h"
#include "convert/settings.h"

namespace vek::sorting {

struct Learnt {
  std::size_t nr_new = 0;      // in the training list
  std::size_t nr_changed = 0;  // have other classes there now
  std::size_t nr_left = 0;     // told of, and not learnt
};

// Both paths are whole ones. May be called while others sort into the
// directory.
bool learn(const std::string &directory, const std::string &model_directory,
           const convert::Settings &conversion,
           const std::function<void(const Failure &failure)> &report,
           Learnt &learnt, Failure &failure);

}  // namespace vek::sorting

#endif  // VEK_SORT_LEARN_H_

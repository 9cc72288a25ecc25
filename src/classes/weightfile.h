// Winnow's weights as text, in full precision.
//
// A class profile's own file holds statistics and counts only, from which no
// weight can be computed again, and its threshold has six digits, so that a
// score on the threshold could change sides. Weights and threshold stand in a
// file beside it: a line with the number of entries and the threshold, then for
// each entry, by ascending term id, the term, the positive and the negative
// weight, separated by tabs.
#ifndef VEK_CLASSES_WEIGHTFILE_H_
#define VEK_CLASSES_WEIGHTFILE_H_

#include <ostream>
#include <string_view>

#include "classes/classprof.h"

namespace vek {

// What a classifier keeps of a class: columns of the class profile's file, and
// a file beside it for what these have no room for.
struct ClassFileFormat {
  ProfileColumns columns = ProfileColumns::frequencies;
  const char *weights_suffix = nullptr;  // null: there is no such file
  bool (*write_weights)(std::ostream &os,
                        const ClassProfile &profile) = nullptr;
  bool (*parse_weights)(std::string_view text, ClassProfile &profile) = nullptr;
};

// False if the stream fails.
bool write_winnow_weights(std::ostream &os, const ClassProfile &profile);

// Sets the weights of the profile's entries. Sets its threshold too, unless the
// profile's differs from it in six digits: then the profile's was changed
// later, and counts. False, with all weights 0, if the text is not of that form
// or is about other terms than the profile.
bool parse_winnow_weights(std::string_view text, ClassProfile &profile);

}  // namespace vek

#endif  // VEK_CLASSES_WEIGHTFILE_H_

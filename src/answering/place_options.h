// The options with which a companion is told where a kept model is.
#ifndef VEK_ANSWERING_PLACE_OPTIONS_H_
#define VEK_ANSWERING_PLACE_OPTIONS_H_

#include "answering/kept_model.h"

namespace CLI {
class App;
}

namespace vek {

// -r, -d and -a, which fill in `place`; it must outlive the reading of the
// command line. A letter of no classifier is refused.
void add_place_options(CLI::App &app, KeptModel::Place &place);

}  // namespace vek

#endif  // VEK_ANSWERING_PLACE_OPTIONS_H_

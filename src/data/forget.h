// Takes documents out of the profile store, so that the next run analyses them
// anew.
#ifndef VEK_DATA_FORGET_H_
#define VEK_DATA_FORGET_H_

#include <string>
#include <vector>

#include "base/failure.h"

namespace vek::keeping {

// The documents' entries leave the store's index; their blocks stay behind. A
// name that is not stored is tried without a ".txt" at its end; those that
// still are not known are put into `unknown`, and change nothing.
//
// At each moment the index is the old one or the new one. False, with `failure`
// filled in, if it cannot be read or written.
bool forget_documents(const std::string &directory,
                      const std::vector<std::string> &names,
                      std::vector<std::string> &unknown, Failure &failure);

}  // namespace vek::keeping

#endif  // VEK_DATA_FORGET_H_

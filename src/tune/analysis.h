// Profiles of documents that the data directory has not stored yet: vek makes
// them, as for any run.
#ifndef VEK_TUNE_ANALYSIS_H_
#define VEK_TUNE_ANALYSIS_H_

#include <string>
#include <vector>

#include "base/failure.h"
#include "params/params.h"

namespace vek::tuning {

// Has vek analyse the documents and store their profiles in the data directory
// that `params` names; nothing else in it is changed. False, with `failure`
// filled in, if vek does not succeed, or a signal has stopped it.
bool analyse_documents(const std::vector<std::string> &names,
                       const Params &params, Failure &failure);

}  // namespace vek::tuning

#endif  // VEK_TUNE_ANALYSIS_H_

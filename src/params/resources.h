// Reading a resource file as vek does, for programs that return a failure
// instead of ending a run.
#ifndef VEK_PARAMS_RESOURCES_H_
#define VEK_PARAMS_RESOURCES_H_

#include <string>

#include "base/failure.h"
#include "params/params.h"

namespace vek {

// A path of somebody who works in `directory`: below it, unless it is absolute.
// An empty directory is the working directory.
std::string path_from(const std::string &directory, const std::string &path);

// Reads into `params` the resource file that vek's option -r names in that
// directory, with or without its ending `.rc`. Without a name it is `vek.rc`,
// and if there is none, all stays as it is. False, with the first error in
// `failure`, if the file cannot be read or has an error.
bool read_resources(const std::string &directory, const std::string &name,
                    Params &params, Failure &failure);

}  // namespace vek

#endif  // VEK_PARAMS_RESOURCES_H_

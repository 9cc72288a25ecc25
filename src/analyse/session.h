// A run of vek-analyse: requests in, answers out.
#ifndef VEK_ANALYSE_SESSION_H_
#define VEK_ANALYSE_SESSION_H_

#include "analyse/options.h"

namespace vek::analysis {

enum ExitStatus {
  exit_good = 0,
  exit_documents_failed = 1,  // some have no result
  // 2: see exit_usage in base/command_line.h
  exit_failure = 3,  // the input or the output is broken
};

// Answers the paths on standard input until it ends, as `options` say. Reports
// on standard error. Returns the status to exit with.
int run_session(const Options &options);

}  // namespace vek::analysis

#endif  // VEK_ANALYSE_SESSION_H_

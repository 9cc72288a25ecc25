// Parts of a run in processes of their own, so that a case can follow the data
// directory from run to run: each starts with fresh global objects, and they
// are destroyed at its end.
#ifndef VEK_TESTS_SUPPORT_CHILD_RUN_H_
#define VEK_TESTS_SUPPORT_CHILD_RUN_H_

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "run/log.h"
#include "support/messages.h"

namespace vek {

struct RunResult {
  int status;          // of exit(), or 1000 and the number of a signal
  std::string screen;  // what stood on standard error
  std::string log;     // the log behind its opening lines
};

// The log is `vek.log` in the working directory, as in any run.
template <class Body>
RunResult run_in_child(Body body) {
  std::fflush(nullptr);
  const pid_t pid = fork();
  if (pid == 0) {
    if (std::freopen("screen", "w", stderr) == nullptr)
      std::_Exit(99);
    // A run that hangs is a failure.
    alarm(60);
    errno = 0;
    log_file.open("vek.log");
    body();
    std::exit(0);
  }
  int status = 0;
  waitpid(pid, &status, 0);
  return {WIFSIGNALED(status) ? 1000 + WTERMSIG(status) : WEXITSTATUS(status),
          read_text("screen"), logged()};
}

// Ends such a run as a power cut does: no destructor, no last write.
[[noreturn]] inline void be_killed() {
  std::_Exit(0);
}

}  // namespace vek

#endif  // VEK_TESTS_SUPPORT_CHILD_RUN_H_

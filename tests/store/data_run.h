// Runs over files in processes of their own, so that a case can follow them
// from run to run: end_run() ends them as it does vek.
#ifndef VEK_TESTS_STORE_DATA_RUN_H_
#define VEK_TESTS_STORE_DATA_RUN_H_

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "log/log.h"
#include "store/database.h"
#include "support/temporary_directory.h"

namespace vek {

struct RunResult {
  int status;          // of exit(), or 1000 and the number of a signal
  std::string screen;  // what stood on standard error
};

template <class Body>
RunResult run_in_child(Body body) {
  std::fflush(nullptr);
  const pid_t pid = fork();
  if (pid == 0) {
    if (std::freopen("screen", "w", stderr) == nullptr)
      std::_Exit(99);
    std::setvbuf(stderr, nullptr, _IONBF, 0);
    // A run that hangs is a failure.
    alarm(60);
    set_verbosity(0);
    errno = 0;
    body();
    end_run(0);
  }
  int status = 0;
  waitpid(pid, &status, 0);
  return {WIFSIGNALED(status) ? 1000 + WTERMSIG(status) : WEXITSTATUS(status),
          read_text("screen")};
}

// What a run has.
struct Data {
  StringPool pool;
  AtomTable atoms{pool};
  TermTable terms;
  ClassTable classes;
  TermSet active_terms;
  DataBase base{atoms, terms, classes, active_terms};
};

// A run over the directory `data`.
template <class Body>
RunResult run_over_data(Body body) {
  return run_in_child([&] {
    static Data data;
    data.base.open("data");
    data.base.read(false, {});
    errno = 0;
    body(data);
  });
}

}  // namespace vek

#endif  // VEK_TESTS_STORE_DATA_RUN_H_

#include "sort/signals.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <initializer_list>

namespace vek::sorting {
namespace {

volatile std::sig_atomic_t stopped = 0;
volatile std::sig_atomic_t reloaded = 0;
volatile std::sig_atomic_t is_reloading = 0;
int ends[2] = {-1, -1};

// poll() is to return, whether it waits already or not.
void note(int signal) {
  const int code = errno;
  if (signal == SIGHUP && is_reloading != 0)
    reloaded = 1;
  else if (stopped == 0)
    stopped = signal;
  [[maybe_unused]] const ssize_t count = write(ends[1], "", 1);
  errno = code;
}

}  // namespace

int watch_signals(bool reload) {
  if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
    return -1;
  is_reloading = reload ? 1 : 0;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction action = {};
    const bool is_ignored = sigaction(signal, nullptr, &action) != 0 ||
                            action.sa_handler == SIG_IGN;
    if (is_ignored && !(signal == SIGHUP && reload))
      continue;
    action = {};
    action.sa_handler = note;
    sigaction(signal, &action, nullptr);
  }
  return ends[0];
}

int stop_signal() {
  return stopped;
}

bool take_reload() {
  char bytes[64];
  while (read(ends[0], bytes, sizeof bytes) > 0) {
  }
  const bool is_wanted = reloaded != 0;
  reloaded = 0;
  return is_wanted;
}

void end_by(int signal) {
  std::signal(signal, SIG_DFL);
  std::raise(signal);
  std::_Exit(128 + signal);
}

}  // namespace vek::sorting

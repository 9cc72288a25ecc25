#include "tune/stopping.h"

#include <csignal>
#include <cstdlib>

namespace vek::tuning {
namespace {

constexpr int watched[] = {SIGINT, SIGTERM, SIGHUP};
volatile std::sig_atomic_t noted = 0;

void note(int signal) {
  if (noted == 0)
    noted = signal;
}

}  // namespace

void watch_stop_signals() {
  for (const int signal : watched) {
    struct sigaction action = {};
    if (sigaction(signal, nullptr, &action) != 0 ||
        action.sa_handler == SIG_IGN) {
      continue;
    }
    // Without SA_RESTART: poll() and waitpid() are to return.
    action = {};
    action.sa_handler = note;
    sigaction(signal, &action, nullptr);
  }
}

int stop_signal() {
  return noted;
}

void forget_stop_signals() {
  for (const int signal : watched) {
    struct sigaction action = {};
    if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler == note)
      std::signal(signal, SIG_DFL);
  }
}

void end_by(int signal) {
  std::signal(signal, SIG_DFL);
  std::raise(signal);
  std::_Exit(128 + signal);
}

}  // namespace vek::tuning

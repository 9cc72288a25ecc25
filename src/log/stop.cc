#include "log/stop.h"

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <ctime>

#include "log/log.h"

namespace vek {
namespace {

volatile std::sig_atomic_t requested = 0;  // the signal's number
volatile std::sig_atomic_t from_terminal = 0;
bool is_stopping = false;
bool is_all_saved = true;

volatile std::int64_t time_of_request = 0;  // in milliseconds

std::int64_t milliseconds() {
  timespec now = {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000;
}

// Runs with both signals blocked.
void note_signal(int number, siginfo_t *info_P, void *) {
  if (requested == 0) {
    time_of_request = milliseconds();
    from_terminal = info_P->si_code == SI_KERNEL ? 1 : 0;
    requested = number;
  } else if (milliseconds() - time_of_request >= 100) {
    std::signal(number, SIG_DFL);
    std::raise(number);
  }
}

void watch(int number) {
  struct sigaction action = {};
  // As in a job that a shell has put into the background.
  if (sigaction(number, nullptr, &action) != 0 || action.sa_handler == SIG_IGN)
    return;
  action = {};
  action.sa_sigaction = note_signal;
  sigaddset(&action.sa_mask, SIGINT);
  sigaddset(&action.sa_mask, SIGTERM);
  action.sa_flags = SA_SIGINFO | SA_RESTART;
  sigaction(number, &action, nullptr);
}

void tell() {
  if (!is_stopping)
    return;
  error("stopped by signal %d, %s", static_cast<int>(requested),
        is_all_saved ? "what was analysed is kept" : "not all is saved");
}

}  // namespace

void watch_stop_signals() {
  std::atexit(tell);
  watch(SIGINT);
  watch(SIGTERM);
}

void stop_if_requested() {
  if (requested == 0)
    return;
  is_stopping = true;
  end_run(128 + requested);
}

bool is_stopped_by_terminal() {
  return from_terminal != 0;
}

void set_all_saved(bool all_saved) {
  is_all_saved = all_saved;
}

EndBySignal::~EndBySignal() {
  if (!is_stopping || !is_all_saved)
    return;
  std::fflush(nullptr);
  std::signal(requested, SIG_DFL);
  std::raise(requested);
}

}  // namespace vek

// SIGINT and SIGTERM end the work behind the batch in hand; SIGHUP has the
// model read anew.
#ifndef VEK_SORT_SIGNALS_H_
#define VEK_SORT_SIGNALS_H_

namespace vek::sorting {

// Returns a descriptor that can be read when a signal has come, or -1 with
// errno set. Without `reload` SIGHUP ends the work as well. A signal that is
// ignored stays so.
int watch_signals(bool reload);

int stop_signal();   // that has come, or 0
bool take_reload();  // SIGHUP has come since the last call

[[noreturn]] void end_by(int signal);

}  // namespace vek::sorting

#endif  // VEK_SORT_SIGNALS_H_

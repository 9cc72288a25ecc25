// SIGINT and SIGTERM: a run ends by itself at its next safe point, with all on
// the disk that belongs there, and only then by the signal.
#ifndef VEK_LOG_STOP_H_
#define VEK_LOG_STOP_H_

namespace vek {

// From here on the first of the two signals is only noted; a later one, of
// either kind, ends the process at once. What comes within a tenth of a second
// is the same stop: some programs signal a process and then its group. A signal
// that is ignored stays so.
// To be called when the global objects are there: a line that tells of the stop
// is logged before they are destroyed.
void watch_stop_signals();

// A safe point, at which what is stored is complete: ends the run by exit() if
// one of the signals has come.
void stop_if_requested();

// The signal was sent by the terminal. Then the processes that were started
// here have got it too, and what they say is no longer to be relied on.
bool is_stopped_by_terminal();

// Whether, were the run to end now, nothing would be missing on the disk. True
// unless it is told otherwise.
void set_all_saved(bool all_saved);

// Ends the process by the signal that has stopped the run, if one has, and if
// all was saved; else the status stays that of the failure. To be built as the
// first object, so that it is destroyed as the last one.
class EndBySignal {
 public:
  EndBySignal() = default;
  ~EndBySignal();
  EndBySignal(const EndBySignal &) = delete;
  EndBySignal &operator=(const EndBySignal &) = delete;
};

}  // namespace vek

#endif  // VEK_LOG_STOP_H_

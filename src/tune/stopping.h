// SIGINT, SIGTERM and SIGHUP: noted, so that what was found can be kept before
// the program ends by the signal.
#ifndef VEK_TUNE_STOPPING_H_
#define VEK_TUNE_STOPPING_H_

namespace vek::tuning {

// From here on the signals only interrupt what waits. One that is ignored stays
// so.
void watch_stop_signals();

// The signal that has come, 0 if none has.
int stop_signal();

// For a child: the signals end it as any process.
void forget_stop_signals();

[[noreturn]] void end_by(int signal);

}  // namespace vek::tuning

#endif  // VEK_TUNE_STOPPING_H_

// The line that tells, after each phase, how much memory the process holds and
// how long the phase took.
#ifndef VEK_RUN_STATISTICS_H_
#define VEK_RUN_STATISTICS_H_

#include <sys/times.h>
#include <sys/types.h>

#include <ctime>

namespace vek {

// Wall clock and processor times at the last report.
extern std::time_t run_clock;
extern struct tms run_times;

// Takes the baselines from which the first report counts.
void start_statistics();

// Logs one line at level 2, and makes this moment the baseline of the next.
// Without /proc nothing is logged.
void report_statistics();

// Sizes of a process in KB, on the assumption of pages of 4096 bytes. False if
// the system does not tell.
bool read_process_stat(pid_t process_id, long &total, long &resident);

}  // namespace vek

#endif  // VEK_RUN_STATISTICS_H_

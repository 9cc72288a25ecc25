#include "run/statistics.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include "support/messages.h"

namespace vek {
namespace {

// What the system tells of this process elsewhere, in KB.
long status_of(const std::string &label) {
  const std::string text = read_text("/proc/self/status");
  return std::stol(text.substr(text.find(label) + label.size()));
}

TEST(ProcessStat, GivesKilobytesOfTheProcess) {
  long total = 0;
  long resident = 0;
  ASSERT_TRUE(read_process_stat(getpid(), total, resident));
  // The system counts the two by different means.
  EXPECT_NEAR(double(total), double(status_of("VmSize:")), 2000.0);
  EXPECT_NEAR(double(resident), double(status_of("VmRSS:")), 2000.0);
  errno = 77;
  EXPECT_FALSE(read_process_stat(0, total, resident));
  EXPECT_EQ(errno, 77);
}

TEST(Report, TellsMegabytesAndWholeSecondsSinceTheLastOne) {
  const TemporaryDirectory directory;
  set_verbosity(2);
  start_statistics();
  // Enough to tell a thousand from 1024.
  mmap(nullptr, std::size_t{1} << 32, PROT_NONE,
       MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  const long ticks = sysconf(_SC_CLK_TCK);
  run_clock -= 120;
  run_times.tms_utime -= 95 * ticks + ticks / 2;
  run_times.tms_stime -= 3 * ticks;
  run_times.tms_cutime -= 1000 * ticks;
  for (const long seconds : {120, 0}) {
    long total, resident, shown, in_ram, real, user, system;
    ASSERT_TRUE(read_process_stat(getpid(), total, resident));
    ASSERT_EQ(std::sscanf(screen(report_statistics).c_str(),
                          "memory: %ldMB total, %ldMB in RAM   time: real:%ld, "
                          "user:%ld, system:%ld",
                          &shown, &in_ram, &real, &user, &system),
              5);
    EXPECT_NEAR(static_cast<double>(shown), static_cast<double>(total) / 1024.0,
                4.0);
    // The clock may have gone on.
    EXPECT_LE(real - seconds, 9);
    EXPECT_GE(real, seconds);
    EXPECT_EQ(user, seconds == 0 ? 0 : 95);
    EXPECT_EQ(system, seconds == 0 ? 0 : 3);
  }
}

}  // namespace
}  // namespace vek

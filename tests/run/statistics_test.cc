#include "run/statistics.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <regex>
#include <string>

#include "run/log.h"
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
}

TEST(ProcessStat, FailsForAMissingProcessAndKeepsErrno) {
  long total = 0;
  long resident = 0;
  errno = 77;
  EXPECT_FALSE(read_process_stat(0, total, resident));
  EXPECT_EQ(errno, 77);
}

class Report : public testing::Test {
 protected:
  Report() {
    set_verbosity(2);
    log_file.open("vek.log");
    start_statistics();
    // Enough to tell a thousand from 1024.
    mmap(nullptr, std::size_t{1} << 32, PROT_NONE,
         MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  }

  // Logs a report and returns it with the sizes masked.
  static std::string report() {
    const std::size_t before = logged().size();
    const std::string shown = screen(report_statistics);
    EXPECT_EQ(logged().substr(before), shown);
    long total = 0;
    long resident = 0;
    EXPECT_TRUE(read_process_stat(getpid(), total, resident));
    const long megabytes = total / 1024;
    EXPECT_NEAR(std::stod(shown.substr(8)), double(megabytes), 4.0);
    return std::regex_replace(shown, std::regex("[0-9]+MB"), "<n>MB");
  }

 private:
  TemporaryDirectory directory_;
};

TEST_F(Report, TellsWholeSecondsSinceTheLastOne) {
  const long ticks = sysconf(_SC_CLK_TCK);
  run_clock -= 120;
  run_times.tms_utime -= 95 * ticks;
  run_times.tms_stime -= 3 * ticks;
  run_times.tms_cutime -= 1000 * ticks;
  // The clock may have gone on since the start.
  EXPECT_TRUE(std::regex_match(
      report(), std::regex("memory: <n>MB total, <n>MB in RAM   "
                           "time: real:12[0-9], user:95, system:3\n")));
  run_times.tms_utime -= ticks / 2;
  EXPECT_TRUE(std::regex_match(
      report(), std::regex("memory: <n>MB total, <n>MB in RAM   "
                           "time: real:[0-9], user:0, system:0\n")));
}

TEST_F(Report, IsShownFromTheSecondVerbosityOn) {
  set_verbosity(1);
  EXPECT_EQ(screen(report_statistics), "");
  EXPECT_NE(logged().find("\nmemory: "), std::string::npos);
}

}  // namespace
}  // namespace vek

#include "run/statistics.h"

#include <unistd.h>

#include <string>
#include <vector>

#include "base/helpers.h"
#include "base/input_file.h"
#include "base/textio.h"
#include "log/log.h"

namespace vek {
namespace {

// The fields of the system's line that come before the sizes.
constexpr int nr_skipped_fields = 22;
constexpr long page_size_in_kb = 4;

unsigned long seconds_since(clock_t before, clock_t now) {
  return static_cast<unsigned long>((now - before) / sysconf(_SC_CLK_TCK));
}

}  // namespace

void start_statistics() {
  run_clock = std::time(nullptr);
  times(&run_times);
}

bool read_process_stat(pid_t process_id, long &total, long &resident) {
  const KeepErrno keep;
  std::string text;
  const std::string path = "/proc/" + std::to_string(process_id) + "/stat";
  if (read_file(path, text) != ReadResult::ok)
    return false;
  std::size_t start = 0;
  for (int i = 0; i < nr_skipped_fields; ++i) {
    start = text.find(' ', start);
    if (start == std::string::npos)
      return false;
    ++start;
  }
  FieldReader fields(std::string_view(text).substr(start));
  if (!fields.read(total) || !fields.read(resident))
    return false;
  total /= 1024;
  resident *= page_size_in_kb;
  return true;
}

void report_statistics() {
  long total = 0;
  long resident = 0;
  const bool has_sizes = read_process_stat(getpid(), total, resident);
  const std::time_t clock = std::time(nullptr);
  struct tms now = {};
  times(&now);
  if (has_sizes) {
    const std::string memory = "memory: " + std::to_string(total / 1024) +
                               "MB total, " + std::to_string(resident / 1024) +
                               "MB in RAM";
    logf_always(2, "%s   time: real:%lu, user:%lu, system:%lu", memory.c_str(),
                static_cast<unsigned long>(clock - run_clock),
                seconds_since(run_times.tms_utime, now.tms_utime),
                seconds_since(run_times.tms_stime, now.tms_stime));
  }
  run_clock = clock;
  run_times = now;
}

}  // namespace vek

// The entry point of vek.
#include <fcntl.h>
#include <unistd.h>

#include <csignal>

#include "log/log.h"
#include "log/memory.h"
#include "log/stop.h"
#include "run/driver.h"

namespace {

// A run that is started with a standard stream closed must not find its log
// or its store in that stream's place.
void fill_standard_streams() {
  int fd = 0;
  do {
    fd = open("/dev/null", O_RDWR);
  } while (fd >= 0 && fd <= STDERR_FILENO);
  if (fd > STDERR_FILENO)
    close(fd);
}

}  // namespace

int main(int argument_count, char **argument_vector) {
  fill_standard_streams();
  // A file that may not grow shall show as a failed write, like a full disk.
  std::signal(SIGXFSZ, SIG_IGN);
  // Whoever reads the messages may go before the run ends.
  std::signal(SIGPIPE, SIG_IGN);
  vek::watch_memory();
  vek::watch_stop_signals();
  vek::end_run(vek::run(argument_count, argument_vector));
}

// The test's side of the FIFOs of the scripted analyser.
#ifndef VEK_TESTS_SUPPORT_ANALYSER_SIGNAL_H_
#define VEK_TESTS_SUPPORT_ANALYSER_SIGNAL_H_

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vek {

// Waits for the analyser's word that it has got to a place of its script, and
// lets one go on that waits itself.
class AnalyserSignal {
 public:
  AnalyserSignal() {
    mkfifo("signal", 0600);
    mkfifo("go on", 0600);
    // With an end for writing too, so that it never seems to be closed.
    fd_ = ::open("signal", O_RDWR | O_CLOEXEC);
  }
  ~AnalyserSignal() { ::close(fd_); }
  bool wait() {
    pollfd waiting{fd_, POLLIN, 0};
    char byte = 0;
    return poll(&waiting, 1, 60'000) == 1 && ::read(fd_, &byte, 1) == 1;
  }
  static void go_on() { ::close(::open("go on", O_WRONLY)); }

 private:
  int fd_;
};

}  // namespace vek

#endif  // VEK_TESTS_SUPPORT_ANALYSER_SIGNAL_H_

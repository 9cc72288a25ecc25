#include "intake/analyserprocess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string_view>
#include <utility>

#include "base/helpers.h"

namespace vek {
namespace {

using Fault = AnalyserProcess::Fault;

constexpr char end_marker = '\x01';
constexpr std::size_t largest_nr_words = 21;
constexpr std::size_t buffer_size = 65536;

// A process closes its pipes a little before it is gone.
constexpr int milliseconds_to_end = 1000;

// Splits at every single blank: two in a row make an empty argument.
std::vector<std::string> split_command(const std::string &command) {
  std::vector<std::string> words;
  std::size_t start = 0;
  for (;;) {
    const std::size_t end = command.find(' ', start);
    words.push_back(command.substr(start, end - start));
    if (end == std::string::npos)
      return words;
    start = end + 1;
  }
}

bool fail(Fault &fault, Fault::Kind kind, int code, std::string reason) {
  fault = {kind, code, std::move(reason)};
  return false;
}

// What a failed call left in errno.
bool fail(Fault &fault, Fault::Kind kind) {
  const int code = errno;
  return fail(fault, kind, code, std::strerror(code));
}

bool fail_by_end(Fault &fault) {
  return fail(fault, Fault::Kind::ended, EPIPE,
              "it ended before its answer was complete");
}

struct Pipe {
  Pipe() = default;
  Pipe(const Pipe &) = delete;
  Pipe &operator=(const Pipe &) = delete;
  ~Pipe() {
    const KeepErrno keep;
    for (const int fd : ends) {
      if (fd >= 0)
        ::close(fd);
    }
  }

  bool make() { return pipe2(ends.data(), O_CLOEXEC) == 0; }
  int read_end() const { return ends[0]; }
  int write_end() const { return ends[1]; }
  // The end is the taker's to close.
  int take(std::size_t number) { return std::exchange(ends[number], -1); }
  void close(std::size_t number) { ::close(take(number)); }

  std::array<int, 2> ends = {-1, -1};
};

// The child's half: never returns to the caller's work. `report` takes an errno
// if there is no program to become.
[[noreturn]] void run_analyser(char *const *arguments, int input, int output,
                               int report, const std::string &directory,
                               AnalyserProcess::ChildFailed child_failed) {
  if (dup2(input, STDIN_FILENO) >= 0 && dup2(output, STDOUT_FILENO) >= 0 &&
      (directory.empty() || chdir(directory.c_str()) == 0)) {
    std::signal(SIGXFSZ, SIG_DFL);
    std::signal(SIGPIPE, SIG_DFL);
    execv(arguments[0], arguments);
  }
  const int code = errno;
  // First of all, as the reader of the messages may be gone. If it fails, the
  // end of this process shows all the same.
  [[maybe_unused]] const ssize_t count = ::write(report, &code, sizeof code);
  errno = code;
  if (child_failed != nullptr)
    child_failed();
  _exit(1);
}

ssize_t read_some(int fd, char *buffer_P, std::size_t size) {
  return retry([=] { return ::read(fd, buffer_P, size); });
}

// The errno that the child reports, 0 if there is none. Returns when the child
// has become its program or is gone, so that what it says stands before all
// that is said here.
int wait_for_start(int report) {
  int code = 0;
  while (read_some(report, reinterpret_cast<char *>(&code), sizeof code) > 0) {
  }
  return code;
}

bool is_blank(char character) {
  return std::strchr(" \t\n\v\f\r", character) != nullptr;
}

// While there is one, a process that has gone shows as a failed write.
class WithoutPipeSignal {
 public:
  WithoutPipeSignal() : before_(std::signal(SIGPIPE, SIG_IGN)) {}
  ~WithoutPipeSignal() {
    const KeepErrno keep;
    std::signal(SIGPIPE, before_);
  }
  WithoutPipeSignal(const WithoutPipeSignal &) = delete;
  WithoutPipeSignal &operator=(const WithoutPipeSignal &) = delete;

 private:
  void (*before_)(int);
};

}  // namespace

bool cut_at_nul(std::string &analysis) {
  const std::size_t nul = analysis.find('\0');
  if (nul == std::string::npos)
    return false;
  analysis.resize(nul);
  return true;
}

bool read_analysis(const TextFile &file, std::string &analysis) {
  const auto size = static_cast<std::size_t>(file.size());
  if (size > largest_analysis) {
    errno = EFBIG;
    return false;
  }
  analysis.assign(size, '\0');
  std::size_t used = 0;
  ssize_t count = 0;
  do {
    count = read_some(file.descriptor(), analysis.data() + used, size - used);
    if (count > 0)
      used += static_cast<std::size_t>(count);
  } while (count > 0 && used < size);
  analysis.resize(used);
  return count >= 0;
}

bool AnalyserProcess::start(const std::string &command, Fault &fault,
                            const std::string &directory,
                            ChildFailed child_failed) {
  std::vector<std::string> words = split_command(command);
  if (words.size() > largest_nr_words) {
    return fail(fault, Fault::Kind::command, errno,
                "has " + std::to_string(words.size() - 1) +
                    " arguments, at most " +
                    std::to_string(largest_nr_words - 1) + " are possible");
  }
  Pipe to_child;
  Pipe from_child;
  Pipe report;
  if (!to_child.make() || !from_child.make() || !report.make())
    return fail(fault, Fault::Kind::pipe);
  std::vector<char *> arguments;
  for (std::string &word : words)
    arguments.push_back(word.data());
  arguments.push_back(nullptr);
  const pid_t pid = fork();
  if (pid < 0)
    return fail(fault, Fault::Kind::fork);
  if (pid == 0) {
    run_analyser(arguments.data(), to_child.read_end(), from_child.write_end(),
                 report.write_end(), directory, child_failed);
  }
  to_child.close(0);
  from_child.close(1);
  report.close(1);
  to_analyser_ = to_child.take(1);
  from_analyser_ = from_child.take(0);
  pid_ = pid;
  buffer_.resize(buffer_size);
  const int code = wait_for_start(report.read_end());
  if (code != 0)
    return fail(fault, Fault::Kind::execution, code, std::strerror(code));
  return true;
}

void AnalyserProcess::close() {
  if (to_analyser_ >= 0)
    ::close(to_analyser_);
  if (from_analyser_ >= 0)
    ::close(from_analyser_);
  to_analyser_ = -1;
  from_analyser_ = -1;
  time_limit_ = {};
}

void AnalyserProcess::end() {
  const KeepErrno keep;
  close();
  if (pid_ <= 0)
    return;
  wait_for_end();
  kill(pid_, SIGKILL);
  retry([&] { return waitpid(pid_, nullptr, 0); });
  pid_ = 0;
}

void AnalyserProcess::wait_for_end() const {
  // The library's own function is declared for C alone.
  const int fd = static_cast<int>(syscall(SYS_pidfd_open, pid_, 0));
  if (fd < 0)
    return;
  pollfd end{fd, POLLIN, 0};
  retry([&] { return poll(&end, 1, milliseconds_to_end); });
  ::close(fd);
}

std::string AnalyserProcess::how_it_ended() const {
  wait_for_end();
  // Left to be waited for, so that it can be asked again, and end() knows whom
  // it kills.
  siginfo_t info = {};
  if (waitid(P_PID, static_cast<id_t>(pid_), &info,
             WEXITED | WNOHANG | WNOWAIT) != 0) {
    return {};
  }
  if (info.si_pid == 0)
    return "the analyser has closed its output and still runs";
  if (info.si_code == CLD_EXITED) {
    return "the analyser ended with exit status " +
           std::to_string(info.si_status);
  }
  const char *const name_P = sigabbrev_np(info.si_status);
  return "the analyser was ended by signal " +
         (name_P != nullptr ? "SIG" + std::string(name_P)
                            : std::to_string(info.si_status));
}

bool AnalyserProcess::ask(const std::string &path,
                          std::chrono::seconds time_limit, std::string &answer,
                          Fault &fault) {
  time_limit_ = time_limit;
  deadline_ = Clock::now() + time_limit_;
  answer.clear();
  return drop_stray_bytes(fault) && send_request(path, fault) &&
         receive_answer(answer, fault);
}

// Comes back when a pipe is ready, if there is a limit to wait for. Without one
// the calls on the pipe wait themselves.
bool AnalyserProcess::wait_in_time(int fd, short event, Fault &fault) const {
  if (time_limit_.count() == 0)
    return true;
  pollfd waiting{fd, event, 0};
  for (;;) {
    int milliseconds = 0;
    if (!is_in_time(milliseconds, fault))
      return false;
    const int errno_before = errno;
    const int result = poll(&waiting, 1, milliseconds);
    if (result > 0 || (result < 0 && errno != EINTR))
      return true;
    errno = errno_before;
  }
}

// Until the deadline; with that behind, kills the process.
bool AnalyserProcess::is_in_time(int &milliseconds, Fault &fault) const {
  const auto left =
      std::chrono::ceil<std::chrono::milliseconds>(deadline_ - Clock::now())
          .count();
  if (left > 0) {
    milliseconds = static_cast<int>(
        std::min<std::int64_t>(left, std::numeric_limits<int>::max()));
    return true;
  }
  kill(pid_, SIGKILL);
  return fail(fault, Fault::Kind::late, ETIMEDOUT,
              "no answer within " + std::to_string(time_limit_.count()) +
                  (time_limit_.count() == 1 ? " second" : " seconds") +
                  ", the limit set by `analysertimeout'");
}

// Between an answer and the next request the analyser has nothing to say. A
// line end that came late behind the end marker is let pass; anything more
// would be taken for the next document's analysis.
bool AnalyserProcess::drop_stray_bytes(Fault &fault) {
  const KeepErrno keep;
  for (;;) {
    pollfd waiting{from_analyser_, POLLIN, 0};
    if (retry([&] { return poll(&waiting, 1, 0); }) <= 0 ||
        (waiting.revents & POLLIN) == 0) {
      return true;
    }
    // As much as a line end and then some.
    const ssize_t count = read_some(from_analyser_, buffer_.data(), 512);
    if (count <= 0)
      return true;
    if (!std::all_of(buffer_.begin(), buffer_.begin() + count, is_blank)) {
      return fail(fault, Fault::Kind::conduct, EINVAL,
                  "it writes without being asked");
    }
    // White space without an end.
    int milliseconds = 0;
    if (time_limit_.count() != 0 && !is_in_time(milliseconds, fault))
      return false;
  }
}

bool AnalyserProcess::send_request(const std::string &path, Fault &fault) {
  const std::string request = path + '\n';
  const WithoutPipeSignal without;
  std::size_t done = 0;
  while (done < request.size()) {
    if (!wait_in_time(to_analyser_, POLLOUT, fault))
      return false;
    const ssize_t count = retry([&] {
      return ::write(to_analyser_, request.data() + done,
                     request.size() - done);
    });
    if (count < 0 && errno == EPIPE)
      return fail_by_end(fault);
    if (count == 0)
      errno = EIO;
    if (count <= 0)
      return fail(fault, Fault::Kind::system);
    done += static_cast<std::size_t>(count);
  }
  // Pipes refuse it, and that is nobody's business.
  const KeepErrno keep;
  fsync(to_analyser_);
  return true;
}

bool AnalyserProcess::receive_answer(std::string &answer, Fault &fault) {
  for (;;) {
    if (!wait_in_time(from_analyser_, POLLIN, fault))
      return false;
    const ssize_t count =
        read_some(from_analyser_, buffer_.data(), buffer_.size());
    if (count < 0)
      return fail(fault, Fault::Kind::system);
    if (count == 0)
      return fail_by_end(fault);
    const std::string_view piece(buffer_.data(),
                                 static_cast<std::size_t>(count));
    const std::size_t end = piece.find(end_marker);
    answer += piece.substr(0, end);
    if (end != std::string_view::npos)
      return true;
    if (answer.size() > largest_analysis) {
      return fail(fault, Fault::Kind::conduct, EINVAL,
                  "its answer does not end");
    }
  }
}

}  // namespace vek

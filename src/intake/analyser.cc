#include "intake/analyser.h"

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
#include <vector>

#include "base/helpers.h"
#include "intake/lists.h"
#include "intake/textfile.h"
#include "log/log.h"
#include "log/stop.h"

namespace vek {
namespace {

constexpr char end_marker = '\x01';
constexpr std::size_t largest_nr_words = 21;

// No analysis of a document is this long; an analyser that never ends its
// answer must not eat the machine.
constexpr std::size_t largest_answer = std::size_t{1} << 30;

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

// The child's half: never returns to the caller's work. `report` takes an errno
// if there is no program to become.
[[noreturn]] void run_analyser(std::vector<std::string> words, int input,
                               int output, int report) {
  if (dup2(input, STDIN_FILENO) >= 0 && dup2(output, STDOUT_FILENO) >= 0) {
    std::vector<char *> arguments;
    for (std::string &word : words)
      arguments.push_back(word.data());
    arguments.push_back(nullptr);
    std::signal(SIGXFSZ, SIG_DFL);
    std::signal(SIGPIPE, SIG_DFL);
    execv(arguments[0], arguments.data());
  }
  const int code = errno;
  // First of all, as the reader of the messages may be gone. If it fails, the
  // end of this process shows all the same.
  [[maybe_unused]] const ssize_t count = ::write(report, &code, sizeof code);
  errno = code;
  error("analyser process execution failed: %s", std::strerror(errno));
  abort_run();
}

struct Pipe {
  int read_end = -1;
  int write_end = -1;
};

Pipe make_pipe() {
  std::array<int, 2> ends = {};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    error("start_analyser_process: %s", std::strerror(errno));
    abort_run();
  }
  return {ends[0], ends[1]};
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

[[noreturn]] void fail_to_read(const std::string &name) {
  error("%s: %s", name.c_str(), std::strerror(errno));
  abort_run();
}

bool is_blank(char character) {
  return std::strchr(" \t\n\v\f\r", character) != nullptr;
}

// Returns whether there was one.
bool cut_at_nul(std::string &text) {
  const std::size_t nul = text.find('\0');
  if (nul == std::string::npos)
    return false;
  text.resize(nul);
  return true;
}

// The document file holds the analysis text.
std::string read_analysis(const std::string &name, const TextFile &file) {
  const auto size = static_cast<std::size_t>(file.size());
  if (size > largest_answer) {
    errno = EFBIG;
    fail_to_read(name);
  }
  std::string text(size, '\0');
  std::size_t used = 0;
  ssize_t count = 0;
  do {
    count = read_some(file.descriptor(), text.data() + used, size - used);
    if (count > 0)
      used += static_cast<std::size_t>(count);
  } while (count > 0 && used < size);
  // Else a part of the text would stand for all of it in every later run.
  if (count < 0)
    fail_to_read(name);
  if (used < size) {
    warning("Analyser::process: read %ld bytes, file size is %ld bytes from %s",
            static_cast<long>(used), static_cast<long>(size), name.c_str());
    text.resize(used);
  }
  if (cut_at_nul(text)) {
    logf_if_verbose(1, "analysis of document `%s' is cut at a NUL byte",
                    name.c_str());
  }
  return text;
}

}  // namespace

Analyser::~Analyser() {
  close();
}

void Analyser::open(const std::string &command,
                    const std::string &file_directory,
                    std::chrono::seconds time_limit) {
  time_limit_ = time_limit;
  file_directory_ = file_directory;
  ensure_directory(file_directory_);
  command_ = command;
  if (!command_.empty())
    start_analyser_process();
}

void Analyser::start_analyser_process() {
  const std::vector<std::string> words = split_command(command_);
  if (words.size() > largest_nr_words) {
    error("analyser command has %zu arguments, at most %zu are possible",
          words.size() - 1, largest_nr_words - 1);
    abort_run();
  }
  const Pipe to_child = make_pipe();
  const Pipe from_child = make_pipe();
  const Pipe report = make_pipe();
  const pid_t pid = fork();
  if (pid < 0) {
    error("cannot fork analyser: %s", std::strerror(errno));
    abort_run();
  }
  if (pid == 0) {
    run_analyser(words, to_child.read_end, from_child.write_end,
                 report.write_end);
  }
  ::close(to_child.read_end);
  ::close(from_child.write_end);
  ::close(report.write_end);
  to_analyser_ = to_child.write_end;
  from_analyser_ = from_child.read_end;
  pid_ = pid;
  // A child that has gone shall show as a failed write, not end this process.
  std::signal(SIGPIPE, SIG_IGN);
  start_error_ = wait_for_start(report.read_end);
  ::close(report.read_end);
  if (start_error_ != 0) {
    error(
        "give its full path with `analyser' in vek.rc; it is not looked for on "
        "the PATH");
  }
}

void Analyser::close() {
  if (to_analyser_ >= 0)
    ::close(to_analyser_);
  if (from_analyser_ >= 0)
    ::close(from_analyser_);
  to_analyser_ = -1;
  from_analyser_ = -1;
  pid_ = 0;
}

std::string Analyser::text_path(const std::string &name) const {
  return Path(file_directory_, name, document_suffix);
}

// With errno as the status.
void Analyser::refuse_text(const std::string &name, const std::string &path,
                           const std::string &problem) const {
  if (command_.empty() && file_exists(path)) {
    error("%s: %s", name.c_str(), problem.c_str());
  } else {
    log_always(1, path + ": " + problem);
    error("Cannot open file \"%s\" for analysing stage", path.c_str());
  }
  abort_run();
}

void Analyser::give_up(const std::string &name, const std::string &reason,
                       int status) const {
  // A signal from the terminal has ended it as well.
  stop_if_requested();
  error("analyser process `%s' failed on document `%s': %s", command_.c_str(),
        name.c_str(), reason.c_str());
  errno = status;
  abort_run();
}

// The same words and status whether this shows with the request or with the
// answer: that depends on who is faster.
void Analyser::end_early(const std::string &name) const {
  stop_if_requested();
  error("analyser process `%s' failed on document `%s': %s", command_.c_str(),
        name.c_str(), "it ended before its answer was complete");
  const std::string end = how_it_ended();
  if (!end.empty())
    error("%s", end.c_str());
  errno = EPIPE;
  abort_run();
}

// Empty if nobody knows.
std::string Analyser::how_it_ended() const {
  // The library's own function is declared for C alone.
  const int fd = static_cast<int>(syscall(SYS_pidfd_open, pid_, 0));
  if (fd >= 0) {
    pollfd end{fd, POLLIN, 0};
    retry([&] { return poll(&end, 1, milliseconds_to_end); });
    ::close(fd);
  }
  int status = 0;
  const pid_t pid = waitpid(pid_, &status, WNOHANG);
  if (pid == 0)
    return "the analyser has closed its output and still runs";
  if (pid > 0 && WIFEXITED(status)) {
    return "the analyser ended with exit status " +
           std::to_string(WEXITSTATUS(status));
  }
  if (pid > 0 && WIFSIGNALED(status)) {
    const char *const name_P = sigabbrev_np(WTERMSIG(status));
    return "the analyser was ended by signal " +
           (name_P != nullptr ? "SIG" + std::string(name_P)
                              : std::to_string(WTERMSIG(status)));
  }
  return {};
}

std::string Analyser::process(const std::string &name) {
  const std::string path = text_path(name);
  const TextFile file(path);
  if (!file.problem().empty())
    refuse_text(name, path, file.problem());
  // A line end in the path would make two requests of it.
  if (name.find('\n') != std::string::npos) {
    errno = EINVAL;
    refuse_text(name, path, "a line end in its name");
  }
  text_size_ = file.size();
  if (command_.empty())
    return read_analysis(name, file);
  if (start_error_ != 0)
    give_up(name, "it could not be started", start_error_);
  deadline_ = Clock::now() + time_limit_;
  drop_stray_bytes(name);
  send_request(name, path);
  std::string answer = receive_answer(name);
  // It may be what an analyser that was interrupted had ready.
  if (is_stopped_by_terminal())
    stop_if_requested();
  return answer;
}

// Comes back when a pipe is ready, if there is a limit to wait for. Without one
// the calls on the pipe wait themselves.
void Analyser::wait_in_time(int fd, short event,
                            const std::string &name) const {
  if (time_limit_.count() == 0)
    return;
  pollfd waiting{fd, event, 0};
  while (retry([&] { return poll(&waiting, 1, milliseconds_left(name)); }) ==
         0) {
  }
}

// Until the deadline; with that behind, ends the analyser and the run.
int Analyser::milliseconds_left(const std::string &name) const {
  const auto left =
      std::chrono::ceil<std::chrono::milliseconds>(deadline_ - Clock::now())
          .count();
  if (left > 0) {
    return static_cast<int>(
        std::min<std::int64_t>(left, std::numeric_limits<int>::max()));
  }
  kill(pid_, SIGKILL);
  give_up(name,
          "no answer within " + std::to_string(time_limit_.count()) +
              (time_limit_.count() == 1 ? " second" : " seconds") +
              ", the limit set by `analysertimeout'",
          ETIMEDOUT);
}

// Between an answer and the next request the analyser has nothing to say. A
// line end that came late behind the end marker is let pass; anything more
// would be taken for the next document's analysis.
void Analyser::drop_stray_bytes(const std::string &name) {
  const KeepErrno keep;
  for (;;) {
    pollfd waiting{from_analyser_, POLLIN, 0};
    if (retry([&] { return poll(&waiting, 1, 0); }) <= 0 ||
        (waiting.revents & POLLIN) == 0) {
      return;
    }
    std::array<char, 512> buffer = {};
    const ssize_t count =
        read_some(from_analyser_, buffer.data(), buffer.size());
    if (count <= 0)
      return;
    if (!std::all_of(buffer.begin(), buffer.begin() + count, is_blank)) {
      give_up(name, "it writes without being asked", EINVAL);
    }
    // White space without an end.
    if (time_limit_.count() != 0)
      milliseconds_left(name);
  }
}

void Analyser::send_request(const std::string &name, const std::string &path) {
  const std::string request = path + '\n';
  std::size_t done = 0;
  while (done < request.size()) {
    wait_in_time(to_analyser_, POLLOUT, name);
    const ssize_t count = retry([&] {
      return ::write(to_analyser_, request.data() + done,
                     request.size() - done);
    });
    if (count < 0 && errno == EPIPE)
      end_early(name);
    if (count == 0)
      errno = EIO;
    if (count <= 0)
      give_up(name, std::strerror(errno), errno);
    done += static_cast<std::size_t>(count);
  }
  // Pipes refuse it, and that is nobody's business.
  const KeepErrno keep;
  fsync(to_analyser_);
}

std::string Analyser::receive_answer(const std::string &name) {
  std::string answer;
  // Kept from call to call: clearing it for each document would cost more than
  // reading a short answer.
  static std::array<char, 65536> buffer = {};
  for (;;) {
    wait_in_time(from_analyser_, POLLIN, name);
    const ssize_t count =
        read_some(from_analyser_, buffer.data(), buffer.size());
    if (count < 0)
      give_up(name, std::strerror(errno), errno);
    if (count == 0)
      end_early(name);
    const std::string_view piece(buffer.data(),
                                 static_cast<std::size_t>(count));
    const std::size_t end = piece.find(end_marker);
    answer += piece.substr(0, end);
    if (end != std::string_view::npos)
      break;
    if (answer.size() > largest_answer) {
      give_up(name, "its answer does not end", EINVAL);
    }
  }
  if (cut_at_nul(answer))
    warning("analysis of document `%s' is cut at a NUL byte", name.c_str());
  return answer;
}

}  // namespace vek

#include "check/analyser_check.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <vector>

#include "base/helpers.h"

extern char **environ;

namespace vek::checking {
namespace {

using Clock = std::chrono::steady_clock;

constexpr char end_marker = '\x01';
constexpr std::size_t largest_nr_words = 21;

// At every single blank, as vek does.
std::vector<std::string> split_command(std::string_view command) {
  std::vector<std::string> words;
  for (;;) {
    const std::size_t end = command.find(' ');
    words.emplace_back(command.substr(0, end));
    if (end == std::string_view::npos)
      return words;
    command.remove_prefix(end + 1);
  }
}

class AnalyserProcess {
 public:
  AnalyserProcess() = default;
  ~AnalyserProcess();
  AnalyserProcess(const AnalyserProcess &) = delete;
  AnalyserProcess &operator=(const AnalyserProcess &) = delete;

  // Each returns what is wrong.
  std::string start(std::vector<std::string> words);
  std::string ask(const std::string &path, Clock::time_point end);

 private:
  std::string receive(Clock::time_point end) const;
  std::string how_it_ended();

  pid_t pid_ = -1;
  int to_ = -1;
  int from_ = -1;
};

AnalyserProcess::~AnalyserProcess() {
  for (const int fd : {to_, from_}) {
    if (fd >= 0)
      close(fd);
  }
  // It may not look at its input, and nobody needs it any more.
  if (pid_ > 0) {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
}

std::string AnalyserProcess::start(std::vector<std::string> words) {
  std::array<int, 2> to = {};
  std::array<int, 2> from = {};
  if (pipe2(to.data(), O_CLOEXEC) != 0)
    return std::strerror(errno);
  to_ = to[1];
  if (pipe2(from.data(), O_CLOEXEC) != 0) {
    close(to[0]);
    return std::strerror(errno);
  }
  from_ = from[0];
  std::vector<char *> arguments;
  for (std::string &word : words)
    arguments.push_back(word.data());
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, to[0], STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, from[1], STDOUT_FILENO);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGPIPE);
  posix_spawnattr_setsigdefault(&attributes, &signals);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
  const int code = posix_spawn(&pid_, arguments.front(), &actions, &attributes,
                               arguments.data(), environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  close(to[0]);
  close(from[1]);
  if (code == 0)
    return {};
  pid_ = -1;
  return std::string("it cannot be started: ") + std::strerror(code) +
         "; give its full path, it is not looked for on the PATH";
}

std::string AnalyserProcess::ask(const std::string &path,
                                 Clock::time_point end) {
  const std::string request = path + '\n';
  // It may be gone already; a path is within what a pipe takes at once.
  const auto before = std::signal(SIGPIPE, SIG_IGN);
  const ssize_t count =
      retry([&] { return write(to_, request.data(), request.size()); });
  std::signal(SIGPIPE, before);
  const std::string fault = count < 0 ? "ended" : receive(end);
  if (fault.empty())
    return {};
  return fault == "ended" ? how_it_ended() + " before its answer to `" + path +
                                "' was complete"
                          : fault + " to `" + path + "'";
}

// "ended" if it is gone.
std::string AnalyserProcess::receive(Clock::time_point end) const {
  std::array<char, 65536> piece = {};
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(
                          std::max(end - Clock::now(), Clock::duration(0)))
                          .count();
    pollfd waiting{from_, POLLIN, 0};
    const int milliseconds =
        static_cast<int>(std::min<long long>(left, INT_MAX));
    if (retry([&] { return poll(&waiting, 1, milliseconds); }) <= 0)
      return "there is no answer in time";
    const ssize_t count =
        retry([&] { return read(from_, piece.data(), piece.size()); });
    if (count <= 0)
      return "ended";
    if (std::memchr(piece.data(), end_marker,
                    static_cast<std::size_t>(count)) != nullptr)
      return {};
  }
}

std::string AnalyserProcess::how_it_ended() {
  int status = 0;
  // Its output is closed, so it is about to end; if not, it is helped.
  for (int i = 0; i < 10 && waitpid(pid_, &status, WNOHANG) == 0; ++i)
    poll(nullptr, 0, 100);
  const bool is_gone = waitpid(pid_, nullptr, WNOHANG) < 0;
  if (!is_gone)
    return "it closed its output";
  pid_ = -1;
  if (WIFSIGNALED(status))
    return "it was ended by signal " + std::to_string(WTERMSIG(status));
  return "it ended with status " + std::to_string(WEXITSTATUS(status));
}

}  // namespace

std::string analyser_fault(const std::string &command, const std::string &path,
                           std::chrono::seconds patience) {
  std::vector<std::string> words = split_command(command);
  if (words.size() > largest_nr_words) {
    return "it has " + std::to_string(words.size() - 1) +
           " arguments, at most " + std::to_string(largest_nr_words - 1) +
           " are possible";
  }
  AnalyserProcess process;
  const std::string fault = process.start(std::move(words));
  if (!fault.empty() || path.empty())
    return fault;
  return process.ask(path, Clock::now() + patience);
}

}  // namespace vek::checking

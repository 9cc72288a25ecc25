#include "intake/analyser.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

#include "base/helpers.h"
#include "intake/lists.h"
#include "log/log.h"
#include "log/stop.h"

namespace vek {
namespace {

constexpr char end_marker = '\x01';
constexpr std::size_t largest_nr_words = 21;

// No analysis of a document is this long; an analyser that never ends its
// answer must not eat the machine.
constexpr std::size_t largest_answer = std::size_t{1} << 30;

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

// The child's half: never returns to the caller's work.
[[noreturn]] void run_analyser(std::vector<std::string> words, int input,
                               int output) {
  if (dup2(input, STDIN_FILENO) >= 0 && dup2(output, STDOUT_FILENO) >= 0) {
    std::vector<char *> arguments;
    for (std::string &word : words)
      arguments.push_back(word.data());
    arguments.push_back(nullptr);
    std::signal(SIGXFSZ, SIG_DFL);
    std::signal(SIGPIPE, SIG_DFL);
    execv(arguments[0], arguments.data());
  }
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

[[noreturn]] void fail_to_read(const std::string &name) {
  error("%s: %s", name.c_str(), std::strerror(errno));
  abort_run();
}

bool is_blank(char character) {
  return std::strchr(" \t\n\v\f\r", character) != nullptr;
}

void cut_at_nul(std::string &text) {
  const std::size_t nul = text.find('\0');
  if (nul != std::string::npos)
    text.resize(nul);
}

}  // namespace

Analyser::~Analyser() {
  close();
}

void Analyser::open(const std::string &command,
                    const std::string &file_directory) {
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
  const pid_t pid = fork();
  if (pid < 0) {
    error("cannot fork analyser: %s", std::strerror(errno));
    abort_run();
  }
  if (pid == 0)
    run_analyser(words, to_child.read_end, from_child.write_end);
  ::close(to_child.read_end);
  ::close(from_child.write_end);
  to_analyser_ = to_child.write_end;
  from_analyser_ = from_child.read_end;
  pid_ = pid;
  // A child that has gone shall show as a failed write, not end this process.
  std::signal(SIGPIPE, SIG_IGN);
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

void Analyser::give_up(const std::string &name, const char *reason) {
  // A signal from the terminal has ended it as well.
  stop_if_requested();
  error("analyser process `%s' failed on document `%s': %s", command_.c_str(),
        name.c_str(), reason);
  abort_run();
}

std::string Analyser::process(const std::string &name) {
  const Path path(file_directory_, name, document_suffix);
  // A line end in the path would make two requests of it.
  if (!file_exists(path) || name.find('\n') != std::string::npos) {
    error("Cannot open file \"%s\" for analysing stage", path.c_str());
    abort_run();
  }
  if (command_.empty())
    return read_analysis(name, path);
  drop_stray_bytes(name);
  send_request(name, path);
  std::string answer = receive_answer(name);
  // It may be what an analyser that was interrupted had ready.
  if (is_stopped_by_terminal())
    stop_if_requested();
  return answer;
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
      give_up(name, "it writes without being asked");
    }
  }
}

void Analyser::send_request(const std::string &name, const std::string &path) {
  const std::string request = path + '\n';
  std::size_t done = 0;
  while (done < request.size()) {
    const ssize_t count = retry([&] {
      return ::write(to_analyser_, request.data() + done,
                     request.size() - done);
    });
    if (count == 0)
      errno = EIO;
    if (count <= 0)
      give_up(name, std::strerror(errno));
    done += static_cast<std::size_t>(count);
  }
  fsync(to_analyser_);
}

std::string Analyser::receive_answer(const std::string &name) {
  std::string answer;
  // Kept from call to call: clearing it for each document would cost more than
  // reading a short answer.
  static std::array<char, 65536> buffer = {};
  for (;;) {
    const ssize_t count =
        read_some(from_analyser_, buffer.data(), buffer.size());
    if (count < 0)
      give_up(name, std::strerror(errno));
    if (count == 0)
      give_up(name, "it ended before its answer was complete");
    const std::string_view piece(buffer.data(),
                                 static_cast<std::size_t>(count));
    const std::size_t end = piece.find(end_marker);
    answer += piece.substr(0, end);
    if (end != std::string_view::npos)
      break;
    if (answer.size() > largest_answer) {
      give_up(name, "its answer does not end");
    }
  }
  if (answer.find('\0') != std::string::npos) {
    warning("analysis of document `%s' is cut at a NUL byte", name.c_str());
    cut_at_nul(answer);
  }
  return answer;
}

// The document file holds the analysis text.
std::string Analyser::read_analysis(const std::string &name,
                                    const std::string &path) {
  const std::int64_t size = file_size(path);
  if (size < 0)
    fail_to_read(name);
  // A pipe without a writer would block the open.
  const int fd = retry(
      [&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK); });
  // A pipe has no text of its own.
  if (fd < 0 || lseek(fd, 0, SEEK_CUR) < 0)
    fail_to_read(name);
  if (size > static_cast<std::int64_t>(largest_answer)) {
    errno = EFBIG;
    fail_to_read(name);
  }
  std::string text(static_cast<std::size_t>(size), '\0');
  std::size_t used = 0;
  ssize_t count = 0;
  do {
    count = read_some(fd, text.data() + used, text.size() - used);
    if (count > 0)
      used += static_cast<std::size_t>(count);
  } while (count > 0 && used < text.size());
  // Else a part of the text would stand for all of it in every later run.
  if (count < 0 && errno != EISDIR)
    fail_to_read(name);
  if (used < text.size()) {
    warning("Analyser::process: read %ld bytes, file size is %ld bytes from %s",
            static_cast<long>(used), static_cast<long>(size), name.c_str());
    text.resize(used);
  }
  ::close(fd);
  cut_at_nul(text);
  return text;
}

}  // namespace vek

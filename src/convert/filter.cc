#include "convert/filter.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>

#include "base/helpers.h"
#include "convert/record.h"

namespace vek::convert {
namespace {

// What `timeout` of the coreutils ends with when it had to end the command.
constexpr int status_late = 124;

// The command as the shell sees it: the file's name is its first argument.
std::string with_argument(std::string command) {
  constexpr std::string_view argument = "\"$1\"";
  for (std::size_t at = command.find("{}"); at != std::string::npos;
       at = command.find("{}", at + argument.size()))
    command.replace(at, 2, argument);
  return command;
}

std::string ending(int status) {
  if (WIFSIGNALED(status))
    return "was ended by signal " + std::to_string(WTERMSIG(status));
  if (WEXITSTATUS(status) == status_late)
    return "did not end within five minutes";
  return "failed with status " + std::to_string(WEXITSTATUS(status));
}

// False if there is more than a text may have.
bool read_all(int descriptor, std::string &text) {
  char buffer[65536];
  while (true) {
    const ssize_t count =
        retry([&] { return read(descriptor, buffer, sizeof buffer); });
    if (count <= 0)
      return true;
    if (text.size() + static_cast<std::size_t>(count) > longest_text)
      return false;
    text.append(buffer, static_cast<std::size_t>(count));
  }
}

}  // namespace

std::string run_filter(const std::string &command, const std::string &path,
                       std::string &text) {
  text.clear();
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0)
    return std::strerror(errno);
  const std::string shown = with_argument(command);
  // It ends the whole process group of the command.
  const char *const arguments[] = {"timeout",    "-k",   "5",           "300",
                                   "sh",         "-c",   shown.c_str(), "sh",
                                   path.c_str(), nullptr};
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, path.c_str(),
                                   O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  pid_t child = 0;
  const int error = posix_spawnp(&child, arguments[0], &actions, nullptr,
                                 const_cast<char *const *>(arguments), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  const bool is_whole = error != 0 || read_all(ends[0], text);
  close(ends[0]);
  if (error != 0)
    return not_started + std::string(std::strerror(error));
  if (!is_whole)
    kill(child, SIGTERM);
  int status = 0;
  if (retry([&] { return waitpid(child, &status, 0); }) < 0)
    return std::strerror(errno);
  if (!is_whole)
    return "the filter writes more than 40 MiB";
  return status == 0 ? "" : "the filter `" + command + "' " + ending(status);
}

}  // namespace vek::convert

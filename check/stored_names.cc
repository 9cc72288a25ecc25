#include "check/stored_names.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <string_view>

#include "run/helpers.h"
#include "store/filestore.h"

namespace vek::checking {
namespace {

bool write_all(int fd, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = ::write(fd, text.data(), text.size());
    if (count < 0 && errno != EINTR)
      return false;
    if (count > 0)
      text.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

// The store ends the process over an index that is damaged, and closing it
// writes; so a child opens it, tells the names, each with its zero byte, and
// goes without closing it.
[[noreturn]] void tell_names(const std::string &store_name, int output) {
  FileStore *store_P = filestore_open(store_name.c_str());
  std::string text;
  for (GList *name_P = filestore_get_filenames(store_P); name_P != nullptr;
       name_P = name_P->next) {
    text += static_cast<const char *>(name_P->data);
    text += '\0';
  }
  _exit(write_all(output, text) ? 0 : 1);
}

// Returns false if a part is missing.
bool read_all(int fd, std::string &text) {
  std::array<char, 65536> buffer = {};
  for (;;) {
    const ssize_t count = ::read(fd, buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR)
      continue;
    if (count <= 0)
      return count == 0;
    text.append(buffer.data(), static_cast<std::size_t>(count));
  }
}

bool ended_well(pid_t pid) {
  int status = 0;
  while (waitpid(pid, &status, 0) < 0) {
    if (errno != EINTR)
      return false;
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void add_names(std::string_view text, NameSet &names) {
  while (!text.empty()) {
    const std::size_t end = text.find('\0');
    names.emplace(text.substr(0, end));
    text.remove_prefix(end + 1);
  }
}

}  // namespace

bool read_stored_names(const std::string &data_directory, NameSet &names) {
  const Path store(data_directory, "profile-store", "");
  // Without an index, or with an empty one, opening the store would create it.
  if (file_size(store.c_str() + std::string(".idx")) <= 0)
    return true;
  std::array<int, 2> ends = {};
  if (pipe2(ends.data(), O_CLOEXEC) != 0)
    return false;
  std::fflush(nullptr);
  const pid_t pid = fork();
  if (pid == 0)
    tell_names(store, ends[1]);
  ::close(ends[1]);
  std::string text;
  const bool complete = pid >= 0 && read_all(ends[0], text);
  ::close(ends[0]);
  if (pid < 0 || !ended_well(pid) || !complete)
    return false;
  add_names(text, names);
  return true;
}

}  // namespace vek::checking

#include "sort/arrivals.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "base/helpers.h"
#include "sort/folders.h"

namespace vek::sorting {
namespace {

using std::chrono::milliseconds;

// More than any honest tree has, and few enough for the stack.
constexpr int deepest_folder = 100;

std::string joined(const std::string &folder, const std::string &name) {
  return folder.empty() ? name : folder + '/' + name;
}

}  // namespace

Arrivals::Arrivals(std::string directory, milliseconds settling)
    : directory_(std::move(directory)), settling_(settling) {}

std::string Arrivals::path_of(const std::string &name) const {
  return joined(directory_, name);
}

bool Arrivals::has_settled(const Identity &identity) const {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  const auto age = now - std::chrono::nanoseconds(identity.modified);
  // Whoever has another clock than this machine cannot be waited for.
  return age < milliseconds(0) || age >= settling_;
}

// Nobody can get a lease for reading of a file that is open for writing. It is
// given back at once, so that whoever opens the file now hardly waits.
bool Arrivals::is_being_written(const std::string &name) const {
  const KeepErrno keep;
  const int descriptor = retry([&] {
    return open(path_of(name).c_str(),
                O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  });
  if (descriptor < 0)
    return false;
  const bool is_open =
      fcntl(descriptor, F_SETLEASE, F_RDLCK) != 0 && errno == EAGAIN;
  close(descriptor);
  return is_open;
}

bool Arrivals::is_mail_folder(const std::string &folder) const {
  const std::string_view here = last_part(folder);
  return (here == "cur" || here == "new") &&
         is_directory(path_of(folder + "/../tmp"));
}

Arrivals::Scan Arrivals::scan(
    const std::function<void(const std::string &)> &enter,
    const std::string &folder) const {
  Scan result;
  scan_folder(folder, 0, enter, result);
  std::ranges::sort(result.texts, {}, &Arrival::name);
  return result;
}

void Arrivals::scan_folder(
    const std::string &folder, int depth,
    const std::function<void(const std::string &)> &enter, Scan &result) const {
  if (enter)
    enter(folder);
  Directory entries(folder.empty() ? directory_ : path_of(folder));
  std::vector<std::string> names;
  std::string entry;
  while (!entries.failed() && entries.read(entry)) {
    if (!entry.starts_with('.'))
      names.push_back(entry);
  }
  if (entries.failed() || entries.read_failed()) {
    if (errno != ENOENT || folder.empty())
      result.failures.push_back({path_of(folder), "", std::strerror(errno)});
    return;
  }
  std::ranges::sort(names);
  const auto has = [&](const char *name) {
    return std::ranges::binary_search(names, name);
  };
  const bool is_maildir = has("cur") && has("new") && has("tmp");
  const bool is_mail = is_mail_folder(folder);
  for (const std::string &name : names) {
    const std::string path = joined(folder, name);
    struct stat status = {};
    if (is_maildir && name == "tmp")
      continue;
    if (lstat(path_of(path).c_str(), &status) != 0) {
      if (errno != ENOENT)
        result.failures.push_back({path_of(path), "", std::strerror(errno)});
    } else if (S_ISDIR(status.st_mode)) {
      if (depth < deepest_folder)
        scan_folder(path, depth + 1, enter, result);
      else
        result.failures.push_back({path, "", "nested more than 100 deep"});
    } else if (!S_ISREG(status.st_mode)) {
      result.others.push_back(path);
    } else {
      const Arrival arrival = {path, identity_of(status), is_mail};
      const bool is_complete =
          has_settled(arrival.identity) && !is_being_written(path);
      (is_complete ? result.texts : result.unsettled).push_back(arrival);
    }
  }
}

bool Arrivals::look_at(const std::string &name, Arrival &arrival) const {
  const std::string folder = directory_of(name);
  const std::string_view here = last_part(folder);
  arrival = {name, {}, is_mail_folder(folder)};
  const bool is_not_there_yet = here == "tmp" &&
                                is_directory(path_of(folder + "/../cur")) &&
                                is_directory(path_of(folder + "/../new"));
  return !is_not_there_yet && identify(path_of(name), arrival.identity);
}

}  // namespace vek::sorting

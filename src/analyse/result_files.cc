#include "analyse/result_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <utility>

namespace vek::analysis {
namespace {

constexpr std::string_view suffix = ".txt";

// Drops "./" from the begin, as often as it stands there.
std::string_view without_dot(std::string_view path) {
  while (path.starts_with("./")) {
    path.remove_prefix(2);
    while (path.starts_with('/'))
      path.remove_prefix(1);
  }
  return path == "." ? std::string_view() : path;
}

std::string_view last_component(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return slash == path.npos ? path : path.substr(slash + 1);
}

// Such a path leaves the directory again that it seems to lie in.
bool has_parent_component(std::string_view path) {
  while (true) {
    const std::size_t slash = path.find('/');
    if (path.substr(0, slash) == "..")
      return true;
    if (slash == path.npos)
      return false;
    path.remove_prefix(slash + 1);
  }
}

// Makes the directories above `file` that are not there. Another process may
// make them at the same time.
bool make_directories(const std::string &file) {
  // From place 1: the root is there.
  for (std::size_t slash = file.find('/', 1); slash != file.npos;
       slash = file.find('/', slash + 1)) {
    const std::string directory = file.substr(0, slash);
    if (mkdir(directory.c_str(), 0777) != 0 && errno != EEXIST)
      return false;
  }
  return true;
}

}  // namespace

ResultNames::ResultNames(std::string_view to) : to_(to) {}

ResultNames::ResultNames(std::string_view to, std::string_view from)
    : to_(to), from_(without_dot(from)), has_from_(true) {
  while (from_.ends_with('/'))
    from_.pop_back();
  // The slashes of the root itself were cut off too.
  if (from.starts_with('/') && from_.empty())
    from_ = "/";
}

std::string ResultNames::find(std::string_view path, std::string &file) const {
  std::string_view name = last_component(path);
  if (has_from_) {
    std::string problem = name_behind_from(path, name);
    if (!problem.empty())
      return problem;
  }
  if (name.empty() || name.ends_with('/'))
    return "names no file";
  if (name.find('\0') != name.npos)
    return "no file has a NUL in its name";
  // Checked in what is appended to the directory: the directory itself may have
  // such components.
  if (has_parent_component(name))
    return "leads out of the directory";
  file = to_ + '/';
  file += name;
  if (name.size() <= suffix.size() || !name.ends_with(suffix))
    file += suffix;
  return {};
}

std::string ResultNames::name_behind_from(std::string_view path,
                                          std::string_view &name) const {
  name = without_dot(path);
  const bool is_inside =
      from_.empty()
          ? !name.starts_with('/')
          : name.starts_with(from_) &&
                (from_ == "/" || name.substr(from_.size()).starts_with('/'));
  if (!is_inside)
    return "not in the directory of '--from'";
  name.remove_prefix(from_.size());
  while (name.starts_with('/'))
    name.remove_prefix(1);
  return {};
}

bool is_result(const std::string &file) {
  struct stat status = {};
  return stat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

ResultFile::~ResultFile() {
  if (descriptor_ >= 0)
    close(descriptor_);
  if (!temporary_.empty())
    unlink(temporary_.c_str());
}

bool ResultFile::open(const std::string &file) {
  file_ = file;
  if (open_temporary())
    return true;
  // The directories are made only where one is missing, so that a file costs no
  // further system calls.
  return errno == ENOENT && make_directories(file) && open_temporary();
}

// The number of the process keeps workers on one host apart, and the counter,
// together with O_EXCL, those on different ones.
bool ResultFile::open_temporary() {
  const std::string begin = file_.substr(0, file_.rfind('/') + 1) +
                            std::string(temporary_prefix) +
                            std::to_string(getpid()) + '-';
  for (unsigned i = 0; descriptor_ < 0; ++i) {
    std::string name = begin + std::to_string(i);
    descriptor_ =
        ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor_ >= 0)
      temporary_ = std::move(name);
    if (descriptor_ < 0 && errno != EEXIST)
      return false;
  }
  return true;
}

bool ResultFile::commit() {
  // Some file systems tell only now that the disk is full.
  const bool is_closed = close(std::exchange(descriptor_, -1)) == 0;
  // In the same directory, hence on the same file system: the name changes at
  // once or not at all.
  if (!is_closed || std::rename(temporary_.c_str(), file_.c_str()) != 0) {
    return false;
  }
  temporary_.clear();
  return true;
}

}  // namespace vek::analysis

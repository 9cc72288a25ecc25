#include "import/directory.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>

#include "base/helpers.h"
#include "base/input_file.h"
#include "base/output_file.h"

namespace vek::importing {
namespace {

constexpr std::string_view temporary_prefix = ".vek-import-";
constexpr char commit_file[] = "commit";

bool write_all(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count =
        retry([&] { return write(descriptor, text.data(), text.size()); });
    if (count < 0)
      return false;
    text.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

bool make_directories_of(const std::string &file, std::size_t begin) {
  for (std::size_t slash = file.find('/', begin); slash != std::string::npos;
       slash = file.find('/', slash + 1)) {
    if (mkdir(file.substr(0, slash).c_str(), 0777) != 0 && errno != EEXIST)
      return false;
  }
  return true;
}

}  // namespace

ExamplesDirectory::~ExamplesDirectory() {
  if (descriptor_ >= 0)
    close(descriptor_);
}

std::string ExamplesDirectory::path_of(std::string_view file) const {
  return path_ + '/' + std::string(file);
}

std::string ExamplesDirectory::staged_path_of(std::string_view file) const {
  return path_of(std::string(temporary_prefix) + std::string(file));
}

bool ExamplesDirectory::has(std::string_view file) const {
  return presence_of(path_of(file)) != Presence::missing;
}

bool ExamplesDirectory::fail(const std::string &file, Failure &failure) const {
  failure = {file, "", std::strerror(errno)};
  return false;
}

bool ExamplesDirectory::open(const std::string &path, Failure &failure) {
  path_ = path;
  for (const std::string &directory : {path_, path_of("files")}) {
    if (mkdir(directory.c_str(), 0777) != 0 && errno != EEXIST)
      return fail(directory, failure);
  }
  descriptor_ = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor_ < 0)
    return fail(path_, failure);
  if (flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK)
      return fail(path_, failure);
    failure = {path_, "", "another import is under way"};
    return false;
  }
  return complete(failure);
}

bool ExamplesDirectory::complete(Failure &failure) const {
  const std::string list = staged_path_of(commit_file);
  std::string text;
  if (read_file(list, text) == ReadResult::ok) {
    for (std::size_t end = text.find('\n'); end != std::string::npos;
         end = text.find('\n')) {
      const std::string file = text.substr(0, end);
      text.erase(0, end + 1);
      const std::string staged = staged_path_of(file);
      // The user's settings are never replaced.
      const bool is_kept = file == resource_file && has(file);
      if (!is_kept && rename(staged.c_str(), path_of(file).c_str()) != 0 &&
          errno != ENOENT)
        return fail(path_of(file), failure);
    }
    if (!sync_path(path_) || unlink(list.c_str()) != 0)
      return fail(list, failure);
  }
  Directory directory(path_);
  std::string name;
  while (!directory.failed() && directory.read(name)) {
    if (name.starts_with(temporary_prefix))
      unlink(path_of(name).c_str());
  }
  return true;
}

bool ExamplesDirectory::commit(const std::vector<std::string> &files,
                               Failure &failure) const {
  if (files.empty())
    return complete(failure);  // nothing but what is temporary
  std::string list;
  for (const std::string &file : files)
    list += file + '\n';
  const std::string begun = staged_path_of("begun");
  OutputFile output;
  output.open(begun, OutputFile::Mode::truncate);
  output << list;
  output.close();
  // With it all texts and staged files.
  if (!output || syncfs(descriptor_) != 0 ||
      rename(begun.c_str(), staged_path_of(commit_file).c_str()) != 0)
    return fail(begun, failure);
  return sync_path(path_) ? complete(failure) : fail(path_, failure);
}

ExamplesDirectory::Written ExamplesDirectory::write_text(
    const std::string &name, std::string_view text, Failure &failure) const {
  const std::string file = path_of("files/" + name + ".txt");
  const auto create = [&file] {
    return ::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  };
  int descriptor = create();
  if (descriptor < 0 && errno == ENOENT) {
    if (!make_directories_of(file, path_of("files/").size())) {
      fail(file, failure);
      return Written::failed;
    }
    descriptor = create();
  }
  if (descriptor < 0 && errno == EEXIST) {
    // A killed run has left the text, or its begin.
    std::string there;
    if (file_size(file) > static_cast<std::int64_t>(text.size()) ||
        read_file(file, there) != ReadResult::ok || !text.starts_with(there))
      return Written::taken;
    if (there.size() == text.size())
      return Written::yes;
    descriptor = ::open(file.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
  }
  if (descriptor < 0) {
    fail(file, failure);
    return Written::failed;
  }
  const bool is_written = write_all(descriptor, text);
  if (close(descriptor) != 0 || !is_written) {
    fail(file, failure);
    return Written::failed;
  }
  return Written::yes;
}

void ExamplesDirectory::remove_text(const std::string &name) const {
  unlink(path_of("files/" + name + ".txt").c_str());
}

std::vector<std::string_view> fields_of(std::string_view line) {
  std::vector<std::string_view> fields;
  while (true) {
    const std::size_t tab = line.find('\t');
    fields.push_back(line.substr(0, tab));
    if (tab == std::string_view::npos)
      return fields;
    line.remove_prefix(tab + 1);
  }
}

}  // namespace vek::importing

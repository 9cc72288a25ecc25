#include "base/helpers.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <memory>

namespace vek {

bool ends_with(std::string_view text, std::string_view suffix) {
  return text.size() > suffix.size() && text.ends_with(suffix);
}

void strip_suffix(std::string &out, std::string_view text,
                  std::string_view suffix) {
  if (ends_with(text, suffix))
    text.remove_suffix(suffix.size());
  out = std::string(text);
}

bool split_word(const std::string &source, char separator, std::string &word,
                std::string &rest) {
  const std::size_t end = source.find(separator);
  if (end == std::string::npos) {
    word = source;
    rest.clear();
    return false;
  }
  const std::size_t next = source.find_first_not_of(separator, end);
  word.assign(source, 0, end);
  if (next == std::string::npos) {
    rest.clear();
  } else if (&rest == &source) {
    rest.erase(0, next);
  } else {
    rest.assign(source, next);
  }
  return !rest.empty();
}

Path::Path(std::string_view directory, std::string_view name,
           std::string_view extension)
    : text_(directory) {
  // Without a name the path is that of the directory itself.
  if (name.empty())
    return;
  if (!directory.empty())
    text_ += '/';
  text_ += name;
  if (!ends_with(name, extension))
    text_ += extension;
}

bool base_name(const std::string &directory, std::string &name) {
  name = directory;
  if (directory == ".") {
    // With a null buffer getcwd() allocates one of the right size.
    const std::unique_ptr<char, decltype(&std::free)> path(getcwd(nullptr, 0),
                                                           &std::free);
    if (path == nullptr)
      return false;
    name = path.get();
  }
  // The search leaves out the last character, which may be a trailing slash;
  // "/" has no other component and stays.
  const std::size_t slash =
      name.size() < 2 ? std::string::npos : name.rfind('/', name.size() - 2);
  if (slash != std::string::npos)
    name.erase(0, slash + 1);
  return true;
}

Directory::Directory(const std::string &path)
    : handle_P_(opendir(path.c_str())) {}

Directory::~Directory() {
  if (handle_P_ != nullptr)
    closedir(handle_P_);
}

bool Directory::read(std::string &name) {
  const int errno_before = errno;
  // readdir() returns null at the end and on failure, and sets errno only on
  // failure.
  errno = 0;
  const dirent *entry_P = readdir(handle_P_);
  read_failed_ = errno != 0;
  if (!read_failed_)
    errno = errno_before;
  if (entry_P == nullptr)
    return false;
  name = entry_P->d_name;
  return true;
}

bool file_exists(const std::string &path) {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0;
}

Presence presence_of(const std::string &path) {
  const int errno_before = errno;
  if (file_exists(path))
    return Presence::there;
  if (errno != ENOENT && errno != ENOTDIR)
    return Presence::unknown;
  errno = errno_before;
  return Presence::missing;
}

bool is_system_failure() {
  return errno == EIO || errno == ENOMEM || errno == EMFILE || errno == ENFILE;
}

bool is_directory(const std::string &path) {
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0)
    return false;
  if (!S_ISDIR(status.st_mode))
    errno = ENOTDIR;
  return S_ISDIR(status.st_mode);
}

std::string printable(std::string_view text) {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string out;
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte >= 0x20 && byte != 0x7F) {
      out += character;
      continue;
    }
    out += "\\x";
    out += digits[byte / 16];
    out += digits[byte % 16];
  }
  return out;
}

std::int64_t file_size(const std::string &path) {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0 ? std::int64_t{status.st_size} : -1;
}

bool sync_path(const std::string &path) {
  const int fd =
      retry([&] { return open(path.c_str(), O_RDONLY | O_CLOEXEC); });
  if (fd < 0)
    return false;
  const bool ok = retry([=] { return fsync(fd); }) == 0;
  const KeepErrno keep;
  close(fd);
  return ok;
}

// By read(), which turns an exception of the buffer into badbit.
std::string read_rest(std::istream &is) {
  constexpr std::size_t piece_size = 65536;
  std::string content;
  do {
    const std::size_t used = content.size();
    content.resize(used + piece_size);
    is.read(content.data() + used, piece_size);
    content.resize(used + static_cast<std::size_t>(is.gcount()));
  } while (is.good());
  return content;
}

KeepErrno::KeepErrno() : value_(errno) {}

KeepErrno::~KeepErrno() {
  errno = value_;
}

}  // namespace vek

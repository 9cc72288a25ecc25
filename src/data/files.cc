#include "data/files.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>

#include "base/helpers.h"
#include "store/datafiles.h"
#include "store/filestore.h"
#include "store/storeio.h"

namespace vek::keeping {
namespace {

constexpr std::size_t piece_size = std::size_t{1} << 20;

}  // namespace

bool fails(const std::string &path, Failure &failure) {
  failure = {path, "", std::strerror(errno)};
  return false;
}

bool list_directory(const std::string &directory,
                    std::vector<std::string> &names, Failure &failure) {
  Directory entries(directory);
  if (entries.failed())
    return fails(directory, failure);
  std::string name;
  while (entries.read(name)) {
    if (name != "." && name != "..")
      names.push_back(name);
  }
  if (entries.read_failed())
    return fails(directory, failure);
  std::sort(names.begin(), names.end());
  return true;
}

bool is_own_file(std::string_view name) {
  constexpr std::array<std::string_view, 6> names = {
      "atoms.dat",       "terms.dat",         "journal.dat",
      "class-files.dat", "profile-store.idx", "profile-store.new"};
  if (std::find(names.begin(), names.end(), name) != names.end() ||
      is_class_file(name)) {
    return true;
  }
  for (guint32 id = 0; id < MAX_NR_STORES; ++id) {
    if (name == repository_path("profile-store", id))
      return true;
  }
  return is_temporary_file(name);
}

bool is_temporary_file(std::string_view name) {
  return name == "journal.tmp" || name == "class-files.tmp" ||
         name == "profile-store.tmp";
}

bool is_data_directory(const std::string &directory, Failure &failure) {
  std::vector<std::string> names;
  if (!list_directory(directory, names, failure))
    return false;
  failure = {directory, "", "no data directory of vek"};
  return std::any_of(names.begin(), names.end(), is_own_file);
}

bool get_status(const std::string &path, struct stat &status,
                Failure &failure) {
  return lstat(path.c_str(), &status) == 0 || fails(path, failure);
}

bool sync_directory(const std::string &directory, Failure &failure) {
  // Some file systems sync no directory.
  return sync_path(directory) || errno == EINVAL || errno == ENOTSUP ||
         fails(directory, failure);
}

std::string parent_of(const std::string &path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos)
    return ".";
  return path.substr(0, std::max<std::size_t>(slash, 1));
}

bool remove_directory(const std::string &directory, Failure &failure) {
  std::vector<std::string> names;
  if (!list_directory(directory, names, failure))
    return false;
  for (const std::string &name : names) {
    if (!is_own_file(name)) {
      failure = {Path(directory, name, ""), "",
                 "it is in the way, and none of vek's files"};
      return false;
    }
  }
  for (const std::string &name : names) {
    const Path path(directory, name, "");
    if (unlink(path.c_str()) != 0)
      return fails(path, failure);
  }
  return rmdir(directory.c_str()) == 0 || fails(directory, failure);
}

bool make_alike(int fd, const struct stat &like, const std::string &path,
                Failure &failure) {
  if (fchown(fd, like.st_uid, like.st_gid) != 0 && errno != EPERM)
    return fails(path, failure);
  return fchmod(fd, like.st_mode & 07777) == 0 || fails(path, failure);
}

NewFile::~NewFile() {
  if (fd_ >= 0)
    close(fd_);
}

bool NewFile::create(const std::string &path, const struct stat &like,
                     Failure &failure) {
  path_ = path;
  if (unlink(path.c_str()) != 0 && errno != ENOENT)
    return fails(path, failure);
  fd_ = retry([&] {
    return open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  });
  return fd_ < 0 ? fails(path, failure) : make_alike(fd_, like, path, failure);
}

bool NewFile::write(std::string_view bytes, Failure &failure) {
  buffer_ += bytes;
  return buffer_.size() < piece_size || write_out(failure);
}

bool NewFile::write_out(Failure &failure) {
  std::string_view rest = buffer_;
  while (!rest.empty()) {
    const ssize_t count =
        retry([&] { return ::write(fd_, rest.data(), rest.size()); });
    if (count == 0)
      errno = EIO;
    if (count <= 0)
      return fails(path_, failure);
    rest.remove_prefix(static_cast<std::size_t>(count));
  }
  buffer_.clear();
  return true;
}

bool NewFile::write_from(int fd, const std::string &path_of_fd,
                         Failure &failure) {
  std::string piece(piece_size, '\0');
  for (;;) {
    const ssize_t count =
        retry([&] { return read(fd, piece.data(), piece.size()); });
    if (count < 0)
      return fails(path_of_fd, failure);
    if (count == 0)
      return true;
    if (!write({piece.data(), static_cast<std::size_t>(count)}, failure))
      return false;
  }
}

bool NewFile::finish(Sync sync, Failure &failure) {
  if (!write_out(failure))
    return false;
  if (sync == Sync::yes && retry([this] { return fsync(fd_); }) != 0)
    return fails(path_, failure);
  const int fd = fd_;
  fd_ = -1;
  // An interrupted close() has closed all the same.
  return close(fd) == 0 || errno == EINTR || fails(path_, failure);
}

}  // namespace vek::keeping

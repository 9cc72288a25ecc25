#include "sort/placing.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>
#include <utility>

#include "base/helpers.h"
#include "base/input_file.h"
#include "sort/folders.h"

namespace vek::sorting {
namespace {

// More are synced with their whole file system, which takes one commit of it
// instead of one for each.
constexpr std::size_t few = 8;

class OpenFile {
 public:
  explicit OpenFile(int descriptor) : descriptor_(descriptor) {}
  ~OpenFile() {
    const KeepErrno keep;
    if (descriptor_ >= 0)
      ::close(descriptor_);
  }
  OpenFile(const OpenFile &) = delete;
  OpenFile &operator=(const OpenFile &) = delete;

  bool is_open() const { return descriptor_ >= 0; }
  int get() const { return descriptor_; }

 private:
  const int descriptor_;
};

OpenFile open_to_read(const std::string &path, int flags = 0) {
  return OpenFile(retry([&] {
    return ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | flags);
  }));
}

// Some file systems sync no directory.
bool is_synced(int result) {
  return result == 0 || errno == EINVAL || errno == EBADF;
}

// Nothing that has the new name is replaced: EEXIST.
bool rename_new(const std::string &from, const std::string &to) {
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(),
                RENAME_NOREPLACE) == 0)
    return true;
  // A file system that does not know how.
  if (errno != EINVAL && errno != ENOSYS && errno != EOPNOTSUPP)
    return false;
  if (link(from.c_str(), to.c_str()) != 0)
    return false;
  if (unlink(from.c_str()) == 0)
    return true;
  const KeepErrno keep;
  unlink(to.c_str());
  return false;
}

// From one directory to another; empty when mounts have changed.
std::map<std::pair<std::string, std::string>, bool> &known_ways() {
  static std::map<std::pair<std::string, std::string>, bool> ways;
  return ways;
}

// Not so at the border of a mount, even on one file system.
bool can_rename(const std::string &source, const std::string &folder) {
  auto &known = known_ways();
  std::pair<std::string, std::string> way(directory_of(source), folder);
  const auto found = known.find(way);
  if (found != known.end())
    return found->second;
  // There is no such file, and the system says so after all that matters more.
  const std::string nothing = temporary_prefix + std::string("none");
  const bool is_possible =
      renameat2(AT_FDCWD, (way.first + '/' + nothing).c_str(), AT_FDCWD,
                (folder + '/' + nothing).c_str(), RENAME_NOREPLACE) == 0 ||
      errno != EXDEV;
  if (known.size() > 10000)
    known.clear();
  known.emplace(std::move(way), is_possible);
  return is_possible;
}

// The same file, or another one with the same bytes.
bool is_same(const std::string &a, const std::string &b) {
  Identity of_a;
  Identity of_b;
  if (!identify(a, of_a) || !identify(b, of_b) || of_a.size != of_b.size)
    return false;
  if (of_a.device == of_b.device && of_a.inode == of_b.inode)
    return true;
  std::string bytes_of_a;
  std::string bytes_of_b;
  return read_file(a, bytes_of_a) == ReadResult::ok &&
         read_file(b, bytes_of_b) == ReadResult::ok && bytes_of_a == bytes_of_b;
}

bool write_all(int descriptor, const char *bytes_P, std::size_t size) {
  while (size > 0) {
    const ssize_t count =
        retry([&] { return ::write(descriptor, bytes_P, size); });
    if (count < 0)
      return false;
    if (count == 0) {
      errno = EIO;
      return false;
    }
    bytes_P += count;
    size -= static_cast<std::size_t>(count);
  }
  return true;
}

bool copy_bytes(int from, int to) {
  std::vector<char> buffer(std::size_t{1} << 17);
  while (true) {
    const ssize_t count =
        retry([&] { return ::read(from, buffer.data(), buffer.size()); });
    if (count <= 0)
      return count == 0;
    if (!write_all(to, buffer.data(), static_cast<std::size_t>(count)))
      return false;
  }
}

}  // namespace

Identity identity_of(const struct stat &status) {
  return {status.st_dev, status.st_ino, status.st_size,
          std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 +
              status.st_mtim.tv_nsec};
}

bool identify(const std::string &path, Identity &identity) {
  struct stat status = {};
  if (lstat(path.c_str(), &status) != 0)
    return false;
  if (!S_ISREG(status.st_mode)) {
    errno = EINVAL;
    return false;
  }
  identity = identity_of(status);
  return true;
}

bool Unsynced::sync(Failure &failure) {
  const std::set<std::string> paths = std::exchange(paths_, {});
  std::set<dev_t> devices;
  for (const std::string &path : paths) {
    struct stat status = {};
    const OpenFile file = open_to_read(path);
    bool is_done = file.is_open();
    if (is_done && paths.size() <= few) {
      is_done = is_synced(retry([&] { return fsync(file.get()); }));
    } else if (is_done) {
      is_done = fstat(file.get(), &status) == 0 &&
                (!devices.insert(status.st_dev).second ||
                 retry([&] { return syncfs(file.get()); }) == 0);
    }
    // A user may have taken away what was just brought.
    if (!is_done && errno != ENOENT) {
      failure = {path, "", std::strerror(errno)};
      return false;
    }
  }
  return true;
}

Placing::Placing(Mode mode, std::string source, const Identity &identity,
                 const std::string &target,
                 const std::vector<std::string> &places, std::size_t number)
    : mode_(mode),
      source_(std::move(source)),
      identity_(identity),
      target_(target) {
  for (const std::string &place : places) {
    const std::string path = target + '/' + place;
    places_.push_back({path, directory_of(path) + '/' + temporary_prefix +
                                 std::to_string(number)});
  }
}

bool Placing::fail(const std::string &file) {
  failure_ = {file, "", std::strerror(errno)};
  state_ = State::failed;
  return false;
}

bool Placing::has_place() const {
  Identity there;
  return !places_.empty() && identify(places_.front().path, there) &&
         there.is_alike(identity_);
}

// Sets the state if it is not as it was when the text was read.
bool Placing::look_at_source(dev_t *device_P) {
  Identity now;
  if (!identify(source_, now)) {
    if (errno != ENOENT && errno != ENOTDIR && errno != EINVAL)
      return fail(source_);
    state_ = State::gone;
    return false;
  }
  if (device_P != nullptr)
    *device_P = now.device;
  if (now == identity_)
    return true;
  state_ = now.inode != identity_.inode ? State::gone : State::changed;
  return false;
}

bool Placing::make_folders(const std::string &path, Unsynced &directories) {
  for (std::size_t slash = path.find('/', target_.size() + 1);
       slash != std::string::npos; slash = path.find('/', slash + 1)) {
    const std::string folder = path.substr(0, slash);
    if (mkdir(folder.c_str(), 0777) == 0)
      directories.add(directory_of(folder));
    else if (errno != EEXIST)
      return fail(folder);
  }
  return true;
}

bool Placing::copy(const std::string &to) {
  const OpenFile from = open_to_read(source_, O_NOFOLLOW);
  struct stat status = {};
  if (!from.is_open() || fstat(from.get(), &status) != 0)
    return fail(source_);
  const OpenFile file(retry([&] {
    return ::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  }));
  const timespec times[] = {status.st_atim, status.st_mtim};
  return (file.is_open() && copy_bytes(from.get(), file.get()) &&
          fchmod(file.get(), (status.st_mode & 0777) | 0600) == 0 &&
          futimens(file.get(), times) == 0) ||
         fail(to);
}

bool Placing::prepare(Place &place, Unsynced &files) {
  // That of a call that was killed.
  if (unlink(place.temporary.c_str()) != 0 && errno != ENOENT)
    return fail(place.temporary);
  if (is_same(source_, place.path)) {
    place.is_there = true;
    return true;
  }
  if (mode_ != Mode::copy &&
      link(source_.c_str(), place.temporary.c_str()) == 0)
    return true;
  files.add(place.temporary);
  return copy(place.temporary);
}

void Placing::prepare(Unsynced &files, Unsynced &directories) {
  dev_t device = 0;
  if (places_.empty() || state_ != State::begun || !look_at_source(&device))
    return;
  for (Place &place : places_) {
    struct stat status = {};
    const std::string folder = directory_of(place.path);
    if (stat(folder.c_str(), &status) != 0 &&
        (!make_folders(place.path, directories) ||
         (stat(folder.c_str(), &status) != 0 && !fail(folder))))
      return;
    if (mode_ == Mode::move && &place == &places_.front() &&
        status.st_dev == device && can_rename(source_, folder))
      is_renamed_ = true;
    else if (!prepare(place, files))
      return;
  }
}

void Placing::place(Unsynced &directories) {
  if (state_ != State::begun)
    return;
  if (places_.empty()) {
    state_ = State::done;
    return;
  }
  if (!look_at_source())
    return;
  for (auto place = places_.rbegin(); place != places_.rend(); ++place) {
    const bool is_source = is_renamed_ && &*place == &places_.front();
    const std::string &from = is_source ? source_ : place->temporary;
    if (!place->is_there && !rename_new(from, place->path)) {
      // Both names of one file: a kill in the midst of rename_new().
      if (errno != EEXIST || !is_same(from, place->path)) {
        fail(place->path);
        if (errno == EXDEV)
          known_ways().clear();
        if (errno == ENOENT && is_source)
          look_at_source();
        return;
      }
      if (unlink(from.c_str()) != 0) {
        fail(from);
        return;
      }
    }
    place->is_there = true;
    directories.add(directory_of(place->path));
  }
  if (is_renamed_)
    directories.add(directory_of(source_));
  state_ = State::done;
}

void Placing::remove_source(Unsynced &directories) {
  if (state_ != State::done || mode_ != Mode::move || is_renamed_ ||
      places_.empty())
    return;
  Identity now;
  const bool is_there = identify(source_, now);
  // What was written to it meanwhile is another text.
  if (is_there && now != identity_)
    return;
  if (is_there && unlink(source_.c_str()) == 0)
    directories.add(directory_of(source_));
  else if (errno != ENOENT)
    fail(source_);
}

void Placing::undo() {
  const KeepErrno keep;
  for (const Place &place : places_) {
    const bool is_text = is_renamed_ && &place == &places_.front();
    if (!is_text)
      unlink(place.temporary.c_str());
    if (!is_text && place.is_there && state_ != State::done)
      unlink(place.path.c_str());
  }
}

}  // namespace vek::sorting

// Loaded before vek's other libraries, stands between it and the system: counts
// the calls that can fail, and lets one of them fail, fall short, or be the
// last thing that the process does.
//
//   VEK_FAULT="CALL NUMBER HOW"  the NUMBERth call of CALL; with the CALL
//                                "change", of any call that changes a file
//   VEK_FAULT="list"             lets all calls pass
//   VEK_FAULT_REPORT=FILE        gets a line when that call comes; with "list",
//                                one for each call
//
// HOW is the number of an error, or one of the words of `parse()`. "lost" and
// "mixed SEED" are a power cut: of the directory `data` there stays only what
// was synced, or of each file and each name by chance the one or the other.
//
// Only vek itself is counted, from the start of main() on, and no process that
// it starts. The time stands still, so that runs can be compared byte by byte.
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <new>
#include <random>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

namespace {

namespace fs = std::filesystem;

template <typename Function>
Function *real(const char *name) {
  return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

// ---- What a power cut leaves.

std::string content_of(const fs::path &path) {
  if (!fs::is_regular_file(path))
    return "";
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

ino_t inode_of(const char *path) {
  struct stat status = {};
  return stat(path, &status) == 0 ? status.st_ino : 0;
}

class Disk {
 public:
  void sync_all() {
    sync_names();
    for (const auto &entry : entries())
      contents_[id_of(inode_of(entry.c_str()))] = content_of(entry);
  }
  void sync_names() {
    names_.clear();
    for (const auto &entry : entries())
      names_[entry.filename()] = id_of(inode_of(entry.c_str()));
  }
  // A file by its descriptor, or the directory.
  void sync(int fd) {
    struct stat status = {};
    fstat(fd, &status);
    if (status.st_ino == inode_of(directory.c_str()))
      sync_names();
    if (S_ISREG(status.st_mode)) {
      contents_[id_of(status.st_ino)] =
          content_of("/proc/self/fd/" + std::to_string(fd));
    }
  }
  // The system may use the number of a file again that has no name any more.
  void forget(ino_t inode) { ids_.erase(inode); }

  void cut(unsigned seed) {
    std::mt19937 dice(seed);
    const auto keep_new = [&] { return seed != 0 && dice() % 2 == 0; };
    std::map<fs::path, int> names = names_;
    std::map<int, std::string> contents = contents_;
    for (const auto &entry : entries()) {
      const int id = id_of(inode_of(entry.c_str()));
      contents[id] = content_of(entry);
      if (keep_new())
        names[entry.filename()] = id;
    }
    for (const auto &[name, id] : names_) {
      if (!exists(directory / name) && keep_new())
        names.erase(name);
    }
    for (const auto &entry : entries())
      fs::remove(entry);
    for (const auto &[name, id] : names) {
      std::string &now = contents[id];
      const std::string &synced = contents_[id];
      if (!keep_new()) {
        now = synced;
      } else if (keep_new() && now.size() > 1) {
        // Torn: only the second half has reached the disk.
        std::string torn = synced;
        torn.resize(now.size());
        now = torn.substr(0, now.size() / 2) + now.substr(now.size() / 2);
      }
      std::ofstream(directory / name, std::ios::binary) << now;
    }
  }

 private:
  static std::vector<fs::path> entries() {
    std::error_code missing;
    const fs::directory_iterator all(directory, missing);
    return missing ? std::vector<fs::path>()
                   : std::vector<fs::path>(begin(all), end(all));
  }
  int id_of(ino_t inode) {
    const auto [place, is_new] = ids_.try_emplace(inode, next_id_);
    if (is_new)
      ++next_id_;
    return place->second;
  }
  static inline const fs::path directory = "data";

  int next_id_ = 0;
  std::map<ino_t, int> ids_;
  std::map<fs::path, int> names_;
  std::map<int, std::string> contents_;
};

// ---- When, and what then.

enum class How { pass, error, shorter, nothing, before, after, torn, cut };

struct Plan {
  std::string call;
  long number = 0;
  How how = How::pass;
  int error = 0;
  unsigned seed = 0;
};

struct State {
  Plan plan;
  Disk disk;
  std::map<std::string, long> counts;
  long nr_allocations = 0;
  std::string report;
};

// Null before main() and in whatever is no vek.
State *state_P = nullptr;
pid_t vek_pid = 0;
// Calls that the library makes are let pass.
bool is_inside = false;

Plan parse(const char *text_P) {
  std::istringstream text(text_P == nullptr ? "none 0 0" : text_P);
  Plan plan;
  std::string how;
  text >> plan.call >> plan.number >> how >> plan.seed;
  const std::map<std::string, How> words = {
      {"short", How::shorter}, {"nothing", How::nothing},
      {"before", How::before}, {"after", How::after},
      {"torn", How::torn},     {"lost", How::cut},
      {"mixed", How::cut}};
  const auto word = words.find(how);
  plan.how = word == words.end() ? How::error : word->second;
  plan.error = std::atoi(how.c_str());
  return plan;
}

void report(const std::string &line) {
  std::ofstream(state_P->report, std::ios::app) << line << '\n';
}

[[noreturn]] void die() {
  if (state_P->plan.how == How::cut)
    state_P->disk.cut(state_P->plan.seed);
  kill(getpid(), SIGKILL);
  for (;;)
    pause();
}

// Counts a call and says what is to become of it. `subject` is the file.
How decide(const std::string &call, bool changes, const std::string &subject) {
  Plan &plan = state_P->plan;
  const long count = ++state_P->counts[call];
  const long nr_changes = changes ? ++state_P->counts["change"] : 0;
  if (plan.call == "list") {
    report("call " + call + ' ' + std::to_string(count) + ' ' + subject);
    if (changes)
      report("call change " + std::to_string(nr_changes) + ' ' + subject);
  }
  const bool is_it = plan.call == "change"
                         ? changes && nr_changes == plan.number
                         : plan.call == call && count == plan.number;
  if (!is_it)
    return How::pass;
  report("hit " + call + ' ' + subject);
  if (plan.how == How::before || plan.how == How::cut)
    die();
  errno = plan.error;
  return plan.how;
}

// The file of a call.
std::string name_of(const char *path) {
  return path;
}
std::string name_of(int fd) {
  std::error_code ignored;
  return fs::read_symlink("/proc/self/fd/" + std::to_string(fd), ignored);
}

class Inside {
 public:
  Inside() { is_inside = true; }
  ~Inside() { is_inside = false; }
};

bool is_watched() {
  return state_P != nullptr && !is_inside && getpid() == vek_pid;
}

// Makes the call unless it is the one that shall fail; `done` sees that it was
// made.
template <typename Subject, typename Call, typename Done = void (*)()>
auto guarded(
    const char *name, bool changes, Subject subject, Call call,
    Done done = [] {}) {
  using Result = decltype(call());
  if (!is_watched())
    return call();
  const Inside inside;
  const How how = decide(name, changes, name_of(subject));
  if (how == How::error) {
    if constexpr (std::is_pointer_v<Result>)
      return Result(nullptr);
    else
      return Result(-1);
  }
  const Result result = call();
  const int errno_now = errno;
  done();
  if (how == How::after || how == How::torn)
    die();
  errno = errno_now;
  return result;
}

// A call that takes its name from a file.
template <typename Call>
int guarded_end_of(const char *path, const char *name, Call call) {
  const ino_t gone = is_watched() ? Inside(), inode_of(path) : 0;
  return guarded(name, true, path, call, [=] { state_P->disk.forget(gone); });
}

template <typename Move>
ssize_t move_bytes(const char *name, bool changes, int fd, std::size_t size,
                   Move move) {
  if (!is_watched())
    return move(size);
  const Inside inside;
  const How how = decide(name, changes, name_of(fd));
  if (how == How::error)
    return -1;
  if (how == How::nothing)
    return 0;
  const bool is_cut = how == How::shorter || how == How::torn;
  const ssize_t count = move(is_cut ? size / 2 : size);
  if (how == How::after || how == How::torn)
    die();
  return count;
}

int open_file(const char *path, int flags, mode_t mode) {
  const bool changes = (flags & (O_CREAT | O_TRUNC)) != 0;
  return guarded("open", changes, path, [=] {
    return real<int(const char *, int, ...)>("open")(path, flags, mode);
  });
}

}  // namespace

// The system's own names.
// NOLINTBEGIN(readability-identifier-naming)
extern "C" {

using Main = int(int, char **, char **);
static Main *vek_main_P = nullptr;

static int counted_main(int count, char **arguments, char **environment) {
  {
    const Inside inside;
    // Never destroyed: vek's own objects outlive what is made here.
    auto *new_state_P = new State;
    new_state_P->plan = parse(std::getenv("VEK_FAULT"));
    new_state_P->report = std::getenv("VEK_FAULT_REPORT");
    new_state_P->disk.sync_all();
    vek_pid = getpid();
    // What vek starts shall not be counted.
    unsetenv("LD_PRELOAD");
    state_P = new_state_P;
  }
  return vek_main_P(count, arguments, environment);
}

__attribute__((destructor)) static void write_end() {
  if (state_P == nullptr || getpid() != vek_pid)
    return;
  const Inside inside;
  if (state_P->plan.call == "list")
    report("call malloc " + std::to_string(state_P->nr_allocations));
  state_P = nullptr;
}

int __libc_start_main(Main *main_P, int count, char **arguments, void (*init)(),
                      void (*fini)(), void (*loader_fini)(), void *stack_end) {
  vek_main_P = main_P;
  Main *const begin_P =
      std::getenv("VEK_FAULT_REPORT") == nullptr ? main_P : counted_main;
  return real<int(Main *, int, char **, void (*)(), void (*)(), void (*)(),
                  void *)>("__libc_start_main")(begin_P, count, arguments, init,
                                                fini, loader_fini, stack_end);
}

time_t time(time_t *out) {
  constexpr time_t now = 1'000'000'000;
  if (out != nullptr)
    *out = now;
  return now;
}

int open(const char *path, int flags, ...) {
  std::va_list values;
  va_start(values, flags);
  const auto mode = va_arg(values, mode_t);
  va_end(values);
  return open_file(path, flags, mode);
}
int __open_2(const char *path, int flags) {
  return open_file(path, flags, 0);
}
// By which streams open their files.
FILE *fopen64(const char *path, const char *mode) {
  return guarded("open", false, path, [=] {
    return real<decltype(fopen64)>("fopen64")(path, mode);
  });
}
FILE *fopen(const char *path, const char *mode) {
  return fopen64(path, mode);
}

ssize_t read(int fd, void *bytes, size_t size) {
  return move_bytes("read", false, fd, size, [=](size_t part) {
    return real<decltype(read)>("read")(fd, bytes, part);
  });
}
ssize_t pread(int fd, void *bytes, size_t size, off_t offset) {
  return move_bytes("pread", false, fd, size, [=](size_t part) {
    return real<decltype(pread)>("pread")(fd, bytes, part, offset);
  });
}
ssize_t write(int fd, const void *bytes, size_t size) {
  return move_bytes("write", true, fd, size, [=](size_t part) {
    return real<decltype(write)>("write")(fd, bytes, part);
  });
}
ssize_t __read_chk(int fd, void *bytes, size_t size, size_t) {
  return read(fd, bytes, size);
}
ssize_t __pread_chk(int fd, void *bytes, size_t size, off_t offset, size_t) {
  return pread(fd, bytes, size, offset);
}

// What is on the disk is known here; nobody has to wait for a real one.
int fsync(int fd) {
  return guarded(
      "fsync", true, fd, [] { return 0; }, [=] { state_P->disk.sync(fd); });
}
int syncfs(int fd) noexcept {
  return guarded(
      "syncfs", true, fd, [] { return 0; }, [] { state_P->disk.sync_all(); });
}
int rename(const char *from, const char *to) noexcept {
  return guarded_end_of(to, "rename", [=] {
    return real<int(const char *, const char *)>("rename")(from, to);
  });
}
int unlink(const char *path) noexcept {
  return guarded_end_of(
      path, "unlink", [=] { return real<int(const char *)>("unlink")(path); });
}

#define STAND_IN(result, name, parameters, exception, changes, subject, ...) \
  result name parameters exception {                                         \
    return guarded(#name, changes, subject, [=] {                            \
      return real<result parameters>(#name)(__VA_ARGS__);                    \
    });                                                                      \
  }
STAND_IN(int, close, (int fd), , true, fd, fd)
STAND_IN(off_t, lseek, (int fd, off_t offset, int whence), noexcept, false, fd,
         fd, offset, whence)
STAND_IN(int, ftruncate, (int fd, off_t size), noexcept, true, fd, fd, size)
STAND_IN(int, truncate, (const char *path, off_t size), noexcept, true, path,
         path, size)
STAND_IN(int, fallocate, (int fd, int mode, off_t offset, off_t size), , true,
         fd, fd, mode, offset, size)
STAND_IN(int, stat, (const char *path, struct stat *out), noexcept, false, path,
         path, out)
STAND_IN(int, fstat, (int fd, struct stat *out), noexcept, false, fd, fd, out)
STAND_IN(int, mkdir, (const char *path, mode_t mode), noexcept, true, path,
         path, mode)
STAND_IN(int, lstat, (const char *path, struct stat *out), noexcept, false,
         path, path, out)
STAND_IN(int, fchmod, (int fd, mode_t mode), noexcept, true, fd, fd, mode)
STAND_IN(int, fchown, (int fd, uid_t user, gid_t group), noexcept, true, fd, fd,
         user, group)
STAND_IN(int, link, (const char *from, const char *to), noexcept, true, to,
         from, to)
STAND_IN(int, flock, (int fd, int how), noexcept, false, fd, fd, how)
STAND_IN(int, rmdir, (const char *path), noexcept, true, path, path)
STAND_IN(int, renameat2,
         (int from_fd, const char *from, int to_fd, const char *to,
          unsigned flags),
         noexcept, true, to, from_fd, from, to_fd, to, flags)
STAND_IN(pid_t, fork, (), noexcept, false, "")
STAND_IN(int, pipe2, (int *ends, int flags), noexcept, false, "", ends, flags)
STAND_IN(int, poll, (pollfd * fds, nfds_t count, int timeout), , false, "", fds,
         count, timeout)
STAND_IN(DIR *, opendir, (const char *path), , false, path, path)
STAND_IN(dirent *, readdir, (DIR * directory_P), , false, "", directory_P)
STAND_IN(char *, getcwd, (char *buffer, size_t size), noexcept, false, "",
         buffer, size)

// ---- Memory. A sanitizer has its own.
#ifndef VEK_SANITIZE

// GLib stops the process where it gets no memory. It is the file store's
// business to see to it before, so what GLib asks for itself is let pass.
static bool is_glib(const void *caller_P) {
  Dl_info info = {};
  const Inside inside;
  return dladdr(caller_P, &info) != 0 && info.dli_fname != nullptr &&
         std::strstr(info.dli_fname, "libglib") != nullptr;
}

// "malloc N E": the Nth allocation fails; "memory N E": each from there on.
static bool allocation_fails(const void *caller_P) {
  if (!is_watched() || is_glib(caller_P))
    return false;
  const Plan &plan = state_P->plan;
  const long number = ++state_P->nr_allocations;
  if (!(plan.call == "malloc" && number == plan.number) &&
      !(plan.call == "memory" && number >= plan.number)) {
    return false;
  }
  if (number == plan.number) {
    const Inside inside;
    report("hit malloc");
  }
  errno = ENOMEM;
  return true;
}

// What comes next is the allocator that vek is linked with.
#define REAL(name) reinterpret_cast<decltype(&name)>(dlsym(RTLD_NEXT, #name))

#define ALLOCATOR(name, parameters, ...)                 \
  void *name parameters noexcept {                       \
    static const auto real_P = REAL(name);               \
    return allocation_fails(__builtin_return_address(0)) \
               ? nullptr                                 \
               : real_P(__VA_ARGS__);                    \
  }
ALLOCATOR(malloc, (size_t size), size)
ALLOCATOR(calloc, (size_t count, size_t size), count, size)
ALLOCATOR(realloc, (void *block, size_t size), block, size)

#endif
}

#ifndef VEK_SANITIZE
// An allocator may have its own, which do not pass through malloc().
void *operator new(size_t size) {
  for (;;) {
    if (void *block = std::malloc(size); block != nullptr)
      return block;
    const std::new_handler handler = std::get_new_handler();
    if (handler == nullptr)
      throw std::bad_alloc();
    handler();
  }
}
void *operator new[](size_t size) {
  return operator new(size);
}
void *operator new[](size_t size, const std::nothrow_t &) noexcept {
  try {
    return operator new(size);
  } catch (const std::bad_alloc &) {
    return nullptr;
  }
}
#endif
// NOLINTEND(readability-identifier-naming)

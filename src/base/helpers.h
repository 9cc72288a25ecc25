// Paths, directories and words: the small helpers that every subsystem uses.
#ifndef VEK_BASE_HELPERS_H_
#define VEK_BASE_HELPERS_H_

#include <dirent.h>

#include <cerrno>
#include <cstdint>
#include <istream>
#include <string>
#include <string_view>

namespace vek {

// The type of all weights, scores and thresholds.
using WeightType = double;

// True if `text` is strictly longer than `suffix` and ends in it.
bool ends_with(std::string_view text, std::string_view suffix);

// Sets `out` to `text`, without `suffix` if ends_with() holds for the two.
void strip_suffix(std::string &out, std::string_view text,
                  std::string_view suffix);

// Cuts the first word off `source`: `word` gets the text up to the first
// `separator` or the end; the whole run of separators behind it is skipped;
// `rest` gets what is left. Returns whether `rest` is not empty. `source` and
// `rest` may be the same string.
bool split_word(const std::string &source, char separator, std::string &word,
                std::string &rest);

// A file path made of directory, name and extension, any of which may be empty.
// The extension carries its full stop and is not doubled: it is left out if the
// name ends in it already, and if there is no name. A slash at the end of the
// directory stays, and another follows it.
class Path {
 public:
  Path(std::string_view directory, std::string_view name,
       std::string_view extension);

  const char *c_str() const { return text_.c_str(); }
  operator const std::string &() const { return text_; }

 private:
  std::string text_;
};

// Sets `name` to the last component of a directory's path, a trailing slash
// included; to that of the working directory for ".". False, with errno set, if
// the system does not tell the working directory.
bool base_name(const std::string &directory, std::string &name);

// Repeats a system call as long as a signal interrupts it. Leaves errno alone
// unless the call fails.
template <typename Call>
auto retry(Call call) {
  const int errno_before = errno;
  auto result = call();
  while (result == -1 && errno == EINTR)
    result = call();
  if (result != -1)
    errno = errno_before;
  return result;
}

// An open directory, closed by the destructor.
class Directory {
 public:
  explicit Directory(const std::string &path);
  ~Directory();
  Directory(const Directory &) = delete;
  Directory &operator=(const Directory &) = delete;

  // True if the directory could not be opened; errno says why.
  bool failed() const { return handle_P_ == nullptr; }

  // Sets `name` to the next entry, in the order of the system, "." and ".."
  // included. Returns false at the end, and if the system fails to read on.
  bool read(std::string &name);
  // The last read() ended by a failure; errno says which.
  bool read_failed() const { return read_failed_; }

 private:
  DIR *handle_P_;
  bool read_failed_ = false;
};

// stat() succeeds for `path`. A failure leaves errno set.
bool file_exists(const std::string &path);

// Whether there is a file at `path`. Not known, with errno set, if the system
// fails to say.
enum class Presence { there, missing, unknown };
Presence presence_of(const std::string &path);

// Whether errno tells of a failure of the system, which says nothing about the
// file: whether it is there and readable may be known the next time.
bool is_system_failure();

// `path` exists and is a directory. Sets errno if not.
bool is_directory(const std::string &path);

// A name as it can be shown in one line: control characters as \x and two
// hexadecimal digits. Names come from lists and directories, and may hold what
// a terminal would take for a command.
std::string printable(std::string_view text);

// Size in bytes, -1 if stat() fails.
std::int64_t file_size(const std::string &path);

// Has the system put a file's content on the disk, or a directory's names.
// Returns whether it did; errno says why not.
bool sync_path(const std::string &path);

// All that is left in a stream. If the system fails to read, badbit is set and
// what came before that is returned.
std::string read_rest(std::istream &is);

// Sets errno back to what it was at construction. For calls whose failure must
// not show in the run's exit status, which follows errno.
class KeepErrno {
 public:
  KeepErrno();
  ~KeepErrno();
  KeepErrno(const KeepErrno &) = delete;
  KeepErrno &operator=(const KeepErrno &) = delete;

 private:
  int value_;
};

}  // namespace vek

#endif  // VEK_BASE_HELPERS_H_

// Files of a data directory as bytes: which there are, and how new ones are
// written. All return false, with `failure` filled in, if the system refuses.
#ifndef VEK_DATA_FILES_H_
#define VEK_DATA_FILES_H_

#include <sys/stat.h>

#include <string>
#include <string_view>
#include <vector>

#include "base/failure.h"

namespace vek::keeping {

// The failure of a system call, by errno.
bool fails(const std::string &path, Failure &failure);

// What is in a directory, by name, without "." and "..".
bool list_directory(const std::string &directory,
                    std::vector<std::string> &names, Failure &failure);

// vek writes a file of that name in a data directory.
bool is_own_file(std::string_view name);
// One that is left when a run is broken off, and that nobody reads.
bool is_temporary_file(std::string_view name);

// There is a file of vek's in the directory.
bool is_data_directory(const std::string &directory, Failure &failure);

// Does not follow a symbolic link.
bool get_status(const std::string &path, struct stat &status, Failure &failure);

// Has the system put the names of a directory on the disk.
bool sync_directory(const std::string &directory, Failure &failure);

// The directory in which a path lies.
std::string parent_of(const std::string &path);

// Removes an index, a repository or whatever else lies in a directory, and the
// directory. One that holds anything that is not vek's is left alone.
bool remove_directory(const std::string &directory, Failure &failure);

// A file that is written from its begin to its end.
class NewFile {
 public:
  NewFile() = default;
  ~NewFile();
  NewFile(const NewFile &) = delete;
  NewFile &operator=(const NewFile &) = delete;

  // With the mode of another file, and its owner as far as that is allowed.
  // What lies there is replaced.
  bool create(const std::string &path, const struct stat &like,
              Failure &failure);
  bool write(std::string_view bytes, Failure &failure);
  // To the end of the file that is open as `fd`.
  bool write_from(int fd, const std::string &path_of_fd, Failure &failure);
  enum class Sync { no, yes };
  bool finish(Sync sync, Failure &failure);

 private:
  bool write_out(Failure &failure);

  std::string path_;
  std::string buffer_;
  int fd_ = -1;
};

// Gives a file or directory the mode and, as far as that is allowed, the owner
// of another one.
bool make_alike(int fd, const struct stat &like, const std::string &path,
                Failure &failure);

}  // namespace vek::keeping

#endif  // VEK_DATA_FILES_H_

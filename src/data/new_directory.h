// A directory that is written whole or not at all: under a name of its own,
// and it gets the one that it is for when all of it is on the disk. One that
// was left half written has the first name still, and is removed by the next
// call.
#ifndef VEK_DATA_NEW_DIRECTORY_H_
#define VEK_DATA_NEW_DIRECTORY_H_

#include <sys/stat.h>

#include <string>

#include "base/failure.h"
#include "data/directory_lock.h"
#include "data/files.h"

namespace vek::keeping {

class NewDirectory {
 public:
  // Removes one with all that belongs in it, and nothing else.
  using Remove = bool (*)(const std::string &path, Failure &failure);

  // Under its first name.
  explicit NewDirectory(std::string path, Remove remove = remove_directory)
      : path_(std::move(path)), remove_(remove) {}

  // It is locked from here on, under whatever name: another call must neither
  // take it for a left-over nor begin with it before this one is through.
  bool make(Failure &failure);
  // Has all of it put on the disk, with the mode and owner of another one.
  bool finish(const struct stat &like, Failure &failure) const;
  // Gives it the name that it is for, at which there must be nothing.
  bool put_at(const std::string &path, Failure &failure) const;
  // After a failure, of which the caller is to hear, not of this one.
  void give_up() const;

  const std::string &path() const { return path_; }

 private:
  const std::string path_;
  const Remove remove_;
  DirectoryLock lock_;
};

// False, with `failure` filled in, if there is anything at that path.
bool is_free(const std::string &path, Failure &failure);

std::string without_slashes(std::string path);

}  // namespace vek::keeping

#endif  // VEK_DATA_NEW_DIRECTORY_H_

// A lock on a whole directory, among processes that ask for it.
//
// It is the kernel's (flock()), on the directory itself: there is no file for
// it, and it goes with the process that has it, however that ends. Many may
// hold it shared, or one exclusively. Over a network file system it may keep
// apart only the processes of one machine, or fail.
#ifndef VEK_STORE_DIRECTORYLOCK_H_
#define VEK_STORE_DIRECTORYLOCK_H_

#include <sys/types.h>

#include <string>

namespace vek {

class DirectoryLock {
 public:
  enum class Mode { shared, exclusive };
  enum class Outcome {
    locked,
    held,    // by somebody else, so that this would have to wait
    failed,  // it cannot be locked; errno says why
  };

  DirectoryLock() = default;
  ~DirectoryLock() { release(); }
  DirectoryLock(const DirectoryLock &) = delete;
  DirectoryLock &operator=(const DirectoryLock &) = delete;

  // Does not wait. What is locked is the directory that has this name on
  // return, also when somebody replaces it at the same time. Reports nothing,
  // and leaves errno alone but for a failure. Programs that are started while
  // the lock is held do not get it.
  Outcome take(const std::string &directory, Mode mode);

  // After `held`, a process that had the lock; 0 if the system does not tell.
  pid_t holder() const { return holder_; }

  // What is locked has this name still. True as well where nothing is locked,
  // and if the system does not tell.
  bool has_name(const std::string &directory) const;

  void release();

 private:
  Outcome lock_open_directory(const std::string &directory, Mode mode);

  int fd_ = -1;
  pid_t holder_ = 0;
};

}  // namespace vek

#endif  // VEK_STORE_DIRECTORYLOCK_H_

// Brings a text to its places in a target directory.
//
// Each step can be done again: after a kill at any moment the same calls, with
// the same places, complete what was begun, and find it complete if it was.
// Nothing that is there is ever replaced. Until the text has its first place,
// which it gets last, undo() takes everything back.
#ifndef VEK_SORT_PLACING_H_
#define VEK_SORT_PLACING_H_

#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "base/failure.h"

namespace vek::sorting {

enum class Mode { move, copy, link };

// By which a file is known again, as long as nobody writes to it.
struct Identity {
  dev_t device = 0;  // may be another one after the machine is started anew
  ino_t inode = 0;
  off_t size = 0;             // bytes
  std::int64_t modified = 0;  // nanoseconds since the Epoch

  bool operator==(const Identity &other) const {
    return inode == other.inode && is_alike(other);
  }
  // As it is with a copy.
  bool is_alike(const Identity &other) const {
    return size == other.size && modified == other.modified;
  }
};

Identity identity_of(const struct stat &status);
// Of a regular file, also of one to which a link would lead not. False with
// errno set; EINVAL for what is no regular file.
bool identify(const std::string &path, Identity &identity);

// Files and directories that are to be on the disk.
class Unsynced {
 public:
  void add(const std::string &path) { paths_.insert(path); }
  // Empties the list. One by one if they are few, else the file systems that
  // they are on.
  bool sync(Failure &failure);

 private:
  std::set<std::string> paths_;
};

class Placing {
 public:
  enum class State {
    begun,
    done,
    gone,     // the source is not there any more
    changed,  // it is being written to
    failed
  };

  // `places` are below `target`; the text itself comes to the first one, and
  // links to the others, or copies where the system cannot link. `number` is
  // its own among the texts that are placed at the same time.
  Placing(Mode mode, std::string source, const Identity &identity,
          const std::string &target, const std::vector<std::string> &places,
          std::size_t number);

  // In this order, each for all texts of a batch before the next one, with the
  // files and directories synced between them. Nothing happens unless the state
  // is `begun`, and `done` for the last one.
  void prepare(Unsynced &files, Unsynced &directories);
  void place(Unsynced &directories);
  void remove_source(Unsynced &directories);

  // Takes back what prepare() and place() did to a text that is not done.
  void undo();

  // A file like the text stands at its first place, which it gets last.
  bool has_place() const;

  State state() const { return state_; }
  // Of `failed`.
  const Failure &failure() const { return failure_; }

 private:
  struct Place {
    std::string path;
    std::string temporary;
    bool is_there = false;
  };

  bool look_at_source(dev_t *device_P = nullptr);
  bool make_folders(const std::string &path, Unsynced &directories);
  bool prepare(Place &place, Unsynced &files);
  bool copy(const std::string &to);
  bool fail(const std::string &file);

  const Mode mode_;
  const std::string source_;
  const Identity identity_;
  const std::string target_;
  std::vector<Place> places_;
  bool is_renamed_ = false;  // the source gets its place by that
  State state_ = State::begun;
  Failure failure_;
};

}  // namespace vek::sorting

#endif  // VEK_SORT_PLACING_H_

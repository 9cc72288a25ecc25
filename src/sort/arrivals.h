// What has come into the incoming directory.
//
// A text is a regular file in it or in a directory below it. Nothing that has a
// part of its path that begins with a full stop is one: so texts are handed
// over under such a name, which is then changed. In a maildir, a directory with
// `cur`, `new` and `tmp`, the texts of the first two are mail, and those of
// `tmp` are not there yet.
#ifndef VEK_SORT_ARRIVALS_H_
#define VEK_SORT_ARRIVALS_H_

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "base/failure.h"
#include "sort/placing.h"

namespace vek::sorting {

struct Arrival {
  std::string name;  // below the incoming directory
  Identity identity;
  bool is_mail = false;
};

class Arrivals {
 public:
  // A text may still be written to if its last change is no longer ago than
  // `settling`, or if somebody has it open for that. The latter the system
  // tells of one's own files alone, and root of all.
  Arrivals(std::string directory, std::chrono::milliseconds settling);

  struct Scan {
    std::vector<Arrival> texts;       // by name, in order
    std::vector<std::string> others;  // files of other kinds, links as well
    std::vector<Failure> failures;    // what cannot be looked at
    // Texts, all the same, if they are as they are after the settling time and
    // nobody writes to them.
    std::vector<Arrival> unsettled;
  };
  // Of all, or of what lies below `folder`. Calls `enter` with the name of each
  // directory before it is read, so that nothing comes in unseen between.
  Scan scan(const std::function<void(const std::string &folder)> &enter = {},
            const std::string &folder = "") const;

  // Looks at one file, settled or not. False if it is no text.
  bool look_at(const std::string &name, Arrival &arrival) const;
  // Somebody has it open for writing, as far as the system tells.
  bool is_being_written(const std::string &name) const;

  std::chrono::milliseconds settling() const { return settling_; }
  const std::string &directory() const { return directory_; }
  std::string path_of(const std::string &name) const;

 private:
  void scan_folder(const std::string &folder, int depth,
                   const std::function<void(const std::string &)> &enter,
                   Scan &result) const;
  bool is_mail_folder(const std::string &folder) const;
  bool has_settled(const Identity &identity) const;

  const std::string directory_;
  const std::chrono::milliseconds settling_;
};

}  // namespace vek::sorting

#endif  // VEK_SORT_ARRIVALS_H_

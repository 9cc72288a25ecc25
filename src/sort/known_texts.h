// Texts that need nothing more: those that stand where they were brought, and,
// where they are copied or linked, those from which that was done.
//
// A file in the state folder of a target directory, with a line for each: size
// in bytes, time of the last change in nanoseconds, and path; that of a text in
// the target directory is relative. A line that is not true any more does no
// harm, and from time to time they are left out.
#ifndef VEK_SORT_KNOWN_TEXTS_H_
#define VEK_SORT_KNOWN_TEXTS_H_

#include <tsl/robin_set.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "base/failure.h"
#include "sort/placing.h"

namespace vek::sorting {

// The file of texts as they were brought, and that of those that were learnt.
inline constexpr char known_name[] = "known";
inline constexpr char learnt_name[] = "learnt";

class KnownTexts {
 public:
  // `target` is what relative paths are seen from.
  KnownTexts(const std::string &target, const std::string &name);

  bool open(Failure &failure);
  bool has(const std::string &path, const Identity &identity) const;
  // Appends lines, which are on the disk on return.
  void add(const std::string &path, const Identity &identity);
  bool save(Failure &failure);
  // Writes the file anew, with all lines that are true.
  bool clean(Failure &failure);

  // Calls `visit` with each line of the file: path, size and time.
  using Visit = std::function<void(const std::string &path, const Identity &)>;
  bool for_each(const Visit &visit, Failure &failure) const;

 private:
  bool read(std::string &text, Failure &failure) const;

  const std::string target_;
  const std::string path_;
  std::vector<std::string> new_lines_;
  tsl::robin_set<std::uint64_t> lines_;  // hashes
  std::size_t size_ = 0;                 // bytes of the file
  std::size_t size_cleaned_ = 0;
};

// Appends whole lines to a file, which is made if it is missing, and has them
// on the disk on return; `header` goes before the first. What stands there
// behind `begin`, bytes, are lines that a killed process got to append: these
// are not written again, and what it left of a line is removed.
bool append_lines(const std::string &path, const std::string &header,
                  off_t begin, const std::vector<std::string> &lines,
                  Failure &failure);

}  // namespace vek::sorting

#endif  // VEK_SORT_KNOWN_TEXTS_H_

// Replaces several files of a directory at once: after a crash either all of
// them are the old ones or all are the new ones.
//
// Files of one run that belong together, as a class table and class profiles,
// would give wrong results without a message beside those of another run. So
// they are first written one behind the other into one file, which is synced
// and then gets its name. From there each is written in place, and when all are
// on the disk, that file is removed. If it is there when the directory is
// opened, a run was broken off in between, and what it had begun is completed.
#ifndef VEK_STORE_ATOMICFILES_H_
#define VEK_STORE_ATOMICFILES_H_

#include <string>
#include <string_view>
#include <vector>

#include "base/output_file.h"

namespace vek {

class AtomicFiles {
 public:
  // Where the files lie. `name` is that of the file that holds all of them.
  void set_place(const std::string &directory, const std::string &name);

  // Completes what an earlier run had begun, if there is anything. It logs
  // that, and ends the run if it cannot be done.
  void recover();

  // To be called in this order; add() once for each file. Each ends the run
  // with a report if it fails: before replace() has begun to write in place,
  // all files are the old ones. A file that cannot be written whole is removed
  // then, and comes with the next recover().
  void begin();
  void add(const std::string &name, std::string_view content);
  void replace();

 private:
  void write(std::string_view text);
  void check_places();
  void write_all_in_place();
  void write_in_place(const std::string &path, std::string_view content);
  void sync_files() const;
  [[noreturn]] void give_up_writing();

  std::vector<std::string> names_;  // of what add() got
  std::string directory_;
  std::string path_;
  std::string temporary_path_;
  OutputFile file_;
};

}  // namespace vek

#endif  // VEK_STORE_ATOMICFILES_H_

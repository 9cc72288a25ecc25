// A rank file under way: the lines of one test run or one pass of polling.
#ifndef VEK_RUN_RANKFILE_H_
#define VEK_RUN_RANKFILE_H_

#include <ostream>
#include <string>

#include "base/output_file.h"

namespace vek {

// Ends the run if it can't be created, written or renamed; what has its final
// name is complete.
class RankFile {
 public:
  enum class Announce { no, yes };
  // rank<N>.dat, or predictions<N>.tsv beside it.
  enum class Kind { ranks, predictions };

  // Takes the next number of its kind, 0 in the first file of a run, and opens
  // the file in the directory under its temporary name, which is logged first
  // if wanted.
  RankFile(const std::string &directory, Announce announce,
           Kind kind = Kind::ranks);
  std::ostream &stream() { return stream_; }
  // Under which it is written.
  const std::string &path() const { return temporary_path_; }
  // Puts the file on the disk and gives it its final name.
  void finish();

 private:
  const std::string directory_;
  std::string temporary_path_;
  std::string path_;
  OutputFile stream_;
};

}  // namespace vek

#endif  // VEK_RUN_RANKFILE_H_

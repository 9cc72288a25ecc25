#include "run/rankfile.h"

#include <cstdint>
#include <cstdio>

#include "base/helpers.h"
#include "log/log.h"

namespace vek {
namespace {

std::uint32_t nr_rank_files = 0;

}  // namespace

RankFile::RankFile(const std::string &directory, Announce announce) {
  const std::string name = "rank" + std::to_string(nr_rank_files++);
  temporary_path_ = Path(directory, name, ".tmp");
  path_ = Path(directory, name, ".dat");
  if (announce == Announce::yes)
    logf_always(1, "writing output to file `%s'", temporary_path_.c_str());
  stream_.open(temporary_path_, OutputFile::Mode::truncate);
  if (!stream_.is_open()) {
    report_file_error(temporary_path_, FileError::open_for_writing);
    abort_run();
  }
}

void RankFile::finish() {
  stream_.close();
  // The lines reach the disk no later than here.
  if (!stream_)
    abort_run();
  logf_always(1, "renaming output file to `%s'", path_.c_str());
  if (std::rename(temporary_path_.c_str(), path_.c_str()) != 0) {
    error("cannot rename file `%s' to `%s'", temporary_path_.c_str(),
          path_.c_str());
    abort_run();
  }
}

}  // namespace vek

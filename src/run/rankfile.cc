#include "run/rankfile.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "base/helpers.h"
#include "log/log.h"

namespace vek {
namespace {

struct KindOfFile {
  const char *name = nullptr;
  const char *suffix = nullptr;
  std::uint32_t nr_files = 0;
};

// By the values of RankFile::Kind.
std::array<KindOfFile, 2> kinds = {{{"rank", ".dat"}, {"predictions", ".tsv"}}};

// As against a failure of the disk.
bool cannot_sync() {
  return errno == EINVAL || errno == ENOTSUP || errno == EACCES;
}

}  // namespace

RankFile::RankFile(const std::string &directory, Announce announce, Kind kind)
    : directory_(directory.empty() ? "." : directory) {
  KindOfFile &files = kinds.at(static_cast<std::size_t>(kind));
  const std::string name = files.name + std::to_string(files.nr_files++);
  temporary_path_ = Path(directory, name, ".tmp");
  path_ = Path(directory, name, files.suffix);
  if (announce == Announce::yes)
    logf_always(1, "writing output to file `%s'", temporary_path_.c_str());
  stream_.open(temporary_path_, OutputFile::Mode::truncate);
  if (!stream_.is_open()) {
    report_file_error(temporary_path_, FileError::open_for_writing);
    abort_run();
  }
}

// A name on the disk must not stand for lines that are not there.
void RankFile::finish() {
  // Not every file that a link may lead to can be synced.
  const bool is_synced = stream_.sync_to_disk() || (stream_ && cannot_sync());
  stream_.close();
  if (!is_synced || !stream_) {
    explain(temporary_path_, std::strerror(errno));
    abort_run();
  }
  logf_always(1, "renaming output file to `%s'", path_.c_str());
  if (std::rename(temporary_path_.c_str(), path_.c_str()) != 0) {
    explain(temporary_path_, std::strerror(errno));
    error("cannot rename file `%s' to `%s'", temporary_path_.c_str(),
          path_.c_str());
    abort_run();
  }
  if (!sync_path(directory_) && !cannot_sync()) {
    report_file_error(path_, FileError::write);
    abort_run();
  }
}

}  // namespace vek

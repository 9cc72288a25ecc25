#include "answering/scratch_file.h"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "base/helpers.h"
#include "intake/lists.h"

namespace vek {

ScratchFile::~ScratchFile() {
  if (descriptor_ < 0)
    return;
  ::close(descriptor_);
  ::unlink(path_.c_str());
}

bool ScratchFile::write(std::string_view text, Failure &failure) {
  if (descriptor_ < 0) {
    std::error_code error;
    path_ = std::filesystem::temp_directory_path(error) / "vek-XXXXXX";
    path_ += document_suffix;
    descriptor_ =
        mkostemps(path_.data(), int{sizeof document_suffix} - 1, O_CLOEXEC);
  }
  bool is_good = descriptor_ >= 0 && ftruncate(descriptor_, 0) == 0;
  std::size_t done = 0;
  while (is_good && done < text.size()) {
    const ssize_t count = retry([&] {
      return pwrite(descriptor_, text.data() + done, text.size() - done,
                    static_cast<off_t>(done));
    });
    is_good = count > 0;
    if (is_good)
      done += static_cast<std::size_t>(count);
  }
  if (!is_good)
    failure = {path_, "", std::strerror(errno)};
  return is_good;
}

}  // namespace vek

#include "intake/textfile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/helpers.h"

namespace vek {

TextFile::TextFile(const std::string &path)
    : descriptor_(retry([&] {
        return ::open(path.c_str(),
                      O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
      })) {
  struct stat status = {};
  if (descriptor_ < 0 || fstat(descriptor_, &status) != 0) {
    problem_ = std::strerror(errno);
  } else if (!S_ISREG(status.st_mode)) {
    problem_ = "no regular file";
    errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
  }
  size_ = status.st_size;
}

TextFile::~TextFile() {
  const KeepErrno keep;
  if (descriptor_ >= 0)
    close(descriptor_);
}

}  // namespace vek

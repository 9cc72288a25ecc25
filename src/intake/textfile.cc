#include "intake/textfile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/helpers.h"
#include "base/input_file.h"

namespace vek {

TextFile::TextFile(const std::string &path)
    : descriptor_(open_input(path, problem_)) {
  struct stat status = {};
  if (descriptor_ >= 0 && fstat(descriptor_, &status) != 0)
    problem_ = std::strerror(errno);
  size_ = status.st_size;
}

TextFile::~TextFile() {
  const KeepErrno keep;
  if (descriptor_ >= 0)
    close(descriptor_);
}

}  // namespace vek

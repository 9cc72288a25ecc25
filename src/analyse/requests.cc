#include "analyse/requests.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string_view>

namespace vek::analysis {
namespace {

void wait_until_readable(int descriptor) {
  pollfd request = {descriptor, POLLIN, 0};
  poll(&request, 1, -1);
}

}  // namespace

bool RequestReader::next(std::string &path) {
  path.clear();
  bool has_begun = false;
  while (begin_ < end_ || fill()) {
    has_begun = true;
    if (take_line(path))
      return true;
  }
  // A last line without its end counts, but not one that an error cut.
  return has_begun && errno == 0;
}

// Moves what there is of a line from the buffer to `path`. True if its end was
// there, too.
bool RequestReader::take_line(std::string &path) {
  const std::string_view rest(buffer_.data() + begin_, end_ - begin_);
  const std::string_view line = rest.substr(0, rest.find('\n'));
  path += line.substr(0, longest_path - path.size());
  begin_ += std::min(line.size() + 1, rest.size());
  return line.size() < rest.size();
}

bool RequestReader::fill() {
  // Only called with an empty buffer, so that nothing has to be moved.
  begin_ = end_ = 0;
  while (true) {
    const ssize_t count = read(descriptor_, buffer_.data(), buffer_.size());
    if (count > 0) {
      end_ = static_cast<std::size_t>(count);
      return true;
    }
    if (count == 0) {
      errno = 0;
      return false;
    }
    if (errno == EAGAIN) {
      wait_until_readable(descriptor_);
    } else if (errno != EINTR) {
      return false;
    }
  }
}

}  // namespace vek::analysis

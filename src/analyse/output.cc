#include "analyse/output.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace vek::analysis {
namespace {

void wait_until_writable(int descriptor) {
  pollfd request = {descriptor, POLLOUT, 0};
  // Its result is of no interest: whatever woke it, the call before is tried
  // again.
  poll(&request, 1, -1);
}

}  // namespace

Output::Output() : buffer_(new char[capacity]) {}

void Output::put_in_parts(std::string_view text) {
  while (text.size() > capacity - nr_bytes_) {
    const std::size_t taken =
        text.copy(buffer_.get() + nr_bytes_, capacity - nr_bytes_);
    nr_bytes_ += taken;
    text.remove_prefix(taken);
    flush();
  }
  nr_bytes_ += text.copy(buffer_.get() + nr_bytes_, text.size());
}

void Output::flush() {
  if (good_ && nr_bytes_ > 0)
    good_ = write({buffer_.get(), nr_bytes_});
  nr_bytes_ = 0;
}

void Output::drop() {
  nr_bytes_ = 0;
  good_ = true;
}

std::string StringOutput::take() {
  flush();
  return std::exchange(text_, std::string());
}

bool StringOutput::write(std::string_view text) {
  text_ += text;
  return true;
}

bool DescriptorOutput::write(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(descriptor_, text.data(), text.size());
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EAGAIN) {
      wait_until_writable(descriptor_);
    } else if (errno != EINTR) {
      error_number_ = errno;
      return false;
    }
  }
  return true;
}

}  // namespace vek::analysis

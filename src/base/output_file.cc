#include "base/output_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstring>

#include "base/helpers.h"

namespace vek {
namespace {

// Few system calls, and little that is lost if the process is killed.
constexpr std::size_t buffer_size = 65536;

// Writes all of `size` bytes, in as many calls as the system wants. Returns
// false with errno set if it gives up before the end.
bool write_all(int fd, const char *bytes, std::size_t size) {
  while (size > 0) {
    const ssize_t count = retry([&] { return ::write(fd, bytes, size); });
    // A call that writes nothing and fails at nothing should not occur; if it
    // does, this must not go on for ever.
    if (count == 0)
      errno = EIO;
    if (count <= 0)
      return false;
    bytes += count;
    size -= static_cast<std::size_t>(count);
  }
  return true;
}

}  // namespace

OutputFile::Buffer::Buffer() : bytes_(buffer_size) {
  reset();
}

void OutputFile::Buffer::reset() {
  setp(bytes_.data(), bytes_.data() + bytes_.size());
}

void OutputFile::Buffer::attach(int fd) {
  fd_ = fd;
  reset();
}

int OutputFile::Buffer::detach() {
  const int fd = fd_;
  fd_ = -1;
  reset();
  return fd;
}

bool OutputFile::Buffer::write_out() {
  const std::size_t size = static_cast<std::size_t>(pptr() - pbase());
  const bool ok = fd_ >= 0 && write_all(fd_, pbase(), size);
  // What could not be written is dropped: trying again would repeat its start.
  reset();
  return ok;
}

OutputFile::Buffer::int_type OutputFile::Buffer::overflow(int_type character) {
  if (!write_out())
    return traits_type::eof();
  if (!traits_type::eq_int_type(character, traits_type::eof())) {
    *pptr() = traits_type::to_char_type(character);
    pbump(1);
  }
  return traits_type::not_eof(character);
}

int OutputFile::Buffer::sync() {
  return write_out() ? 0 : -1;
}

std::streamsize OutputFile::Buffer::xsputn(const char *text,
                                           std::streamsize size) {
  if (size <= 0)
    return 0;
  if (size >= epptr() - pptr()) {
    if (!write_out())
      return 0;
    // A text as long as the buffer gains nothing by being copied.
    if (static_cast<std::size_t>(size) >= bytes_.size()) {
      return write_all(fd_, text, static_cast<std::size_t>(size)) ? size : 0;
    }
  }
  std::memcpy(pptr(), text, static_cast<std::size_t>(size));
  pbump(static_cast<int>(size));
  return size;
}

OutputFile::OutputFile() : std::ostream(nullptr) {
  rdbuf(&buffer_);
}

OutputFile::~OutputFile() {
  close();
}

void OutputFile::open(const std::string &path, Mode mode) {
  const int how = mode == Mode::append ? O_APPEND | O_NONBLOCK : O_TRUNC;
  const int fd = retry([&] {
    return ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | how, 0664);
  });
  if (fd < 0) {
    setstate(std::ios::failbit);
    return;
  }
  // clear() behind it, since the state may be that of an earlier file.
  buffer_.attach(fd);
  clear();
}

bool OutputFile::sync_to_disk() {
  flush();
  return good() && retry([this] { return fsync(buffer_.fd()); }) == 0;
}

void OutputFile::close() {
  if (!is_open())
    return;
  flush();
  // An interrupted close() has closed all the same.
  if (::close(buffer_.detach()) != 0 && errno != EINTR)
    setstate(std::ios::failbit);
}

}  // namespace vek

#include "analyse/document.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "analyse/characters.h"

namespace vek::analysis {
namespace {

constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";

// In UTF-8, in bytes.
constexpr std::size_t longest_character = 4;

}  // namespace

FileSource::~FileSource() {
  if (descriptor_ >= 0)
    close(descriptor_);
}

std::string FileSource::open(const std::string &path) {
  if (path.find('\0') != path.npos)
    return "no file has a NUL in its name";
  // Without waiting: opening a named pipe without a writer would block. And no
  // terminal becomes the process's own.
  descriptor_ =
      ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
  struct stat status = {};
  if (descriptor_ < 0 || fstat(descriptor_, &status) != 0) {
    return std::strerror(errno);
  }
  if (!S_ISREG(status.st_mode))
    return "not a regular file";
  // The files that the kernel makes up, as in /proc, claim to have no bytes.
  has_size_ = status.st_size > 0;
  size_ = static_cast<std::uint64_t>(status.st_size);
  return {};
}

std::ptrdiff_t FileSource::read(std::uint64_t offset, char *to,
                                std::size_t size) {
  if (has_size_) {
    size = static_cast<std::size_t>(
        std::min<std::uint64_t>(size, size_ - std::min(size_, offset)));
  }
  std::size_t nr_read = 0;
  while (nr_read < size) {
    // By position, since the encoding is found in a first pass over the file.
    const ssize_t count = pread(descriptor_, to + nr_read, size - nr_read,
                                static_cast<off_t>(offset + nr_read));
    if (count == 0)
      break;
    if (count > 0) {
      nr_read += static_cast<std::size_t>(count);
    } else if (errno != EINTR) {
      return -1;
    }
  }
  return static_cast<std::ptrdiff_t>(nr_read);
}

DocumentReader::DocumentReader(std::size_t buffer_size)
    : buffer_size_(std::max(buffer_size, least_buffer)),
      buffer_(new char[buffer_size_]) {}

bool DocumentReader::read(ByteSource &source, Tokeniser &tokeniser) {
  tokeniser.start();
  text_.clear();
  return load(source, 0) && find_encoding(source) &&
         feed_all(source, tokeniser);
}

bool DocumentReader::load(ByteSource &source, std::uint64_t offset) {
  const std::ptrdiff_t size = source.read(offset, buffer_.get(), buffer_size_);
  if (size < 0)
    return false;
  offset_ = offset;
  piece_ = {buffer_.get(), static_cast<std::size_t>(size)};
  // A file that ends with its buffer has one more piece, of 0 bytes.
  is_last_ = piece_.size() < buffer_size_;
  return true;
}

bool DocumentReader::load_next(ByteSource &source) {
  return load(source, offset_ + piece_.size());
}

// Leaves the first piece at hand. A character that a piece cuts begins the next
// one: as long as fewer bytes than a character has are left over, they may be
// such a beginning.
bool DocumentReader::find_encoding(ByteSource &source) {
  std::size_t nr_valid = valid_utf8_size(piece_);
  while (!is_last_ && piece_.size() - nr_valid < longest_character) {
    if (!load(source, offset_ + nr_valid))
      return false;
    nr_valid = valid_utf8_size(piece_);
  }
  encoding_ =
      nr_valid == piece_.size() ? Encoding::utf8 : Encoding::windows_1252;
  return offset_ == 0 || load(source, 0);
}

bool DocumentReader::feed_all(ByteSource &source, Tokeniser &tokeniser) {
  while (true) {
    decode_piece();
    // What the tokeniser leaves is less than its look_ahead, so little is
    // moved.
    text_.erase(0, tokeniser.feed(text_, is_last_));
    if (is_last_)
      return true;
    if (!load_next(source))
      return false;
  }
}

void DocumentReader::decode_piece() {
  std::string_view bytes = piece_;
  if (offset_ == 0 && bytes.starts_with(byte_order_mark)) {
    bytes.remove_prefix(byte_order_mark.size());
  }
  if (encoding_ == Encoding::utf8) {
    text_ += bytes;
  } else {
    append_windows_1252(text_, bytes);
  }
}

}  // namespace vek::analysis

#include "store/reservedroom.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "base/helpers.h"

namespace vek {

ReservedRoom::~ReservedRoom() {
  if (fd_ >= 0)
    ::close(fd_);
}

bool ReservedRoom::reserve(const std::string &directory, std::uint64_t needed,
                           std::uint64_t wanted) {
  if (size_ >= needed || !is_possible_)
    return true;
  const int errno_before = errno;
  if (fd_ < 0) {
    fd_ = retry([&] {
      return ::open(directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    });
  }
  is_possible_ = fd_ >= 0;
  if (is_possible_ && !grow(wanted) && is_possible_ && !grow(needed) &&
      is_possible_) {
    return false;
  }
  errno = errno_before;
  return true;
}

bool ReservedRoom::grow(std::uint64_t size) {
  if (retry([&] { return fallocate(fd_, 0, 0, static_cast<off_t>(size)); }) ==
      0) {
    size_ = size;
    return true;
  }
  const int code = errno;
  is_possible_ = code == ENOSPC || code == EDQUOT;
  // Some file systems keep the part that they had room for.
  if (ftruncate(fd_, static_cast<off_t>(size_)) != 0)
    is_possible_ = false;
  errno = code;
  return false;
}

void ReservedRoom::give_back() {
  if (size_ == 0)
    return;
  const KeepErrno keep;
  // The file goes if it cannot be cut, and the room with it.
  if (ftruncate(fd_, 0) != 0) {
    ::close(fd_);
    fd_ = -1;
  }
  size_ = 0;
}

}  // namespace vek

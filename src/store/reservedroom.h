// Room on the disk that is set aside for what must be written even when the
// disk has become full.
//
// It is held by a file without a name, so it goes with the process, however
// that ends. Where the file system has no such files or reserves nothing, there
// is no room set aside, and all goes on without.
#ifndef VEK_STORE_RESERVEDROOM_H_
#define VEK_STORE_RESERVEDROOM_H_

#include <cstdint>
#include <string>

namespace vek {

class ReservedRoom {
 public:
  ReservedRoom() = default;
  ~ReservedRoom();
  ReservedRoom(const ReservedRoom &) = delete;
  ReservedRoom &operator=(const ReservedRoom &) = delete;

  // Sees to it that at least `needed` bytes are set aside on the disk of the
  // directory; if they are not yet, tries for `wanted` first. Returns false
  // with errno set if the disk is full; what was set aside before remains.
  bool reserve(const std::string &directory, std::uint64_t needed,
               std::uint64_t wanted);

  // Leaves the room to whoever writes next.
  void give_back();

 private:
  bool grow(std::uint64_t size);

  int fd_ = -1;
  std::uint64_t size_ = 0;
  bool is_possible_ = true;
};

}  // namespace vek

#endif  // VEK_STORE_RESERVEDROOM_H_

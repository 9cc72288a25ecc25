// Integers in files: four bytes, least significant byte first, whatever the
// machine's own order.
#ifndef VEK_BASE_BYTES_H_
#define VEK_BASE_BYTES_H_

#include <cstdint>
#include <string>

namespace vek {

inline void append_uint32(std::string &out, std::uint32_t value) {
  const char bytes[4] = {static_cast<char>(value & 0xFF),
                         static_cast<char>(value >> 8 & 0xFF),
                         static_cast<char>(value >> 16 & 0xFF),
                         static_cast<char>(value >> 24 & 0xFF)};
  out.append(bytes, sizeof bytes);
}

// The number in the four bytes at `bytes_P`.
inline std::uint32_t get_uint32(const unsigned char *bytes_P) {
  return std::uint32_t{bytes_P[0]} | std::uint32_t{bytes_P[1]} << 8 |
         std::uint32_t{bytes_P[2]} << 16 | std::uint32_t{bytes_P[3]} << 24;
}

}  // namespace vek

#endif  // VEK_BASE_BYTES_H_

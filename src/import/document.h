// What is kept in memory of each document of an examples directory.
#ifndef VEK_IMPORT_DOCUMENT_H_
#define VEK_IMPORT_DOCUMENT_H_

#include <array>
#include <cstddef>
#include <cstdint>

namespace vek::importing {

enum class Side : std::uint8_t { none, train, test };

// One value for each of some random orders of a text's word sequences.
inline constexpr std::size_t nr_minima = 15;
using Minima = std::array<std::uint16_t, nr_minima>;

struct Document {
  std::uint64_t key = 0;       // by which it is known again
  std::uint64_t content = 0;   // of its words and classes
  std::uint64_t text = 0;      // of its words
  std::uint64_t group = 0;     // what must stand on one side; else its text
  std::uint32_t class_id = 0;  // of its first class
  Minima minima = {};
  Side side = Side::none;
  bool is_new = false;  // of this import
};

}  // namespace vek::importing

#endif  // VEK_IMPORT_DOCUMENT_H_

// What the fuzz targets share.
#ifndef VEK_FUZZ_TARGET_H_
#define VEK_FUZZ_TARGET_H_

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>

// One input. Returns 0, or stops the program at what must not be.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size);

namespace vek::fuzzing {

inline std::string_view text_of(const std::uint8_t *data, std::size_t size) {
  return {reinterpret_cast<const char *>(data), size};
}

inline void require(bool holds) {
  if (!holds)
    std::abort();
}

// Makes a global object as it is at the start of a run, so that an input does
// not depend on those before it.
template <typename Object>
void renew(Object &object) {
  std::destroy_at(&object);
  std::construct_at(&object);
}

}  // namespace vek::fuzzing

#endif  // VEK_FUZZ_TARGET_H_

// Strings that live as long as their pool, in blocks that are freed together:
// the texts of the atom table, of which a large collection has millions.
#ifndef VEK_VOCABULARY_STRINGPOOL_H_
#define VEK_VOCABULARY_STRINGPOOL_H_

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace vek {

class StringPool {
 public:
  StringPool() = default;
  StringPool(const StringPool &) = delete;
  StringPool &operator=(const StringPool &) = delete;

  // Returns `size` bytes, rounded up to a multiple of 4, not initialised,
  // valid until the pool is destroyed.
  char *allocate(std::uint32_t size);

  // A copy of `text`, of less than 4 GiB, that is valid as long.
  std::string_view copy(std::string_view text);

 private:
  std::vector<std::unique_ptr<char[]>> blocks_;  // oldest first
  char *next_free_P_ = nullptr;                  // in the block in use
  std::uint32_t bytes_left_ = 0;                 // at `next_free_P_`
};

}  // namespace vek

#endif  // VEK_VOCABULARY_STRINGPOOL_H_

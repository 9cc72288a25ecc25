// The strings that live to the end of the run, in blocks that are freed
// together: quoted values of the resource file and names of classes.
#ifndef VEK_VOCABULARY_STRINGPOOL_H_
#define VEK_VOCABULARY_STRINGPOOL_H_

#include <cstdint>
#include <memory>
#include <vector>

namespace vek {

class StringPool {
 public:
  StringPool() = default;
  ~StringPool();
  StringPool(const StringPool &) = delete;
  StringPool &operator=(const StringPool &) = delete;

  // Returns `size` bytes, rounded up to a multiple of 4, not initialised,
  // valid until the pool is destroyed. A request of more than a block comes
  // straight from the heap and is never freed.
  char *allocate(std::uint32_t size);

 private:
  std::vector<std::unique_ptr<char[]>> blocks_;  // oldest first
  char *next_free_P_ = nullptr;                  // in the newest block
  std::uint32_t bytes_left_ = 0;                 // at `next_free_P_`
};

extern StringPool string_pool;

// Copies `text` with its terminating zero into `string_pool`.
const char *pool_copy(const char *text);

}  // namespace vek

#endif  // VEK_VOCABULARY_STRINGPOOL_H_

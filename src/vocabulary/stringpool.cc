#include "vocabulary/stringpool.h"

#include <cassert>
#include <cstddef>
#include <cstring>
#include <limits>

namespace vek {
namespace {

// 64 KiB less 12 bytes for the allocator's own use.
constexpr std::uint32_t block_size = 65524;

// In 64 bits: a size near the end of 32 bits must not round to 0.
constexpr std::uint64_t rounded_up(std::uint32_t size) {
  return (std::uint64_t{size} + 3) & ~std::uint64_t{3};
}

}  // namespace

StringPool::~StringPool() {
  while (!blocks_.empty())
    blocks_.pop_back();
}

char *StringPool::allocate(std::uint32_t size) {
  const std::uint64_t rounded = rounded_up(size);
  // Its own piece, so that what is left of the block goes on being used. Not
  // kept account of: such requests are few, and live to the end of the run.
  if (rounded > block_size) {
    return std::make_unique_for_overwrite<char[]>(rounded).release();
  }
  if (rounded > bytes_left_) {
    blocks_.push_back(std::make_unique_for_overwrite<char[]>(block_size));
    next_free_P_ = blocks_.back().get();
    bytes_left_ = block_size;
  }
  char *const result_P = next_free_P_;
  next_free_P_ += rounded;
  bytes_left_ -= static_cast<std::uint32_t>(rounded);
  return result_P;
}

const char *pool_copy(const char *text) {
  const std::size_t size = std::strlen(text) + 1;
  assert(size <= std::numeric_limits<std::uint32_t>::max());
  char *const copy_P = string_pool.allocate(static_cast<std::uint32_t>(size));
  std::memcpy(copy_P, text, size);
  return copy_P;
}

}  // namespace vek

#include "vocabulary/stringpool.h"

#include <cstddef>

namespace vek {
namespace {

// 64 KiB less 12 bytes for the allocator's own use.
constexpr std::uint32_t block_size = 65524;

// In 64 bits: a size near the end of 32 bits must not round to 0. Multiples of
// 4 keep the start of each piece aligned to 4.
constexpr std::uint64_t rounded_up(std::uint32_t size) {
  return (std::uint64_t{size} + 3) & ~std::uint64_t{3};
}

}  // namespace

char *StringPool::allocate(std::uint32_t size) {
  const std::uint64_t rounded = rounded_up(size);
  const bool is_large = rounded > block_size;
  if (is_large || rounded > bytes_left_) {
    blocks_.push_back(std::make_unique_for_overwrite<char[]>(
        is_large ? rounded : block_size));
    // Its own piece, so that what is left of the block goes on being used.
    if (is_large)
      return blocks_.back().get();
    // The few bytes left in the block before are given up: texts are short, so
    // they are a small part of it.
    next_free_P_ = blocks_.back().get();
    bytes_left_ = block_size;
  }
  char *const result_P = next_free_P_;
  next_free_P_ += rounded;
  bytes_left_ -= static_cast<std::uint32_t>(rounded);
  return result_P;
}

std::string_view StringPool::copy(std::string_view text) {
  char *const copy_P = allocate(static_cast<std::uint32_t>(text.size()));
  text.copy(copy_P, text.size());
  return {copy_P, text.size()};
}

}  // namespace vek

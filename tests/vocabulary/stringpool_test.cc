#include "vocabulary/stringpool.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

namespace vek {
namespace {

constexpr std::uint32_t block_size = 65524;

TEST(StringPool, RoundsUpToFourBytes) {
  StringPool pool;
  pool.allocate(1);
  for (const std::uint32_t size : {0U, 1U, 3U, 4U, 5U}) {
    const char *const before_P = pool.allocate(size);
    EXPECT_EQ(pool.allocate(4) - before_P, (size + 3) / 4 * 4) << size;
  }
}

TEST(StringPool, FillsABlockToItsLastByteAndLeavesARestThatIsTooSmall) {
  StringPool pool;
  char *const first_P = pool.allocate(4);
  // Gets a block of its own; the other one is gone on with.
  std::memset(pool.allocate(block_size + 1), 'x', block_size + 4);
  char *const rest_P = pool.allocate(block_size - 4);
  EXPECT_EQ(rest_P, first_P + 4);
  std::memset(rest_P, 'x', block_size - 4);
  std::memset(pool.allocate(block_size - 8), 'z', block_size - 8);
  char *const next_P = pool.allocate(12);
  std::memset(next_P, 'z', 12);
  EXPECT_EQ(pool.allocate(8), next_P + 12);
  EXPECT_EQ(std::string(rest_P, block_size - 4),
            std::string(block_size - 4, 'x'));
}

}  // namespace
}  // namespace vek

#include "vocabulary/stringpool.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace vek {
namespace {

constexpr std::uint32_t block_size = 65524;

TEST(StringPool, RoundsUpToFourBytes) {
  struct {
    std::uint32_t size;
    std::ptrdiff_t taken;
  } const cases[] = {{0, 0}, {1, 4}, {2, 4}, {3, 4}, {4, 4}, {5, 8}, {8, 8}};
  StringPool pool;
  pool.allocate(1);
  for (const auto &[size, taken] : cases) {
    const char *const before_P = pool.allocate(size);
    EXPECT_EQ(pool.allocate(4) - before_P, taken) << size;
  }
}

TEST(StringPool, GoesOnInTheBlockBehindALargeRequest) {
  StringPool pool;
  char *const first_P = pool.allocate(4);
  // Never freed, so it must stay in reach of the leak checker.
  static char *large_P = nullptr;
  large_P = pool.allocate(block_size + 1);
  std::memset(large_P, 'x', block_size + 4);
  EXPECT_EQ(pool.allocate(4), first_P + 4);
}

TEST(StringPool, FillsABlockToItsLastByte) {
  StringPool pool;
  char *const first_P = pool.allocate(4);
  char *const rest_P = pool.allocate(block_size - 4);
  EXPECT_EQ(rest_P, first_P + 4);
  std::memset(rest_P, 'x', block_size - 4);
  char *const whole_P = pool.allocate(block_size);
  std::memset(whole_P, 'y', block_size);
  std::memset(pool.allocate(1), 'z', 4);
  EXPECT_EQ(std::string(rest_P, block_size - 4),
            std::string(block_size - 4, 'x'));
  EXPECT_EQ(std::string(whole_P, block_size), std::string(block_size, 'y'));
}

TEST(StringPool, LeavesARestThatIsTooSmall) {
  StringPool pool;
  char *const first_P = pool.allocate(block_size - 8);
  char *const second_P = pool.allocate(12);
  EXPECT_NE(second_P, first_P + block_size - 8);
  EXPECT_EQ(pool.allocate(8), second_P + 12);
}

TEST(StringPool, KeepsCopiesInPlace) {
  std::vector<const char *> copies;
  for (int i = 0; i < 20000; ++i) {
    copies.push_back(pool_copy(std::to_string(i).c_str()));
  }
  EXPECT_STREQ(pool_copy(""), "");
  for (int i = 0; i < 20000; ++i) {
    EXPECT_EQ(copies[static_cast<std::size_t>(i)], std::to_string(i));
  }
}

}  // namespace
}  // namespace vek

#include "store/directorylock.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "support/temporary_directory.h"

namespace vek {
namespace {

using Mode = DirectoryLock::Mode;
using Outcome = DirectoryLock::Outcome;

TEST(DirectoryLock, IsSharedByManyOrHeldByOne) {
  const TemporaryDirectory temporary;
  std::filesystem::create_directory("data");
  DirectoryLock first;
  DirectoryLock second;
  const struct {
    Mode first;
    Mode second;
    Outcome outcome;
  } cases[] = {{Mode::exclusive, Mode::exclusive, Outcome::held},
               {Mode::exclusive, Mode::shared, Outcome::held},
               {Mode::shared, Mode::exclusive, Outcome::held},
               {Mode::shared, Mode::shared, Outcome::locked}};
  for (const auto &[mode, other, outcome] : cases) {
    ASSERT_EQ(first.take("data", mode), Outcome::locked);
    EXPECT_EQ(second.take("data", other), outcome);
    if (outcome == Outcome::held) {
      EXPECT_TRUE(second.holder() == getpid() || second.holder() == 0);
    }
    first.release();
    second.release();
  }
  EXPECT_TRUE(std::filesystem::is_empty("data"));
}

TEST(DirectoryLock, IsOfTheDirectoryThatHasTheName) {
  const TemporaryDirectory temporary;
  std::filesystem::create_directory("data");
  DirectoryLock old_lock;
  ASSERT_EQ(old_lock.take("data", Mode::exclusive), Outcome::locked);
  EXPECT_TRUE(old_lock.has_name("data"));
  std::filesystem::rename("data", "old");
  EXPECT_FALSE(old_lock.has_name("data"));
  DirectoryLock new_lock;
  EXPECT_TRUE(new_lock.has_name("data"));
  EXPECT_EQ(new_lock.take("data", Mode::exclusive), Outcome::failed);
  EXPECT_EQ(errno, ENOENT);
  std::filesystem::create_directory("data");
  EXPECT_EQ(new_lock.take("data", Mode::exclusive), Outcome::locked);
  EXPECT_FALSE(old_lock.has_name("data"));
}

}  // namespace
}  // namespace vek

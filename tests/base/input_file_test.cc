#include "base/input_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "support/temporary_directory.h"

namespace vek {
namespace {

TEST(ReadFile, GivesEveryByte) {
  const TemporaryDirectory temporary;
  std::string content = "before";
  std::string reason;
  for (const std::size_t size : {0U, 1U, 65535U, 65536U, 200001U}) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i)
      bytes[i] = static_cast<char>(i * 7);
    write_text("file", bytes);
    EXPECT_EQ(read_file("file", content, reason, size), ReadResult::ok);
    EXPECT_TRUE(content == bytes) << size;
  }
  // Its size is told as 0.
  EXPECT_EQ(read_file("/proc/self/stat", content), ReadResult::ok);
  EXPECT_NE(content, "");
}

TEST(ReadFile, RefusesWithoutWaitingWhatIsNoFileOrTooLarge) {
  const TemporaryDirectory temporary;
  ASSERT_EQ(mkfifo("fifo", 0600), 0);
  std::filesystem::create_symlink("/dev/zero", "zero");
  write_text("large", "12345");
  const struct {
    const char *path;
    ReadResult result;
    int code;
    const char *reason;
  } cases[] = {
      {"missing", ReadResult::cannot_open, ENOENT, "No such file or directory"},
      {".", ReadResult::read_error, EISDIR, "no regular file"},
      {"fifo", ReadResult::read_error, EINVAL, "no regular file"},
      {"zero", ReadResult::read_error, EINVAL, "no regular file"},
      {"large", ReadResult::read_error, EFBIG, "larger than 4 bytes"},
      // It is longer than it says.
      {"/proc/self/stat", ReadResult::read_error, EFBIG, "larger than 4 bytes"},
  };
  for (const auto &[path, result, code, reason] : cases) {
    std::string content = "before";
    std::string told;
    EXPECT_EQ(read_file(path, content, told, 4), result) << path;
    EXPECT_EQ(errno, code) << path;
    EXPECT_EQ(told, reason) << path;
    EXPECT_EQ(content, "") << path;
  }
}

}  // namespace
}  // namespace vek

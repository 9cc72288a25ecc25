#include "base/helpers.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <utility>

#include "support/temporary_directory.h"

namespace vek {
namespace {

using Pair = std::pair<std::string, std::string>;

TEST(Path, JoinsWithoutDoublingTheExtension) {
  const Pair cases[] = {{Path("d", "n.x", ".x"), "d/n.x"},
                        {Path("", "n", ".x"), "n.x"},
                        {Path("d/", "n", ".x"), "d//n.x"},
                        {Path("d", "", ".x"), "d"},
                        {Path("d", ".x", ".x"), "d/.x.x"}};
  for (const auto &[path, text] : cases)
    EXPECT_EQ(path, text);
}

TEST(ReadFile, GivesEveryByteOrSaysWhyNot) {
  const TemporaryDirectory temporary;
  std::string content = "before";
  for (const std::size_t size : {0U, 1U, 65535U, 65536U, 200001U}) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i)
      bytes[i] = static_cast<char>(i * 7);
    write_text("file", bytes);
    EXPECT_EQ(read_file("file", content), ReadResult::ok);
    EXPECT_TRUE(content == bytes) << size;
  }
  // Its size is told as 0.
  EXPECT_EQ(read_file("/proc/self/stat", content), ReadResult::ok);
  EXPECT_NE(content, "");
  EXPECT_EQ(read_file("missing", content), ReadResult::cannot_open);
  EXPECT_EQ(content, "");
  EXPECT_EQ(read_file(".", content), ReadResult::read_error);
  EXPECT_EQ(errno, EISDIR);
}

}  // namespace
}  // namespace vek

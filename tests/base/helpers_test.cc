#include "base/helpers.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <utility>

#include "support/temporary_directory.h"

namespace vek {
namespace {

using Pair = std::pair<std::string, std::string>;

TEST(Suffix, CountsOnlyBehindSomething) {
  const Pair cases[] = {{"a.txt", "a"},         {".txt", ".txt"},
                        {"a.txt.txt", "a.txt"}, {"a.TXT", "a.TXT"},
                        {"a.txt ", "a.txt "},   {"", ""}};
  for (const auto &[text, stripped] : cases) {
    std::string out = text;
    strip_suffix(out, out, ".txt");
    EXPECT_EQ(out, stripped);
    EXPECT_EQ(ends_with(text, ".txt"), text != stripped) << text;
  }
}

TEST(Path, JoinsWithoutDoublingTheExtension) {
  const Pair cases[] = {
      {Path("d", "n", ".x"), "d/n.x"},   {Path("d", "n.x", ".x"), "d/n.x"},
      {Path("", "n", ".x"), "n.x"},      {Path("d", "n", ""), "d/n"},
      {Path("d/", "n", ".x"), "d//n.x"}, {Path("d", "", ".x"), "d"},
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
  EXPECT_EQ(content.find(std::to_string(getpid()) + " ("), 0U);
  EXPECT_EQ(read_file("missing", content), ReadResult::cannot_open);
  EXPECT_EQ(content, "");
  EXPECT_EQ(read_file(".", content), ReadResult::read_error);
  EXPECT_EQ(errno, EISDIR);
}

}  // namespace
}  // namespace vek

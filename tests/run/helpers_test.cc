#include "run/helpers.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "support/temporary_directory.h"

namespace vek {
namespace {

using testing::Eq;
using testing::ExitedWithCode;

TEST(Suffix, CountsOnlyBehindSomething) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"a.txt", "a"},     {".txt", ".txt"},     {"a.txt.txt", "a.txt"},
      {"a.TXT", "a.TXT"}, {"a.txt ", "a.txt "}, {"", ""},
  };
  for (const auto &[text, stripped] : cases) {
    std::string out = text;
    strip_suffix(out, out, ".txt");
    EXPECT_EQ(out, stripped);
    EXPECT_EQ(ends_with(text, ".txt"), text != stripped) << text;
  }
}

TEST(SplitWord, SkipsTheWholeRunOfSeparators) {
  using Case = std::tuple<std::string, std::string, std::string>;
  for (const auto &[source, first, others] : {
           Case{"a b c", "a", "b c"},
           Case{"a   b ", "a", "b "},
           Case{"a", "a", ""},
           Case{"a  ", "a", ""},
           Case{"  a b", "", "a b"},
           Case{"", "", ""},
           Case{"   ", "", ""},
           Case{"a\tb", "a\tb", ""},
       }) {
    std::string word = "before";
    std::string rest = "before";
    EXPECT_EQ(split_word(source, ' ', word, rest), !others.empty());
    EXPECT_EQ(word, first) << source;
    EXPECT_EQ(rest, others) << source;
    rest = source;
    EXPECT_EQ(split_word(rest, ' ', word, rest), !others.empty());
    EXPECT_EQ(word, first) << source;
    EXPECT_EQ(rest, others) << source;
  }
}

TEST(Path, JoinsWithoutDoublingTheExtension) {
  const std::vector<std::pair<Path, std::string>> cases = {
      {Path("d", "n", ".x"), "d/n.x"},
      {Path("d", "n.x", ".x"), "d/n.x"},
      {Path("", "n", ".x"), "n.x"},
      {Path("d", "n", ""), "d/n"},
      {Path("d/", "n", ".x"), "d//n.x"},
      {Path("d", "", ".x"), "d"},
      {Path("d", ".x", ".x"), "d/.x.x"},
      {Path("", "", ".x"), ""},
      {Path("d", "n.x.y", ".x"), "d/n.x.y.x"},
  };
  for (const auto &[path, text] : cases) {
    EXPECT_EQ(path.c_str(), text);
    EXPECT_EQ(static_cast<const std::string &>(path), text);
  }
}

TEST(Directory, ListsEveryEntryOnceOrSaysWhyNot) {
  const TemporaryDirectory temporary;
  write_text("d/one", "");
  write_text("d/two/three", "");
  Directory directory("d");
  ASSERT_FALSE(directory.failed());
  std::multiset<std::string> names;
  for (std::string name; directory.read(name);)
    names.insert(name);
  EXPECT_EQ(names, (std::multiset<std::string>{".", "..", "one", "two"}));
  EXPECT_TRUE(Directory("missing").failed());
  EXPECT_EQ(errno, ENOENT);
  EXPECT_TRUE(Directory("d/one").failed());
  EXPECT_EQ(errno, ENOTDIR);
}

TEST(FileStatus, FollowsWhatStatSays) {
  const TemporaryDirectory temporary;
  write_text("d/file", "12345");
  ASSERT_EQ(symlink("missing", "dangling"), 0);
  ASSERT_EQ(symlink("d", "link"), 0);
  using Case = std::tuple<const char *, bool, bool>;
  for (const auto &[path, exists, is_a_directory] :
       {Case{"d/file", true, false}, Case{"d", true, true},
        Case{"link", true, true}, Case{"dangling", false, false},
        Case{"", false, false}}) {
    EXPECT_EQ(file_exists(path), exists) << path;
    EXPECT_EQ(is_directory(path), is_a_directory) << path;
    EXPECT_EQ(file_size(path) >= 0, exists) << path;
  }
  EXPECT_EQ(file_size("d/file"), 5);
}

TEST(EnsureDirectory, CreatesOneLevelForOwnerAndGroup) {
  const TemporaryDirectory temporary;
  write_text("file", "");
  const mode_t before = umask(0);
  ensure_directory("new");
  umask(before);
  ensure_directory("new");
  struct stat status = {};
  ASSERT_EQ(stat("new", &status), 0);
  EXPECT_EQ(status.st_mode & 07777, mode_t{0770});
  EXPECT_EXIT(ensure_directory("a/b"), ExitedWithCode(ENOENT),
              Eq(std::string("ERROR: could not create directory `a/b'\n"
                             "aborting... (errno = 2)\n")));
  EXPECT_EXIT(ensure_directory("file"), ExitedWithCode(EEXIST),
              Eq(std::string("ERROR: could not create directory `file'\n"
                             "aborting... (errno = 17)\n")));
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

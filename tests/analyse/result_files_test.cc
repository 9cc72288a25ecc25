#include "analyse/result_files.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <iterator>
#include <string>
#include <string_view>

#include "support/temporary_directory.h"

namespace vek::analysis {
namespace {

using namespace std::string_view_literals;

// The name, or what is wrong in brackets.
std::string find(const ResultNames &names, std::string_view path) {
  std::string file;
  const std::string problem = names.find(path, file);
  return problem.empty() ? file : '(' + problem + ')';
}

TEST(ResultNames, TakeTheLastComponent) {
  const ResultNames names("out");
  EXPECT_EQ(find(names, "docs/a/b.txt"), "out/b.txt");
  EXPECT_EQ(find(names, "/x/b"), "out/b.txt");
  EXPECT_EQ(find(names, "b.html"), "out/b.html.txt");
  EXPECT_EQ(find(names, ".txt"), "out/.txt.txt");
  for (const char *path : {"", "/", "a/"}) {
    EXPECT_EQ(find(names, path), "(names no file)") << path;
  }
  EXPECT_EQ(find(names, "a/.."), "(leads out of the directory)");
  EXPECT_EQ(find(names, "a\0b"sv), "(no file has a NUL in its name)");
}

TEST(ResultNames, TakeAllBehindADirectory) {
  struct Case {
    const char *from, *path, *name;
  };
  const Case cases[] = {
      {"docs", "docs/a/b.txt", "out/a/b.txt"},
      {"docs/", "docs/a/b", "out/a/b.txt"},
      {"docs", "docs//a", "out/a.txt"},
      {"./docs", "docs/a", "out/a.txt"},
      {"docs", "./docs/a", "out/a.txt"},
      {".", "docs/a", "out/docs/a.txt"},
      {"/", "/docs/a", "out/docs/a.txt"},
      {"/docs", "/docs/a", "out/a.txt"},
      {"docs", "docs/a..b", "out/a..b.txt"},
      {"docs", "docs", "(not in the directory of '--from')"},
      {"docs", "docs2/a", "(not in the directory of '--from')"},
      {"docs", "/docs/a", "(not in the directory of '--from')"},
      {".", "/docs/a", "(not in the directory of '--from')"},
      {"docs", "docs/../a", "(leads out of the directory)"},
      {"docs", "docs/a/..", "(leads out of the directory)"},
      {"docs", "docs/a/", "(names no file)"}};
  for (const Case &c : cases) {
    EXPECT_EQ(find(ResultNames("out", c.from), c.path), c.name)
        << c.from << " and " << c.path;
  }
}

class ResultFileTest : public testing::Test {
 protected:
  static auto nr_entries(const std::string &name) {
    return std::distance(std::filesystem::directory_iterator(name), {});
  }

 private:
  TemporaryDirectory directory_;
};

TEST_F(ResultFileTest, IsThereWhenItIsComplete) {
  const std::string file = "a/b/c.txt";
  ResultFile result;
  ASSERT_TRUE(result.open(file));
  EXPECT_EQ(write(result.descriptor(), "text", 4), 4);
  EXPECT_FALSE(is_result(file));
  EXPECT_EQ(nr_entries("a/b"), 1);
  ASSERT_TRUE(result.commit());
  EXPECT_TRUE(is_result(file));
  EXPECT_EQ(nr_entries("a/b"), 1);
  EXPECT_EQ(read_text(file), "text");
}

TEST_F(ResultFileTest, StandsBesideOthersOfTheSameName) {
  ResultFile first, second;
  ASSERT_TRUE(first.open("c.txt"));
  ASSERT_TRUE(second.open("c.txt"));
  EXPECT_TRUE(second.commit());
  EXPECT_TRUE(first.commit());
  EXPECT_EQ(nr_entries("."), 1);
}

TEST_F(ResultFileTest, TellsWhyItCannotBe) {
  write_text("file", "text");
  EXPECT_FALSE(ResultFile().open("file/a/c.txt"));
  EXPECT_EQ(errno, ENOTDIR);
  std::filesystem::create_directories("dir.txt/x");
  EXPECT_FALSE(is_result("dir.txt"));
  ResultFile over_directory;
  ASSERT_TRUE(over_directory.open("dir.txt"));
  EXPECT_FALSE(over_directory.commit());
}

}  // namespace
}  // namespace vek::analysis

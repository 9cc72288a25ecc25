#include "analyse/result_files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

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
  EXPECT_EQ(find(names, "b.txt"), "out/b.txt");
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
      {"./", "./docs/a", "out/docs/a.txt"},
      {"/", "/docs/a", "out/docs/a.txt"},
      {"/docs", "/docs/a", "out/a.txt"},
      {"docs", "docs/a..b", "out/a..b.txt"},
      {"docs", "docs", "(not in the directory of '--from')"},
      {"docs", "docs/", "(names no file)"},
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
  ResultFileTest() {
    std::string name = testing::TempDir() + "/vek-analyse-XXXXXX";
    directory_ = mkdtemp(name.data());
  }
  ~ResultFileTest() override { std::filesystem::remove_all(directory_); }

  std::string path(const std::string &name) const {
    return directory_ + '/' + name;
  }

  std::size_t nr_entries(const std::string &name) const {
    std::size_t count = 0;
    for ([[maybe_unused]] const auto &entry :
         std::filesystem::directory_iterator(path(name))) {
      ++count;
    }
    return count;
  }

  std::string directory_;
};

TEST_F(ResultFileTest, IsThereWhenItIsComplete) {
  const std::string file = path("a/b/c.txt");
  ResultFile result;
  ASSERT_TRUE(result.open(file));
  EXPECT_EQ(write(result.descriptor(), "text", 4), 4);
  EXPECT_FALSE(is_result(file));
  EXPECT_EQ(nr_entries("a/b"), 1U);
  ASSERT_TRUE(result.commit());
  EXPECT_TRUE(is_result(file));
  EXPECT_EQ(nr_entries("a/b"), 1U);
  std::string content;
  std::ifstream(file) >> content;
  EXPECT_EQ(content, "text");
}

TEST_F(ResultFileTest, LeavesNothingIfItIsNotCompleted) {
  {
    ResultFile result;
    ASSERT_TRUE(result.open(path("a/c.txt")));
  }
  EXPECT_EQ(nr_entries("a"), 0U);
}

TEST_F(ResultFileTest, StandsBesideOthersOfTheSameName) {
  ResultFile first, second;
  ASSERT_TRUE(first.open(path("c.txt")));
  ASSERT_TRUE(second.open(path("c.txt")));
  EXPECT_TRUE(second.commit());
  EXPECT_TRUE(first.commit());
  EXPECT_EQ(nr_entries(""), 1U);
}

TEST_F(ResultFileTest, TellsWhyItCannotBe) {
  std::ofstream(path("file")) << "text";
  ResultFile below_file;
  EXPECT_FALSE(below_file.open(path("file/a/c.txt")));
  EXPECT_EQ(errno, ENOTDIR);
  std::filesystem::create_directories(path("dir.txt/x"));
  EXPECT_FALSE(is_result(path("dir.txt")));
  ResultFile over_directory;
  ASSERT_TRUE(over_directory.open(path("dir.txt")));
  EXPECT_FALSE(over_directory.commit());
}

}  // namespace
}  // namespace vek::analysis

#include "analyse/result_files.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <iterator>
#include <string>
#include <string_view>

#include "support/temporary_directory.h"

namespace vek::analysis {
namespace {

using namespace std::string_view_literals;

TEST(ResultNames, TakeTheLastComponentOrAllBehindADirectory) {
  const std::string outside = "(not in the directory of '--from')";
  const struct {
    std::string from;  // empty if there is none
    std::string_view path;
    std::string name;  // or what is wrong
  } cases[] = {{"", "docs/a/b.txt", "out/b.txt"},
               {"", ".txt", "out/.txt.txt"},
               {"", "/", "(names no file)"},
               {"", "a/", "(names no file)"},
               {"", "a/..", "(leads out of the directory)"},
               {"", "a\0b"sv, "(no file has a NUL in its name)"},
               {"docs", "docs/a/b.txt", "out/a/b.txt"},
               {"docs/", "docs//a", "out/a.txt"},
               {"./docs", "docs/a", "out/a.txt"},
               {"docs", "./docs/a", "out/a.txt"},
               {".", "docs/a", "out/docs/a.txt"},
               {"/", "/docs/a", "out/docs/a.txt"},
               {"docs", "docs/a..b", "out/a..b.txt"},
               {"docs", "docs2/a", outside},
               {".", "/docs/a", outside},
               {"docs", "docs/a/..", "(leads out of the directory)"},
               {"docs", "docs/a/", "(names no file)"}};
  for (const auto &[from, path, name] : cases) {
    const ResultNames names =
        from.empty() ? ResultNames("out") : ResultNames("out", from);
    std::string file;
    const std::string problem = names.find(path, file);
    EXPECT_EQ(problem.empty() ? file : '(' + problem + ')', name)
        << from << " and " << path;
  }
}

auto nr_entries(const std::string &name) {
  return std::distance(std::filesystem::directory_iterator(name), {});
}

TEST(ResultFile, IsThereWhenItIsCompleteBesideOthersOfTheSameName) {
  const TemporaryDirectory directory;
  const std::string file = "a/b/c.txt";
  ResultFile first, second;
  ASSERT_TRUE(first.open(file));
  ASSERT_TRUE(second.open(file));
  EXPECT_EQ(write(first.descriptor(), "text", 4), 4);
  EXPECT_FALSE(is_result(file));
  EXPECT_EQ(nr_entries("a/b"), 2);
  EXPECT_TRUE(second.commit());
  EXPECT_EQ(read_text(file), "");
  EXPECT_TRUE(first.commit());
  EXPECT_TRUE(is_result(file));
  EXPECT_EQ(nr_entries("a/b"), 1);
  EXPECT_EQ(read_text(file), "text");
}

}  // namespace
}  // namespace vek::analysis

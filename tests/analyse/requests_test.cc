#include "analyse/requests.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace vek::analysis {
namespace {

using namespace std::string_view_literals;

// The lines that a reader gets when `input` is written in pieces of `size`.
std::vector<std::string> lines_of(std::string_view input, std::size_t size) {
  int ends[2];
  EXPECT_EQ(pipe(ends), 0);
  std::thread writer([=]() mutable {
    while (!input.empty()) {
      const std::string_view piece = input.substr(0, size);
      EXPECT_EQ(write(ends[1], piece.data(), piece.size()),
                static_cast<ssize_t>(piece.size()));
      input.remove_prefix(piece.size());
    }
    close(ends[1]);
  });
  RequestReader reader(ends[0]);
  std::vector<std::string> lines;
  for (std::string line; reader.next(line);)
    lines.push_back(line);
  EXPECT_EQ(errno, 0);
  writer.join();
  close(ends[0]);
  return lines;
}

TEST(RequestReader, SplitsLinesHoweverTheyArrive) {
  using Lines = std::vector<std::string>;
  for (const std::size_t size : {1U, 2U, 3U, 100U}) {
    EXPECT_EQ(lines_of("", size), Lines());
    EXPECT_EQ(lines_of("\n", size), Lines({""}));
    EXPECT_EQ(lines_of("a/b c\n\n d \r\n\ne\0f"sv, size),
              Lines({"a/b c", "", " d \r", "", std::string("e\0f"sv)}));
  }
  // A line that cannot be a path is cut.
  const std::string longest(RequestReader::longest_path, 'x');
  const std::string line = longest + std::string(1000000, 'y');
  EXPECT_EQ(lines_of("a\n" + line + "\nb\n" + line, 65536),
            Lines({"a", longest, "b", longest}));
}

TEST(RequestReader, TellsABrokenInputFromItsEnd) {
  RequestReader reader(-1);
  std::string line;
  EXPECT_FALSE(reader.next(line));
  EXPECT_EQ(errno, EBADF);
}

}  // namespace
}  // namespace vek::analysis

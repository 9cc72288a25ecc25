#include "store/tablefile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "log/log.h"
#include "support/temporary_directory.h"

namespace vek {
namespace {

void append_record(std::string &out, std::uint32_t id) {
  out += std::to_string(id) + '\n';
}

class TableFileTest : public testing::Test {
 protected:
  TableFileTest() { set_verbosity(0); }

 private:
  TemporaryDirectory directory_;
};

// The records are the lines that say their numbers.
TEST_F(TableFileTest, GrowsByNewRecordsOnly) {
  std::string large;
  for (std::uint32_t id = 0; id < 10000; ++id)
    append_record(large, id);
  const struct {
    std::string content;
    std::uint32_t nr_records;
    std::string result, told;
  } cases[] = {{"", 0, "", ""},
               {"", 2, "0\n1\n", "creating f with 2 lines\n"},
               {"0\n1\n", 2, "0\n1\n", ""},
               {"0\n1\n", 4, "0\n1\n2\n3\n", "updating f from 2 to 4 lines\n"},
               // The last line counts without its line end, and stays a line.
               {"0\n1", 2, "0\n1", ""},
               {"0\n1", 3, "0\n1\n2\n", "updating f from 2 to 3 lines\n"},
               // More than is written at once.
               {"0\n", 10000, large, "updating f from 1 to 10000 lines\n"}};
  set_verbosity(1);
  for (const auto &[content, nr_records, result, told] : cases) {
    SCOPED_TRACE(told);
    write_text("f", content);
    TableFile file;
    file.set_name("f");
    EXPECT_EQ(file.load(), content);
    file.accept(static_cast<std::uint32_t>(std::ranges::count(content, '\n') +
                                           !content.ends_with('\n') -
                                           content.empty()));
    testing::internal::CaptureStderr();
    // The second time there is nothing more to write.
    for (int i = 0; i < 2; ++i)
      file.append(nr_records, "lines", append_record);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), told);
    EXPECT_EQ(file.nr_written(), nr_records);
    EXPECT_TRUE(read_text("f") == result);
  }
}

TEST_F(TableFileTest, EndsTheRunIfItFails) {
  std::filesystem::create_directory("d");
  std::filesystem::create_symlink("/dev/full", "full");
  const struct {
    const char *name;
    bool reads;
    int status;
    const char *message;
  } cases[] = {
      {"missing", true, ENOENT, "^ERROR: cannot open file `missing' for read"},
      {"d", true, EISDIR, "^ERROR: error reading file `d'\naborting"},
      {"d", false, EISDIR, "^ERROR: cannot open file `d' for writing\nabort"},
      {"full", false, ENOSPC, "^ERROR: error writing file `full'\naborting"}};
  for (const auto &[name, reads, status, message] : cases) {
    TableFile file;
    file.set_name(name);
    EXPECT_EXIT(reads ? void(file.load()) : file.append(1, "", append_record),
                testing::ExitedWithCode(status), message);
  }
}

}  // namespace
}  // namespace vek

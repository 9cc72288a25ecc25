#include "store/tablefile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>

#include "log/log.h"
#include "support/temporary_directory.h"

namespace vek {
namespace {

void append_record(std::string &out, std::uint32_t id) {
  out += std::to_string(id) + '\n';
}

// The records are the lines that say their numbers.
TEST(TableFile, GrowsByNewRecordsOnly) {
  const TemporaryDirectory directory;
  std::string large;
  for (std::uint32_t id = 0; id < 10000; ++id)
    append_record(large, id);
  const struct {
    std::string content;
    std::uint32_t nr_records;
    std::string result;
  } cases[] = {{"", 0, ""},
               {"0\n1\n", 2, "0\n1\n"},
               // The last line counts without its line end, and stays a line.
               {"0\n1", 2, "0\n1"},
               {"0\n1", 3, "0\n1\n2\n"},
               // More than is written at once.
               {"0\n", 10000, large}};
  set_verbosity(0);
  for (const auto &[content, nr_records, result] : cases) {
    write_text("f", content);
    TableFile file;
    file.set_name("f");
    EXPECT_EQ(file.load(), content);
    file.accept(static_cast<std::uint32_t>(std::ranges::count(content, '\n') +
                                           !content.ends_with('\n') -
                                           content.empty()));
    // The second time there is nothing more to write.
    for (int i = 0; i < 2; ++i)
      file.append(nr_records, "lines", append_record);
    EXPECT_TRUE(read_text("f") == result) << content;
  }
}

}  // namespace
}  // namespace vek

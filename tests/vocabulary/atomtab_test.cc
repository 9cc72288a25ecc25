#include "vocabulary/atomtab.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

namespace vek {
namespace {

using namespace std::string_literals;

// Texts that differ in one place or in their length only, and many of them.
TEST(AtomTable, TellsTextsApartAndKeepsThemInPlace) {
  StringPool pool;
  AtomTable table(pool);
  const char *const first_P = table.text(table.enter("first")).data();
  std::map<std::string, std::uint32_t> ids;
  const auto enter = [&](const std::string &text) {
    const auto next = static_cast<std::uint32_t>(1 + ids.size());
    EXPECT_EQ(table.find(text), EmptyAtom);
    EXPECT_EQ(ids.emplace(text, table.enter(text)).first->second, next);
  };
  for (std::size_t length = 1; length <= 40; ++length) {
    enter(std::string(length, 'a'));
    for (std::size_t place = 0; place < length; ++place) {
      std::string other(length, 'a');
      other[place] = '\xFF';
      enter(other);
    }
  }
  for (int i = 0; i < 100000; ++i)
    enter("word" + std::to_string(i * 7));
  EXPECT_EQ(table.text(0).data(), first_P);
  EXPECT_EQ(table.size(), 1 + ids.size());
  for (const auto &[text, id] : ids) {
    ASSERT_EQ(table.enter(text), id);
    ASSERT_EQ(table.text(id), text);
  }
}

TEST(AtomTable, ReadsTheLinesOfItsFileUpToADamagedOne) {
  const std::string odd = "big \\\"house\"\n\x01\r\xFF\n \n";
  const struct {
    std::string content, lines, fault;
  } cases[] = {{"", "", ""},
               {odd, odd, ""},
               {"a\nb", "a\nb\n", ""},
               {"\n", "", "line 1: the line is empty"},
               {"a\n\nb\n", "a\n", "line 2: the line is empty"},
               {"a\n\n", "a\n", "line 2: the line is empty"},
               {"a\nb\na\n", "a\nb\n", "line 3: the atom was there before"},
               {"a\na", "a\n", "line 2: the atom was there before"},
               {"a\nb\0c\nd\n"s, "a\n", "line 2: there is a NUL byte"},
               {"a\n\nb\0\n"s, "a\n", "line 2: the line is empty"},
               {"\0"s, "", "line 1: there is a NUL byte"}};
  for (const auto &[content, lines, fault] : cases) {
    StringPool pool;
    AtomTable table(pool);
    EXPECT_EQ(table.parse(content), fault.empty()) << content;
    if (!fault.empty()) {
      EXPECT_EQ(table.fault(content).text(), fault);
    }
    std::string written;
    for (std::uint32_t id = 0; id < table.size(); ++id)
      table.append_line(written, id);
    EXPECT_EQ(written, lines) << content;
  }
}

}  // namespace
}  // namespace vek

#include "vocabulary/atomtab.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace vek {
namespace {

TEST(AtomTable, NumbersTextsInTheirFirstOrder) {
  AtomTable table;
  EXPECT_TRUE(table.empty());
  std::vector<std::uint32_t> ids;
  for (const char *text : {"house", "big", "house", "Big", "b\xC3\xA4r"})
    ids.push_back(table.enter(text));
  EXPECT_EQ(ids, (std::vector<std::uint32_t>{0, 1, 0, 2, 3}));
  EXPECT_EQ(table.next_id(), 4U);
}

// Lengths around what the index holds of a text, texts that differ in one place
// only, and many of them.
TEST(AtomTable, TellsTextsApartAndKeepsThemInPlace) {
  AtomTable table;
  const std::string &first = table.text(table.enter("first"));
  std::map<std::string, std::uint32_t> ids;
  const auto enter = [&](const std::string &text) {
    ids.emplace(text, table.enter(text));
  };
  for (std::size_t length = 1; length <= 40; ++length) {
    const std::string text(length, 'a');
    enter(text);
    for (std::size_t place = 0; place < length; ++place) {
      std::string other = text;
      other[place] = '\xFF';
      enter(other);
    }
  }
  for (int i = 0; i < 100000; ++i)
    enter("word" + std::to_string(i * 7));
  EXPECT_EQ(&table.text(0), &first);
  EXPECT_EQ(table.size(), 1 + ids.size());
  for (const auto &[text, id] : ids) {
    ASSERT_EQ(table.enter(text), id);
    ASSERT_EQ(table.text(id), text);
  }
}

TEST(AtomTable, EntersAListAsOneByOne) {
  std::mt19937 random(1);
  AtomTable table;
  std::vector<std::string> texts;
  std::vector<std::uint32_t> expected;
  for (int i = 0; i < 5000; ++i) {
    texts.push_back("w" + std::to_string(random() % 3000));
    expected.push_back(table.enter(texts.back()));
  }
  AtomTable other;
  std::vector<std::uint32_t> ids = {7};
  other.enter_all(std::vector<std::string_view>(texts.begin(), texts.end()),
                  ids);
  EXPECT_EQ(ids, expected);
  other.enter_all({}, ids);
  EXPECT_TRUE(ids.empty());
}

}  // namespace
}  // namespace vek

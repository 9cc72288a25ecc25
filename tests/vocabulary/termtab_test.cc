#include "vocabulary/termtab.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <utility>

namespace vek {
namespace {

std::string written(const TermTable &table) {
  std::string lines;
  for (std::uint32_t id = 0; id < table.size(); ++id)
    table.append_line(lines, id);
  return lines;
}

TEST(TermTable, GivesAPairOneIdAndChainsTheTermsOfAHeadByModifier) {
  TermTable table;
  std::uint32_t next = 0;
  for (const std::uint32_t mod : {5U, 3U, 9U, 7U, EmptyAtom})
    EXPECT_EQ(table.enter(1, mod), next++);
  EXPECT_EQ(table.enter(1, 3), 1U);
  EXPECT_EQ(table.enter(1, EmptyAtom), 4U);
  EXPECT_EQ(written(table),
            "1 5 0 3\n1 3 1 0\n1 9 2 4\n1 7 3 2\n1 4294967295 4 4294967295\n");
  EXPECT_EQ(table.enter(5, 1), 5U);
  EXPECT_EQ(table.get_term(5).next, EmptyAtom);
}

// Looked at now and then, so that links are made upon links.
TEST(TermTable, HoldsManyPairsInOrder) {
  std::mt19937 random(1);
  std::map<std::pair<std::uint32_t, std::uint32_t>, std::uint32_t> expected;
  TermTable table;
  for (int i = 0; i < 20000; ++i) {
    const auto head = static_cast<std::uint32_t>(random() % 20);
    const auto number = static_cast<std::uint32_t>(random() % 500);
    const std::uint32_t mod = number < 50 ? EmptyAtom : number;
    const auto size = static_cast<std::uint32_t>(expected.size());
    ASSERT_EQ(table.enter(head, mod),
              expected.try_emplace({head, mod}, size).first->second);
    if (i % 2000 != 0)
      continue;
    for (auto at = expected.begin(); at != expected.end();) {
      const auto &[pair, id] = *at++;
      const bool is_last =
          at == expected.end() || at->first.first != pair.first;
      ASSERT_EQ(table.get_term(id).next, is_last ? EmptyAtom : at->second);
    }
  }
  EXPECT_EQ(table.size(), expected.size());
}

// Over ten atoms.
TEST(TermTable, ReadsTheLinesOfItsFileUpToADamagedOne) {
  const std::pair<std::string, std::string> good[] = {
      {"", ""},
      // Nothing is made of the last two numbers.
      {"1 5 77 99\n1 3 0 0", "1 5 0 4294967295\n1 3 1 0\n"},
      {"9 4294967295 0 0\n", "9 4294967295 0 4294967295\n"}};
  for (const auto &[content, lines] : good) {
    TermTable table;
    EXPECT_TRUE(table.parse(content, 10)) << content;
    EXPECT_EQ(written(table), lines);
  }
  for (const std::string line :
       {"\n", "1 2 0\n", "1 2 0 0 \n", "1 2 0 0 0\n", " 1 2 0 0\n",
        "1  2 0 0\n", "1\t2 0 0\n", "1 2 0 0\r\n", "1 -2 0 0\n",
        "1 2 0 4294967296\n", "1 x 0 0\n",
        // A head that is none, atoms that do not exist, a pair told twice.
        "4294967295 2 0 0\n", "10 2 0 0\n", "1 10 0 0\n", "1 4294967294 0 0\n",
        "8 9 0 0\n"}) {
    TermTable table;
    EXPECT_FALSE(table.parse("8 9 0 0\n" + line + "3 4 0 0\n", 10)) << line;
    EXPECT_EQ(table.size(), 1U) << line;
  }
}

}  // namespace
}  // namespace vek

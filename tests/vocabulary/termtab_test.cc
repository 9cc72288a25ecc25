#include "vocabulary/termtab.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

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
  const std::pair<std::string, std::vector<std::string>> bad[] = {
      {"the line is not four numbers",
       {"", "1 2 0", "1 2 0 0 ", "1 2 0 0 0", " 1 2 0 0", "1  2 0 0",
        "1\t2 0 0", "1 2 0 0\r", "1 -2 0 0", "1 2 0 4294967296", "1 x 0 0"}},
      {"there is no such atom",
       {"4294967295 2 0 0", "10 2 0 0", "1 10 0 0", "1 4294967294 0 0"}},
      {"the term was there before", {"8 9 0 0"}}};
  for (const auto &[reason, lines] : bad) {
    for (const std::string &line : lines) {
      TermTable table;
      const std::string content = "8 9 0 0\n" + line + "\n3 4 0 0\n";
      EXPECT_FALSE(table.parse(content, 10)) << line;
      EXPECT_EQ(table.size(), 1U) << line;
      EXPECT_EQ(table.fault(content, 10).text(), "line 2: " + reason) << line;
    }
  }
}

}  // namespace
}  // namespace vek

#include "vocabulary/termtab.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <random>
#include <utility>
#include <vector>

namespace vek {
namespace {

using Ids = std::vector<std::uint32_t>;

Ids chain(const TermTable &table, std::uint32_t head) {
  Ids ids;
  for (std::uint32_t id = table.first_of_head(head); id != EmptyAtom;
       id = table.get_term(id).next) {
    ids.push_back(id);
  }
  return ids;
}

TEST(TermTable, GivesAPairOneIdAndChainsTheTermsOfAHeadByModifier) {
  TermTable table;
  std::uint32_t next = 0;
  for (const std::uint32_t mod : {5U, 3U, 9U, 7U, EmptyAtom})
    EXPECT_EQ(table.enter(1, mod), next++);
  EXPECT_EQ(table.enter(5, 1), 5U);
  EXPECT_EQ(table.enter(1, 3), 1U);
  EXPECT_EQ(table.enter(1, EmptyAtom), 4U);
  EXPECT_EQ(table.size(), 6U);
  EXPECT_EQ(table.head(5), 5U);
  EXPECT_EQ(table.mod(4), EmptyAtom);
  EXPECT_EQ(chain(table, 1), (Ids{1, 0, 3, 2, 4}));
  EXPECT_EQ(chain(table, 0), Ids{});
  EXPECT_EQ(chain(table, 2), Ids{});
}

// Against a plain record of what was entered, looked at now and then, so that
// links are made upon links.
TEST(TermTable, HoldsManyPairsInOrder) {
  std::mt19937 random(1);
  std::map<std::pair<std::uint32_t, std::uint32_t>, std::uint32_t> expected;
  TermTable table;
  for (int i = 0; i < 20000; ++i) {
    const auto head = static_cast<std::uint32_t>(random() % 20);
    const auto number = static_cast<std::uint32_t>(random() % 500);
    const std::uint32_t mod = number < 50 ? EmptyAtom : number;
    const auto size = static_cast<std::uint32_t>(expected.size());
    const std::uint32_t id =
        expected.try_emplace({head, mod}, size).first->second;
    ASSERT_EQ(table.enter(head, mod), id);
    if (i % 2000 != 0)
      continue;
    std::map<std::uint32_t, Ids> chains;
    for (const auto &[pair, term] : expected)
      chains[pair.first].push_back(term);
    for (const auto &[any_head, ids] : chains)
      ASSERT_EQ(chain(table, any_head), ids);
  }
  EXPECT_EQ(table.size(), expected.size());
}

}  // namespace
}  // namespace vek

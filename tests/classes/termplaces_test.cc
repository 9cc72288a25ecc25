#include "classes/termplaces.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

#include "classes/termstats.h"

namespace vek {
namespace {

// Few terms, which lie far apart, so that they meet in the table.
std::uint32_t any_term(std::mt19937 &random) {
  return static_cast<std::uint32_t>(random() % 64) * 0x01000001U;
}

TEST(TermPlaces, BehavesAsAMap) {
  std::mt19937 random(3);
  for (int round = 0; round < 200; ++round) {
    TermPlaces places;
    std::map<std::uint32_t, std::uint32_t> expected;
    for (std::uint32_t step = 0; step < 200; ++step) {
      const std::uint32_t term = any_term(random);
      switch (random() % 4) {
        case 0:
          places.erase(term);
          expected.erase(term);
          break;
        case 1:
          if (expected.contains(term))
            places.set(term, expected[term] = step);
          break;
        default:
          EXPECT_EQ(places.find_or_insert(term, step),
                    expected.try_emplace(term, step).first->second);
      }
      if (step == 100)
        places.reserve(random() % 300);
      const std::uint32_t other = any_term(random);
      ASSERT_EQ(places.find(other), expected.contains(other)
                                        ? expected[other]
                                        : TermPlaces::nowhere);
    }
  }
}

TEST(TermStatsTable, KeepsWhatWasCountedAlsoWhenOpenedAgain) {
  std::mt19937 random(4);
  // With few terms in all, each gets a slot of its own soon, or at once.
  for (const std::uint32_t nr_terms : {0U, 30U, 1000U}) {
    TermStatsTable table;
    if (nr_terms != 0)
      table.set_nr_terms(nr_terms);
    std::map<std::uint32_t, std::uint32_t> expected;
    for (int round = 0; round < 50; ++round) {
      for (std::uint32_t step = 0; step < 40; ++step) {
        std::uint32_t term = any_term(random) + step;
        if (nr_terms != 0)
          term %= nr_terms;
        ++table[term].tf;
        ++expected[term];
      }
      table.settle();
      table.keep_if([](const auto &slot) { return slot.term % 5 != 0; });
      std::erase_if(expected,
                    [](const auto &one) { return one.first % 5 == 0; });
      ASSERT_EQ(table.size(), expected.size());
      auto next = expected.begin();
      for (const auto &[term, stats] : table) {
        EXPECT_EQ(term, next->first);
        EXPECT_EQ(stats.tf, (next++)->second);
      }
      EXPECT_TRUE(next == expected.end());
    }
  }
}

}  // namespace
}  // namespace vek

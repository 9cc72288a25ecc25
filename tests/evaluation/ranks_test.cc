#include "evaluation/ranks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <sstream>
#include <string>

namespace vek {
namespace {

class RanksTest : public testing::Test {
 protected:
  RanksTest() {
    class_table.enter("top", 0);
    sport_P = &class_table.get_data(class_table.enter("sport", 0));
    local_P = &class_table.get_data(class_table.enter_path("news/local", 0));
  }
  ClassData *sport_P;
  ClassData *local_P;
};

std::string line_of(const Ranks &ranks, const std::string &name) {
  std::ostringstream os;
  ranks.print(name, os);
  return os.str();
}

TEST_F(RanksTest, SortsHighestFirstAndWhatIsNoNumberLast) {
  const double infinity = std::numeric_limits<double>::infinity();
  Ranks ranks;
  EXPECT_EQ(line_of(ranks, "d"), "d.txt \n");
  for (const double score :
       {1.0, std::nan(""), 2.0, -infinity, infinity, std::nan(""), 2.5}) {
    ranks.add(sport_P, score);
  }
  ranks.add(local_P, 1.0);
  ranks.add(local_P, 2.0);
  ranks.add(local_P, std::nan(""));
  ranks.sort();
  EXPECT_EQ(line_of(ranks, "d"),
            "d.txt sport:inf sport:2.5 sport:2 news/local:2 sport:1 "
            "news/local:1 sport:-inf sport:nan sport:nan news/local:nan\n");
}

TEST_F(RanksTest, KeepsTheOrderOfEqualScores) {
  const double infinity = std::numeric_limits<double>::infinity();
  std::mt19937 random(3);
  for (int size = 0; size < 700; size += 1 + size / 20) {
    std::uniform_int_distribution any(-2, size);
    Ranks ranks;
    for (int i = 0; i < size; ++i) {
      const int kind = any(random);
      const double score = kind == -2   ? infinity
                           : kind == -1 ? -infinity
                           : kind % 2   ? -0.0
                                        : std::floor(kind / 8.0) - 3.0;
      ranks.add(i % 3 == 0 ? sport_P : local_P, score);
    }
    Ranks expected = ranks;
    std::ranges::stable_sort(expected, std::greater(), &Ranking::score);
    ranks.sort();
    EXPECT_EQ(line_of(ranks, "d"), line_of(expected, "d")) << size;
  }
}

TEST_F(RanksTest, PrintsFiveSignificantDigits) {
  Ranks ranks;
  for (const double score :
       {0.123456789, 1234567.0, -0.00001234, 99999.5, 12345.0, 1e-300, 0.0}) {
    ranks.add(sport_P, score);
  }
  EXPECT_EQ(line_of(ranks, "d12"),
            "d12.txt sport:0.12346 sport:1.2346e+06 sport:-1.234e-05 "
            "sport:1e+05 sport:12345 sport:1e-300 sport:0\n");
}

TEST_F(RanksTest, EndsTheRunIfALineIsLost) {
  std::ostringstream os;
  os.setstate(std::ios::badbit);
  Ranks ranks;
  ranks.print("d", os);
  ranks.add(sport_P, 1.0);
  EXPECT_EXIT(
      {
        errno = ENOSPC;
        ranks.print("d", os);
      },
      testing::ExitedWithCode(ENOSPC), "^aborting... \\(errno = 28\\)\n$");
}

TEST(RankFileName, CountsFromZero) {
  std::array<char, 16> name;
  next_rank_file_name(name.data(), name.size());
  EXPECT_EQ(name.data(), std::string("rank0"));
  std::array<char, 5> too_small;
  next_rank_file_name(too_small.data(), too_small.size());
  EXPECT_EQ(too_small.data(), std::string("rank"));
}

}  // namespace
}  // namespace vek

#include "evaluation/ranks.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace vek {
namespace {

TEST(Ranks, ShowsHighestFirstAndWhatIsNoNumberLast) {
  const double infinity = std::numeric_limits<double>::infinity();
  ClassTable classes;
  classes.enter("top", 0);
  ClassData &sport = classes.get_data(classes.enter("sport", 0));
  ClassData &local = classes.get_data(classes.enter_path("news/local", 0));
  Ranks ranks;
  EXPECT_EQ(ranks.line("d", classes), "d.txt \n");
  for (const double score : {1.0, std::nan(""), -infinity, infinity, 99999.5,
                             -0.00001234, 0.0, 0.123456789, 1234567.0}) {
    ranks.add(&sport, score);
  }
  for (const double score : {1.0, std::nan("")})
    ranks.add(&local, score);
  ranks.sort();
  EXPECT_EQ(ranks.line("d", classes),
            "d.txt sport:inf sport:1.2346e+06 sport:1e+05 sport:1 news/local:1 "
            "sport:0.12346 sport:0 sport:-1.234e-05 sport:-inf sport:nan "
            "news/local:nan\n");
}

TEST(Ranks, KeepsTheOrderOfEqualScores) {
  std::vector<ClassData> many(300);
  Ranks ranks;
  for (std::uint32_t i = 0; i < many.size(); ++i) {
    many[i].id = i;
    ranks.add(&many[i], i % 3);
  }
  ranks.sort();
  for (std::size_t i = 0; i < many.size(); ++i)
    EXPECT_EQ(ranks[i].class_data_P->id, i % 100 * 3 + 2 - i / 100);
}

}  // namespace
}  // namespace vek

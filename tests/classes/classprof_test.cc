#include "classes/classprof.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>
#include <utility>

namespace vek {
namespace {

using Columns = ProfileColumns;

std::string written(const ClassProfile &profile, Columns columns) {
  std::ostringstream stream;
  EXPECT_TRUE(profile.write(stream, 42, columns));
  return stream.str();
}

bool reads(const std::string &text, Columns columns) {
  ClassProfile profile;
  std::uint32_t nr_terms = 0;
  return profile.parse(text, nr_terms, columns);
}

// Compares with an ordered map after every few of many mixed steps.
TEST(ClassProfile, BehavesAsAMapWalkedByAscendingTerm) {
  ClassProfile profile;
  std::map<std::uint32_t, std::uint32_t> model;
  std::uint32_t random = 1;
  for (int step = 0; step < 20000; ++step) {
    random = random * 1664525 + 1013904223;
    const std::uint32_t term = (random >> 16) % 100 * 42949673;
    if (random >> 31 != 0) {
      profile.erase(term);
      model.erase(term);
    } else {
      profile[term].tf += 1;
      model[term] += 1;
    }
    ASSERT_EQ(profile.tf(term), model.contains(term) ? model[term] : 0);
    if (step % 7 != 0)
      continue;
    ASSERT_EQ(profile.size(), model.size());
    auto expected = model.begin();
    for (const auto &[term_id, entry] : profile) {
      ASSERT_EQ(term_id, expected->first);
      ASSERT_EQ(entry.tf, (expected++)->second);
    }
  }
}

TEST(ClassProfile, WritesItsColumnsAndReadsThemWholeAlone) {
  const std::pair<Columns, std::string> layouts[] = {
      {Columns::updates, "2\t42\t1.23457\n5\t6\t7\t-1\t2\t\n9\t1\t2\t3\t4\t\n"},
      {Columns::weight,
       "2\t42\t1.23457\n5\t6\t7\t-1.5e-07\t\n9\t1\t2\t0.333333\t\n"},
      {Columns::exact_weight,
       "2\t42\t1.23456789\t-0.1\n5\t6\t7\t-1.5e-07\t\n"
       "9\t1\t2\t0.3333333333333333\t\n"},
      {Columns::frequencies, "2\t42\t1.23457\n5\t6\t7\t\n9\t1\t2\t\n"}};
  ClassProfile profile;
  profile.set_threshold(1.23456789);
  profile.set_bias(-0.1);
  profile[9] = {1, 2, 8.0, 1.0 / 3.0, 8.0, 3, 4};
  profile[5] = {6, 7, 8.0, -1.5e-7, 8.0, -1, 2};
  for (const auto &[columns, text] : layouts) {
    EXPECT_EQ(written(profile, columns), text);
    ClassProfile again;
    std::uint32_t nr_terms = 0;
    ASSERT_TRUE(again.parse(text, nr_terms, columns));
    EXPECT_EQ(nr_terms, 42U);
    EXPECT_EQ(written(again, columns), text);
    EXPECT_EQ(again.find(5)->pos_weight,
              columns == Columns::weight || columns == Columns::exact_weight
                  ? -1.5e-7
                  : 0.0);
    for (const auto &other : layouts)
      EXPECT_EQ(reads(text, other.first), columns == other.first);
    // A cut inside the last number leaves another number.
    const std::size_t last = text.find_last_not_of("\t\n");
    const std::size_t start = text.find_last_of('\t', last) + 1;
    for (std::size_t size = 0; size <= start; ++size)
      EXPECT_FALSE(reads(text.substr(0, size), columns)) << size;
    EXPECT_TRUE(reads(text.substr(0, last + 1), columns));
  }
}

TEST(ClassProfile, ReadsNoDamagedFile) {
  const struct {
    Columns columns;
    std::string text;
    bool readable = false;
  } cases[] = {
      {Columns::frequencies, " 1 \r\n 7 1e0 \v 5 6 7 \n\n", true},
      {Columns::frequencies, "1\t0\t1\n5\t6\t7\t\n9\t1\t2\t\n"},
      {Columns::frequencies, std::string("1\t0\t1\n5\t6\t7\t\n\0", 14)},
      {Columns::frequencies, "2\t0\t1\n5\t6\t7\t\n5\t6\t7\t\n"},
      {Columns::frequencies, "4294967295\t0\t1\n5\t6\t7\t\n"},
      {Columns::frequencies, "0\t4294967296\t1\n"},
      {Columns::frequencies, "1\t0\t1\n4294967295\t4294967295\t4294967295\n",
       true},
      {Columns::frequencies, "1\t0\t1\n5\t4294967296\t7\t\n"},
      {Columns::updates, "1\t0\t1\n5\t6\t7\t2147483647\t-2147483648\n", true},
      {Columns::updates, "1\t0\t1\n5\t6\t7\t2147483648\t0\n"},
      {Columns::updates, "1\t0\t1\n5\t6\t7\t0\t-2147483649\n"},
      {Columns::weight, "1\t0\tnan\n5\t6\t7\t-inf\n", true},
      {Columns::weight, "1\t0\t1\n5\t6\t7\tinfinity\n"},
      {Columns::weight, "1\t0\t1\n5\t6\t7\tnan(1)\n"},
      {Columns::weight, "1\t0\t1\n5\t6\t7\t1e999\n"},
  };
  for (const auto &[columns, text, readable] : cases)
    EXPECT_EQ(reads(text, columns), readable) << text;
}

TEST(ClassProfile, SaysWhereAndWhyItReadsNoFurther) {
  const std::pair<std::string, std::string> cases[] = {
      {"2\t0\t1\n5\t6\t7\n9\t1\t1\n", ""},
      {"2\t0\n", "line 2: it is no head of a class profile"},
      {"2\t0\t1\n5\t6\t7\n", "line 3: an entry is damaged or missing"},
      {"2\t0\t1\n5\t6\t7\n5\t1\t1\n", "line 3: term 5 was there before"},
      {"2\t0\t1\n5\t6\t7\n10\t1\t1\n", "line 3: term 10 is not known"},
      {"0\t0\t1\n5\t6\t7\n", "line 2: there is more than the entries"}};
  for (const auto &[text, reason] : cases) {
    ClassProfile profile;
    std::uint32_t nr_terms = 0;
    LineFault fault;
    EXPECT_EQ(profile.parse(text, nr_terms, Columns::frequencies, 10, fault),
              reason.empty());
    EXPECT_EQ(fault.line == 0 ? "" : fault.text(), reason);
  }
}

}  // namespace
}  // namespace vek

#include "classes/classprof.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "params/params.h"
#include "run/output_file.h"

namespace vek {
namespace {

std::string written(const ClassProfile &profile, std::uint32_t nr_terms) {
  std::ostringstream stream;
  EXPECT_TRUE(profile.write(stream, nr_terms));
  return stream.str();
}

bool reads(const std::string &text) {
  std::istringstream stream(text);
  ClassProfile profile;
  std::uint32_t nr_terms = 0;
  return profile.read(stream, nr_terms);
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
    ASSERT_EQ(profile.find(term) != nullptr, model.contains(term));
    ASSERT_EQ(profile.df(term), 0U);
    if (step % 7 != 0)
      continue;
    auto expected = model.begin();
    ASSERT_EQ(profile.size(), model.size());
    for (const ClassProfile::Slot &slot : profile) {
      ASSERT_EQ(slot.term, expected->first);
      ASSERT_EQ(slot.entry.tf, (expected++)->second);
    }
  }
}

struct Layout {
  Algorithm algorithm;
  std::string text;
};

const std::vector<Layout> layouts = {
    {Algorithm::winnow, "2\t42\t1.23457\n5\t6\t7\t-1\t2\t\n9\t1\t2\t3\t4\t\n"},
    {Algorithm::rocchio,
     "2\t42\t1.23457\n5\t6\t7\t-1.5e-07\t\n9\t1\t2\t0.333333\t\n"},
    {Algorithm::sbc, "2\t42\t1.23457\n5\t6\t7\t\n9\t1\t2\t\n"},
};

TEST(ClassProfile, WritesTheColumnsOfTheAlgorithmAndReadsZeroForTheRest) {
  ClassProfile profile;
  profile.set_threshold(1.23456789);
  profile[9] = {1, 2, 8.0, 1.0 / 3.0, 8.0, 3, 4};
  profile[5] = {6, 7, 8.0, -1.5e-7, 8.0, -1, 2};
  for (const Layout &layout : layouts) {
    params.set_algorithm(layout.algorithm);
    EXPECT_EQ(written(profile, 42), layout.text);
    std::istringstream stream(layout.text);
    ClassProfile again;
    std::uint32_t nr_terms = 0;
    ASSERT_TRUE(again.read(stream, nr_terms));
    EXPECT_EQ(written(again, nr_terms), layout.text);
    const ClassProfileEntry &entry = *again.find(5);
    EXPECT_EQ(entry.pos_weight,
              layout.algorithm == Algorithm::rocchio ? -1.5e-7 : 0.0);
    EXPECT_EQ(entry.neg_weight + entry.weight, 0.0);
  }
  EXPECT_EQ(written(ClassProfile(), 4294967295), "0\t4294967295\t1\n");
}

TEST(ClassProfile, ReadsNoFileOfAnotherAlgorithmOrOneThatIsCutShort) {
  for (const Layout &layout : layouts) {
    for (const Layout &other : layouts) {
      params.set_algorithm(other.algorithm);
      EXPECT_EQ(reads(layout.text), &layout == &other);
    }
    params.set_algorithm(layout.algorithm);
    const std::size_t last = layout.text.find_last_not_of("\t\n");
    // A cut inside the last number leaves another number.
    const std::size_t start = layout.text.find_last_of('\t', last) + 1;
    for (std::size_t size = 0; size <= start; ++size) {
      EXPECT_FALSE(reads(layout.text.substr(0, size))) << size;
    }
    EXPECT_TRUE(reads(layout.text.substr(0, last + 1)));
  }
}

TEST(ClassProfile, ReadsNoDamagedFile) {
  const auto winnow = Algorithm::winnow;
  const auto rocchio = Algorithm::rocchio;
  const auto sbc = Algorithm::sbc;
  const struct {
    Algorithm algorithm;
    std::string text;
    bool readable = false;
  } cases[] = {
      {sbc, " 1 \r\n 7 1e0 \v 5 6 7 \n\n", true},
      {sbc, "1\t0\t1\n5\t6\t7\t\n9\t1\t2\t\n"},
      {sbc, std::string("1\t0\t1\n5\t6\t7\t\n\0", 14)},
      {sbc, "2\t0\t1\n5\t6\t7\t\n5\t6\t7\t\n"},
      {sbc, "4294967295\t0\t1\n5\t6\t7\t\n"},
      {sbc, "0\t4294967296\t1\n"},
      {sbc, "0\t0\tnan\n"},
      {sbc, "0\t0\t1e309\n"},
      {sbc, "1\t0\t1\n4294967295\t4294967295\t4294967295\n", true},
      {sbc, "1\t0\t1\n5\t4294967296\t7\t\n"},
      {winnow, "1\t0\t1\n5\t6\t7\t2147483647\t-2147483648\n", true},
      {winnow, "1\t0\t1\n5\t6\t7\t2147483648\t0\n"},
      {winnow, "1\t0\t1\n5\t6\t7\t0\t-2147483649\n"},
      {rocchio, "1\t0\t1\n5\t6\t7\tinf\n"},
  };
  for (const auto &[algorithm, text, readable] : cases) {
    params.set_algorithm(algorithm);
    EXPECT_EQ(reads(text), readable) << text;
  }
}

TEST(ClassProfile, KeepsALargeTableAndTellsOfAFullDisk) {
  ClassProfile profile;
  profile.prepare(4294967295);
  for (std::uint32_t term = 20000; term-- > 0;)
    profile[term * 3].df = term;
  const std::string text = written(profile, 1);
  std::istringstream stream(text);
  ClassProfile again;
  std::uint32_t nr_terms = 0;
  ASSERT_TRUE(again.read(stream, nr_terms));
  EXPECT_TRUE(written(again, 1) == text);

  OutputFile full;
  full.open("/dev/full", OutputFile::Mode::truncate);
  EXPECT_FALSE(profile.write(full, 0));
}

}  // namespace
}  // namespace vek

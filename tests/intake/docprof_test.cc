#include "intake/docprof.h"

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "classes/termset.h"
#include "support/collection_fixture.h"

namespace vek {
namespace {

std::string stored(const DocProfile &profile) {
  std::string block;
  EXPECT_TRUE(profile.write(block));
  return block;
}

std::vector<double> weights(const DocProfile &profile) {
  std::vector<double> values;
  for (const DocProfileEntry &entry : profile)
    values.push_back(entry.weight);
  return values;
}

// A class of eight documents: term 1 in two of them, 2 in all, 3 in four, 4 in
// none.
class DocProfileWeights : public CollectionTest {
 protected:
  DocProfileWeights() {
    top().nr_docs = 8;
    top().profile[1].df = 2;
    top().profile[2].df = 8;
    top().profile[3].df = 4;
    top().profile[4].tf = 1;
  }
};

TEST(DocProfile, StoresCountAndPairs) {
  const DocProfile profile = make_profile({{0x01020304, 1}, {7, 300}});
  EXPECT_EQ(hexadecimal(stored(profile)),
            "02 00 00 00 04 03 02 01 01 00 00 00 07 00 00 00 2C 01 00 00");
  EXPECT_EQ(hexadecimal(stored(DocProfile())), "00 00 00 00");
}

TEST(DocProfile, ReadsBackWhatWasStored) {
  const std::string block =
      stored(make_profile({{9, 0xFFFFFFFF}, {3, 5}, {0, 1}}));
  DocProfile profile;
  ASSERT_TRUE(profile.read(block.data(), unsigned(block.size())));
  EXPECT_EQ(stored(profile), block);
  EXPECT_EQ(weights(profile), std::vector<double>(3, 0.0));
  // The sum wraps.
  EXPECT_EQ(profile.total(), 5U);
}

// In memory of just that size, so that reading on would be noticed.
TEST(DocProfile, RefusesBlocksShorterThanTheirCount) {
  const std::string block = stored(make_profile({{9, 2}, {3, 5}}));
  for (unsigned size = 4; size < block.size(); ++size) {
    const std::vector<char> cut(block.begin(), block.begin() + size);
    EXPECT_FALSE(DocProfile().read(cut.data(), size)) << size;
  }
  const std::vector<char> lie{'\xFF', '\xFF', '\xFF', '\xFF', 0, 0, 0, 0};
  EXPECT_FALSE(DocProfile().read(lie.data(), 8));
  EXPECT_DEATH(DocProfile().read(nullptr, 4), "contents");
  EXPECT_DEATH(DocProfile().read(lie.data(), 3), "len >= sizeof\\(size_t\\)");
}

TEST_F(DocProfileWeights, AreStrengthTimesRarity) {
  const struct {
    Strength strength;
    std::uint32_t freq;
    double value;
  } cases[] = {
      {Strength::freq, 3, 3.0},
      {Strength::boolean, 3, 1.0},
      {Strength::sqrt, 3, std::sqrt(3.0)},
      {Strength::ltc, 1, 1.0},
      {Strength::ltc, 3, std::log(3.0) + 1.0},
      // Only a stored block can say so.
      {Strength::freq, 0, 0.0},
      {Strength::boolean, 0, 0.0},
      {Strength::ltc, 0, 0.0},
  };
  for (const auto &one : cases) {
    params.set_strength(one.strength);
    const std::uint32_t f = one.freq;
    DocProfile doc = make_profile({{3, f}, {9, f}, {1, f}, {4, f}, {2, f}});
    doc.weigh(0);
    EXPECT_EQ(weights(doc),
              (std::vector<double>{std::log(8.0 / 4) * one.value, 0.0,
                                   std::log(8.0 / 2) * one.value, 0.0, 0.0}));
  }
}

TEST_F(DocProfileWeights, AreNormalisedInTheirOrder) {
  const double first = std::log(8.0 / 4) * 3.0;
  const double second = std::log(8.0 / 2) * 5.0;
  const std::vector<TermCount> terms = {{3, 3}, {2, 1}, {1, 5}};
  DocProfile doc = make_profile(terms);
  params.set_normalize(Normalize::linear);
  doc.weigh(0);
  EXPECT_EQ(weights(doc), (std::vector<double>{first / (first + second), 0.0,
                                               second / (first + second)}));
  params.set_normalize(Normalize::vector);
  doc.weigh(0);
  const double length = std::sqrt(first * first + second * second);
  EXPECT_EQ(weights(doc),
            (std::vector<double>{first / length, 0.0, second / length}));
}

TEST_F(DocProfileWeights, AreZeroWhereThereIsNothingToDivideBy) {
  for (const Normalize normalize : {Normalize::linear, Normalize::vector}) {
    params.set_normalize(normalize);
    DocProfile doc = make_profile({{2, 3}, {9, 1}});
    doc.weigh(0);
    EXPECT_EQ(weights(doc), std::vector<double>(2, 0.0));
    DocProfile().weigh(0);
  }
  params.set_normalize(Normalize::off);
  top().nr_docs = 0;
  DocProfile doc = make_profile({{1, 3}});
  doc.weigh(0);
  EXPECT_EQ(weights(doc), std::vector<double>{0.0});
}

TEST(DocProfile, RoundsSharesToThousandthsWithTheHalfDown) {
  const struct {
    std::uint32_t freq, others, share;
  } cases[] = {{1, 2, 333},
               {2, 1, 667},
               {1, 1999, 0},
               {1, 1998, 1},
               {3, 13, 187},
               {5, 11, 312},
               {1, 0, 1000},
               {0, 0, 0},
               // The total wraps to 1 and the share with it: 4294967295000.
               {0xFFFFFFFF, 2, 0xFFFFFC18}};
  for (const auto &one : cases) {
    ClassData data;
    make_profile({{1, one.freq}, {2, one.others}}).update_statistics(data);
    EXPECT_EQ(data.term_stats[1].sum, one.share);
    EXPECT_EQ(data.term_stats[1].sum_of_squares, one.share * one.share);
  }
}

TEST(DocProfile, AddsItselfToTheStatisticsOfAClass) {
  ClassData data;
  make_profile({{5, 3}, {7, 1}}).update_statistics(data);
  make_profile({{5, 1}}).update_statistics(data);
  EXPECT_EQ(data.term_stats[5].tf, 4U);
  EXPECT_EQ(data.term_stats[5].df, 2U);
  EXPECT_EQ(data.term_stats[5].sum, 1750U);
  EXPECT_EQ(data.term_stats[5].sum_of_squares, 1562500U);
  EXPECT_EQ(data.nr_terms, 5U);
}

TEST_F(DocProfileWeights, SurviveTheSelectionOfTerms) {
  DocProfile doc = make_profile({{3, 2}, {9, 4}, {1, 1}});
  doc.weigh(0);
  TermSet active;
  doc.select_active(active);
  EXPECT_EQ(doc.total(), 7U);
  active.insert(1);
  active.insert(9);
  doc.select_active(active);
  EXPECT_EQ(stored(doc), stored(make_profile({{9, 4}, {1, 1}})));
  EXPECT_EQ(weights(doc), (std::vector<double>{0.0, std::log(8.0 / 2)}));
  EXPECT_EQ(doc.total(), 5U);
  EXPECT_EQ(doc.drop_unknown(9), 1U);
  EXPECT_EQ(doc.total(), 1U);
}

}  // namespace
}  // namespace vek

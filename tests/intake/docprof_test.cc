#include "intake/docprof.h"

#include <cmath>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "support/collection_fixture.h"
#include "support/temporary_directory.h"

namespace vek {
namespace {

std::string stored(const DocProfile &profile) {
  std::string block;
  EXPECT_TRUE(profile.write(block));
  return block;
}

using Weights = std::vector<double>;

Weights weights(const DocProfile &profile) {
  Weights values;
  for (const DocProfileEntry &entry : profile)
    values.push_back(entry.weight);
  return values;
}

// A class of eight documents: term 1 in two of them, 2 in all, 3 in four, 4 in
// none.
class DocProfileWeights : public testing::Test {
 protected:
  DocProfileWeights() {
    data_.nr_docs = 8;
    data_.profile[1].df = 2;
    data_.profile[2].df = 8;
    data_.profile[3].df = 4;
    data_.profile[4].tf = 1;
  }

  Weights weighed(const std::vector<TermCount> &terms) const {
    DocProfile doc = make_profile(terms);
    doc.weigh(data_, params_);
    return weights(doc);
  }

  ClassData data_;
  Params params_;
};

TEST(DocProfile, IsStoredAsCountAndPairs) {
  EXPECT_EQ(
      hexadecimal(stored(make_profile({{0x01020304, 1}, {7, 0xFFFFFF00}}))),
      "02 00 00 00 04 03 02 01 01 00 00 00 07 00 00 00 00 FF FF FF");
  const std::string block = stored(make_profile({{9, 0xFFFFFFFF}, {3, 5}}));
  DocProfile profile;
  ASSERT_TRUE(profile.read(block.data(), unsigned(block.size())));
  EXPECT_EQ(stored(profile), block);
  // The sum wraps.
  EXPECT_EQ(profile.total(), 4U);
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
  } cases[] = {{Strength::freq, 3, 3.0},
               {Strength::boolean, 3, 1.0},
               {Strength::sqrt, 3, std::sqrt(3.0)},
               {Strength::ltc, 1, 1.0},
               {Strength::ltc, 3, std::log(3.0) + 1.0},
               // Only a stored block can say so.
               {Strength::freq, 0, 0.0},
               {Strength::boolean, 0, 0.0},
               {Strength::ltc, 0, 0.0}};
  for (const auto &[strength, f, value] : cases) {
    params_.strength = strength;
    EXPECT_EQ(weighed({{3, f}, {9, f}, {1, f}, {4, f}, {2, f}}),
              (Weights{std::log(8.0 / 4) * value, 0.0,
                       std::log(8.0 / 2) * value, 0.0, 0.0}))
        << static_cast<int>(strength) << " of " << f;
  }
  data_.nr_docs = 0;
  EXPECT_EQ(weighed({{1, 3}}), Weights{0.0});
  // Nothing is kept of another number of documents.
  data_.nr_docs = 16;
  params_.strength = Strength::freq;
  EXPECT_EQ(weighed({{1, 1}}), Weights{std::log(16.0 / 2)});
}

TEST_F(DocProfileWeights, AreNormalisedWhereThereIsSomethingToDivideBy) {
  const double first = std::log(8.0 / 4) * 3.0;
  const double second = std::log(8.0 / 2) * 5.0;
  const std::pair<Normalize, double> cases[] = {
      {Normalize::linear, first + second},
      {Normalize::vector, std::sqrt(first * first + second * second)}};
  for (const auto &[normalize, divisor] : cases) {
    params_.normalize = normalize;
    EXPECT_EQ(weighed({{3, 3}, {2, 1}, {1, 5}}),
              (Weights{first / divisor, 0.0, second / divisor}));
    EXPECT_EQ(weighed({{2, 3}, {9, 1}}), (Weights{0.0, 0.0}));
    EXPECT_EQ(weighed({}), Weights{});
  }
}

TEST(DocProfile, AddsItsSharesInThousandthsRoundedWithTheHalfDown) {
  const struct {
    std::uint32_t freq, others, share;
  } cases[] = {{2, 1, 667},
               {1, 1999, 0},
               {1, 1998, 1},
               {5, 11, 312},
               {0, 0, 0},
               // The total wraps to 1 and the share with it: 4294967295000.
               {0xFFFFFFFF, 2, 0xFFFFFC18}};
  for (const auto &one : cases) {
    TermStatsCollector statistics(3);
    make_profile({{1, one.freq}, {2, one.others}})
        .update_statistics(statistics);
    EXPECT_EQ(statistics[1].sum, one.share);
    EXPECT_EQ(statistics[1].sum_of_squares, one.share * one.share);
  }
}

TEST_F(DocProfileWeights, SurviveTheSelectionOfTerms) {
  DocProfile doc = make_profile({{3, 2}, {9, 4}, {1, 1}});
  doc.weigh(data_, params_);
  TermSet active;
  doc.select_active(active);
  EXPECT_EQ(doc.total(), 7U);
  active.insert(1);
  active.insert(9);
  doc.select_active(active);
  EXPECT_EQ(stored(doc), stored(make_profile({{9, 4}, {1, 1}})));
  EXPECT_EQ(weights(doc), (Weights{0.0, std::log(8.0 / 2)}));
  EXPECT_EQ(doc.total(), 5U);
  EXPECT_EQ(doc.drop_unknown(9), 1U);
  EXPECT_EQ(doc.total(), 1U);
}

}  // namespace
}  // namespace vek

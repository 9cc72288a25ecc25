#include "learning/sbc.h"

#include "support/collection_fixture.h"

namespace vek {
namespace {

using Sbc = CollectionTest;

TEST_F(Sbc, WeighsByRelativeFrequencyWithOneAdded) {
  ClassData &son = at("a");
  const auto weight = [&](std::uint32_t tf, std::uint32_t total) {
    son.profile[1].tf = tf;
    son.nr_terms = total;
    sbc_set_weights(top());
    return son.profile.find(1)->pos_weight;
  };
  EXPECT_EQ(weight(4, 500), 0.01);
  EXPECT_EQ(weight(0xFFFFFFFE, 0xFFFFFFFF), 1.0);
  // The sum is unsigned, and wraps.
  EXPECT_EQ(weight(0xFFFFFFFF, 7), 0.0);
  // Statistics that count nothing at all.
  EXPECT_EQ(weight(4, 0), 0.0);
}

TEST_F(Sbc, TrainsFathersWithDocumentsAndNothingElse) {
  train("d1", {{1, 1}, {2, 3}}, {"a"});
  at("b/x").nr_terms = 2;
  gather();
  at("b/x").profile[1].tf = 1;
  train_sbc(training());
  EXPECT_EQ(at("a").profile.find(2)->pos_weight, 1.0);
  EXPECT_EQ(at("b/x").profile.find(1)->pos_weight, 0.0);
  // From statistics alone, all classes have weights.
  restore_sbc_weights(classes);
  EXPECT_EQ(at("b/x").profile.find(1)->pos_weight, 1.0);
}

}  // namespace
}  // namespace vek

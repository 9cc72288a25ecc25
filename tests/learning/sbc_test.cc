#include "learning/sbc.h"

#include <cstdint>

#include "support/collection_fixture.h"

namespace vek {
namespace {

class Sbc : public CollectionTest {
 protected:
  Sbc() { params.set_algorithm(Algorithm::sbc); }
};

TEST_F(Sbc, WeighsByRelativeFrequencyWithOneAdded) {
  const struct {
    std::uint32_t tf, nr_terms;
    double weight;
  } cases[] = {
      {4, 500, 0.01},
      {0, 3, 1.0 / 3.0},
      {9, 3, 10.0 / 3.0},
      {0xFFFFFFFE, 0xFFFFFFFF, 1.0},
      // The sum is unsigned, and wraps.
      {0xFFFFFFFF, 7, 0.0},
      // Statistics that count nothing at all.
      {4, 0, 0.0},
  };
  ClassData &son = at("a");
  for (const bool laplace : {true, false}) {
    params.sbc().set_laplace(laplace);
    for (const auto &one : cases) {
      son.profile[1].tf = one.tf;
      son.nr_terms = one.nr_terms;
      sbc_set_weights(top());
      EXPECT_EQ(son.profile.find(1)->pos_weight, one.weight);
    }
  }
}

TEST_F(Sbc, TrainsFathersWithDocumentsAndNothingElse) {
  store("d1", {{1, 1}, {2, 3}});
  train("d1", at("a"));
  at("b/x").nr_terms = 2;
  gather();
  at("b/x").profile[1].tf = 1;
  train_sbc();
  EXPECT_EQ(at("a").profile.find(2)->pos_weight, 1.0);
  EXPECT_EQ(at("b/x").profile.find(1)->pos_weight, 0.0);
  // From statistics alone, all classes have weights.
  restore_sbc_weights();
  EXPECT_EQ(at("b/x").profile.find(1)->pos_weight, 1.0);
}

}  // namespace
}  // namespace vek

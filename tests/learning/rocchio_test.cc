#include "learning/rocchio.h"

#include <cmath>
#include <string>

#include "support/collection_fixture.h"

namespace vek {
namespace {

class Rocchio : public CollectionTest {
 protected:
  Rocchio() { params.set_algorithm(Algorithm::rocchio); }
};

TEST_F(Rocchio, SetsTheWeightsFromTheSums) {
  const struct {
    double in_son, in_father;
    std::uint32_t nr_docs, nr_others;
    bool negative_weights;
    double weight;
  } cases[] = {
      {3.0, 5.0, 10, 40, false, 16.0 * 3.0 / 10 - 4.0 * 2.0 / 40},
      {0.1, 9.0, 10, 40, false, 0.0},
      {0.1, 9.0, 10, 40, true, 16.0 * 0.1 / 10 - 4.0 * (9.0 - 0.1) / 40},
      // All of the father's documents.
      {3.0, 3.0, 10, 0, false, 16.0 * 3.0 / 10},
      // No documents in this run: nothing to divide by.
      {0.0, 3.0, 0, 10, true, 0.0},
  };
  ClassData &son = at("a");
  for (const auto &one : cases) {
    params.rocchio().set_negative_weights(one.negative_weights);
    son.nr_docs = one.nr_docs;
    son.nr_others = one.nr_others;
    son.profile[1].weight = one.in_son;
    top().profile[1].weight = one.in_father;
    rocchio_set_weights(top());
    EXPECT_EQ(son.profile.find(1)->pos_weight, one.weight);
  }
  // What the father lacks has no weight.
  son.profile[2].pos_weight = 7.0;
  rocchio_set_weights(top());
  EXPECT_EQ(son.profile.find(2)->pos_weight, 0.0);
}

TEST_F(Rocchio, MultipliesFirstAndDividesThen) {
  params.rocchio().set_beta(0.7);
  params.rocchio().set_gamma(0.1);
  ClassData &son = at("a");
  son.nr_docs = 3;
  son.nr_others = 7;
  for (int i = 1; i < 20; ++i) {
    const double in_son = i;
    const double in_father = i + i / 9.0;
    son.profile[1].weight = in_son;
    top().profile[1].weight = in_father;
    rocchio_set_weights(top());
    EXPECT_EQ(son.profile.find(1)->pos_weight,
              (0.7 * in_son) / 3 - (0.1 * (in_father - in_son)) / 7);
  }
}

// Two of three documents in "a", one of them in "b" too; strengths against the
// top class.
TEST_F(Rocchio, TrainsAndSetsThresholds) {
  store("d1", {{1, 1}, {2, 2}});
  store("d2", {{1, 4}});
  store("d3", {{3, 1}});
  train("d1", at("a"));
  train("d2", at("a"));
  train("d2", at("b"));
  train("d3", at("b"));
  gather();
  train_rocchio();
  const double in_d1 = std::log(3.0 / 2) * 1.0;
  const double in_d2 = std::log(3.0 / 2) * 4.0;
  const double sum = in_d1 + in_d2;
  EXPECT_EQ(at("a").profile.find(1)->weight, sum);
  EXPECT_EQ(at("a").profile.find(1)->pos_weight, 16.0 * sum / 2);
  EXPECT_EQ(at("b").profile.find(1)->pos_weight,
            16.0 * in_d2 / 2 - 4.0 * (sum - in_d2) / 1);
  EXPECT_EQ(at("b").profile.find(2), nullptr);
  EXPECT_EQ(top().weight_sum, 0.0);
  EXPECT_TRUE(data_base.cache().empty());
  scores.close();
  EXPECT_EQ(read_text("scores.dat"),
            "a + 26.3043 45.1984 \na - 0 \n"
            "b + 9.65559 18.413 \nb - 4.60325 \n");
  EXPECT_EQ(log_lines("Class"),
            "Class a threshhold 22.599222\n"
            "Class b threshhold 6.904882\n");
}

}  // namespace
}  // namespace vek

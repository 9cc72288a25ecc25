#include "learning/rocchio.h"

#include <cmath>

#include "learning/classifiers.h"
#include "support/collection_fixture.h"

namespace vek {
namespace {

using Rocchio = CollectionTest;

TEST_F(Rocchio, SetsTheWeightsFromTheSums) {
  const RocchioParams all_weights = {false, 16.0, 4.0, true};
  const RocchioParams fractions = {false, 0.7, 0.1, false};
  const struct {
    RocchioParams rocchio;
    double in_son, in_father;
    std::uint32_t nr_docs, nr_others;
    double weight;
  } cases[] = {
      {{}, 3.0, 5.0, 10, 40, 16.0 * 3.0 / 10 - 4.0 * 2.0 / 40},
      {{}, 0.1, 9.0, 10, 40, 0.0},
      {all_weights, 1.0, 9.0, 10, 4, 16.0 / 10 - 4.0 * 8.0 / 4},
      // All of the father's documents.
      {{}, 3.0, 3.0, 10, 0, 16.0 * 3.0 / 10},
      // No documents in this run: nothing to divide by.
      {all_weights, 0.0, 3.0, 0, 10, 0.0},
      // Another order of multiplying and dividing ends in other bits.
      {fractions, 5.0, 5.6, 3, 7, 0.7 * 5.0 / 3 - 0.1 * (5.6 - 5.0) / 7},
  };
  ClassData &son = at("a");
  // What the father lacks has no weight.
  son.profile[2].pos_weight = 7.0;
  for (const auto &one : cases) {
    params.rocchio = one.rocchio;
    son.nr_docs = one.nr_docs;
    son.nr_others = one.nr_others;
    son.profile[1].weight = one.in_son;
    top().profile[1].weight = one.in_father;
    rocchio_set_weights(params, top());
    EXPECT_EQ(son.profile.find(1)->pos_weight, one.weight);
    EXPECT_EQ(son.profile.find(2)->pos_weight, 0.0);
  }
}

// Two of three documents in "a", one of them in "b" too; strengths against the
// top class.
TEST_F(Rocchio, TrainsAllFathers) {
  train("d1", {{1, 1}, {2, 2}}, {"a"});
  train("d2", {{1, 4}}, {"a", "b"});
  train("d3", {{3, 1}}, {"b"});
  gather();
  train_classes(training(), classifier_of(Algorithm::rocchio));
  const double in_d1 = std::log(3.0 / 2);
  const double in_d2 = in_d1 * 4.0;
  const double sum = in_d1 + in_d2;
  EXPECT_EQ(at("a").profile.find(1)->weight, sum);
  EXPECT_EQ(at("a").profile.find(1)->pos_weight, 16.0 * sum / 2);
  EXPECT_EQ(at("b").profile.find(1)->pos_weight,
            16.0 * in_d2 / 2 - 4.0 * (sum - in_d2) / 1);
  EXPECT_TRUE(documents.cache().empty());
  // The thresholds are set, too.
  EXPECT_EQ(messages.lines("Class"),
            "Class a threshhold 22.599222\n"
            "Class b threshhold 6.904882\n");
}

// Classes are trained in the order of their names, and "a" comes before "top".
TEST(RocchioByThePath, TakesNothingFromAnotherFather) {
  const auto weights = [](const std::string &group, WalkKind walk) {
    struct Collection : SmallCollection {
    } collection;
    collection.params.walk = walk;
    collection.train("d1", {{1, 1}, {2, 2}}, {group + "/x"});
    collection.train("d2", {{1, 4}, {3, 1}}, {group + "/y"});
    collection.train("d3", {{1, 1}, {3, 2}, {4, 1}}, {"other"});
    collection.gather();
    train_for_judging(collection.training(), classifier_of(Algorithm::rocchio));
    std::string text;
    for (const std::string &path : {group, group + "/x", group + "/y"})
      for (const std::uint32_t term : {1U, 2U, 3U}) {
        const auto *entry_P = collection.at(path).profile.find(term);
        text += entry_P == nullptr ? "-" : exact(entry_P->pos_weight);
      }
    return text;
  };
  EXPECT_EQ(weights("a", WalkKind::path), weights("z", WalkKind::path));
  EXPECT_NE(weights("a", WalkKind::steps), weights("z", WalkKind::steps));
}

}  // namespace
}  // namespace vek

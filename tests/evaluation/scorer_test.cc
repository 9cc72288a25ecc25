#include "evaluation/scorer.h"

#include <string>
#include <vector>

#include "support/collection_fixture.h"

namespace vek {
namespace {

TEST(Score, IsScaledByAThresholdThatCanScale) {
  Params params;
  EXPECT_EQ(scaled_score(params, -3.0, 2.0), -1.5);
  EXPECT_EQ(scaled_score(params, 3.0, 0.0), 4.0);
  EXPECT_EQ(scaled_score(params, 0.0, 0.0), 1.0);
  EXPECT_EQ(scaled_score(params, -1.0, -2.0), 2.0);
  params.scaling = false;
  EXPECT_EQ(scaled_score(params, -3.0, 2.0), -3.0);
}

TEST(Score, IsAProductWithAFactorForUnknownTerms) {
  ClassProfile profile;
  profile[1].pos_weight = 3.0;
  profile[2].pos_weight = 5.0;
  const DocProfile doc = make_profile({{9, 1}, {2, 3}, {1, 4}});
  const Scoring product = {Scoring::Kind::product, pos_weight_sum.weight};
  EXPECT_EQ(score_document(product, {}, profile, doc), 0.01 * 5.0 * 3.0);
}

// Classes that know some of twenty terms, one of them none; few classes and
// many, so that rows of the index are full, and are not. Terms of the document
// in no order, some unknown to all classes, one twice now and then.
TEST(ClassScorer, AgreesWithScoringOneByOneToTheLastBit) {
  Dice dice(1);
  for (int round = 0; round < 300; ++round) {
    SmallCollection collection;
    for (std::uint32_t i = 0, n = 1 + dice(90); i < n; ++i) {
      ClassData &data = collection.at("c" + std::to_string(i));
      for (std::uint32_t k = i == 3 ? 0 : 1 + dice(6); k-- > 0;)
        data.profile[dice(20)].pos_weight = dice(1000) / 7.0 - 30.0;
    }
    for (std::uint32_t term = 0; term < 20; ++term)
      collection.top().profile[term].df = 1 + dice(9);
    collection.top().nr_docs = 10;
    DocProfile doc;
    for (std::uint32_t k = dice(15); k-- > 0;)
      doc.add_term(dice(24), 1 + dice(5));
    doc.weigh(collection.top(), collection.params);
    for (const auto kind : {Scoring::Kind::sum, Scoring::Kind::product}) {
      const Scoring scoring = {kind, pos_weight_sum.weight};
      const std::vector<ClassData *> &sons = collection.top().sons;
      std::vector<WeightType> expected, values{-1.0};
      for (const ClassData *son_P : sons) {
        expected.push_back(
            score_document(scoring, collection.params, son_P->profile, doc));
      }
      ClassScorer(sons, scoring, collection.params).score(doc, values);
      EXPECT_EQ(values, expected) << "round " << round;
    }
  }
}

}  // namespace
}  // namespace vek

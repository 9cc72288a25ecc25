#include "evaluation/scorer.h"

#include <string>
#include <vector>

#include "evaluation/testing.h"
#include "support/collection_fixture.h"
#include "support/plain_winnow.h"

namespace vek {
namespace {

class Scorer : public CollectionTest {
 protected:
  // Classes that know some of twenty terms, one of them none.
  std::vector<ClassData *> make_classes(Dice &dice) {
    new_classes();
    std::vector<ClassData *> classes;
    for (std::uint32_t i = 0, n = 1 + dice(90); i < n; ++i) {
      ClassData &data = at("c" + std::to_string(i));
      for (std::uint32_t k = i == 3 ? 0 : 1 + dice(6); k-- > 0;) {
        ClassProfileEntry &entry = data.profile[dice(20)];
        entry.pos_weight = dice(1000) / 7.0 - 30.0;
        entry.neg_weight = dice(1000) / 9.0;
      }
      classes.push_back(&data);
    }
    for (std::uint32_t term = 0; term < 20; ++term) {
      top().profile[term].df = 1 + dice(9);
    }
    top().nr_docs = 10;
    return classes;
  }

  // Terms in no order, some unknown to all classes, one twice now and then.
  static DocProfile make_document(Dice &dice) {
    DocProfile doc;
    for (std::uint32_t k = dice(15); k-- > 0;) {
      doc.add_term(dice(24), 1 + dice(5));
    }
    doc.weigh(0);
    return doc;
  }

  static std::string scores_of(const DocProfile &doc,
                               const std::vector<ClassData *> &classes) {
    std::vector<WeightType> values{-1.0};
    ClassScorer(classes).score(doc, values);
    std::string text;
    for (const WeightType value : values)
      text += exact(value) + ' ';
    return text;
  }
};

TEST_F(Scorer, AgreesWithThePlainScoreToTheLastBit) {
  Dice dice(1);
  for (int round = 0; round < 300; ++round) {
    params.set_algorithm(static_cast<Algorithm>(round % 3));
    params.winnow().set_negative_weights(dice(2) == 0);
    const std::vector<ClassData *> classes = make_classes(dice);
    const DocProfile doc = make_document(dice);
    std::string expected;
    std::string one_by_one;
    for (const ClassData *data_P : classes) {
      expected +=
          exact(PlainWinnow::score_document(data_P->profile, doc)) + ' ';
      one_by_one += exact(score_document(data_P->profile, doc)) + ' ';
    }
    EXPECT_EQ(one_by_one, expected) << "round " << round;
    EXPECT_EQ(scores_of(doc, classes), expected) << "round " << round;
  }
}

}  // namespace
}  // namespace vek

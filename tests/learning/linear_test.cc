#include "learning/linear.h"

#include <cmath>
#include <cstdlib>

#include "learning/classifiers.h"
#include "support/collection_fixture.h"

namespace vek {
namespace {

class Linear : public CollectionTest {
 protected:
  // With the weights that the document has.
  double score(const std::string &doc, const std::string &path) {
    return score_document(linear_scoring, params, at(path).profile,
                          *documents.get(doc));
  }
};

// Each class has one document with a term of its own. With that term's weight v
// in w = v / ln(2), the document of "a" is v + b from the plane and the other
// b, and 1/2 (v^2 + b^2) + cost * (loss(v + b) + loss(-b)) is smallest where
// its derivatives are 0, or at a corner of the hinge.
TEST_F(Linear, FindsTheSolutionsOfSmallProblems) {
  train("d1", {{1, 1}}, {"a"});
  train("d2", {{2, 1}}, {"b"});
  gather();
  const struct {
    LinearParams settings;
    double v, b;
  } cases[] = {
      {{2.0, LinearLoss::hinge}, 1.5, -0.5},
      {{1.0, LinearLoss::hinge}, 1.0, 0.0},
      {{1.0, LinearLoss::squared}, 10.0 / 11, -4.0 / 11},
      // v = s(-v - b) and b = v - s(b), with s(x) = 1 / (1 + exp(-x))
      {{1.0, LinearLoss::logistic}, 0.41438, -0.06850},
      {{0.0, LinearLoss::squared}, 0.0, -1.0},
  };
  for (const auto &[settings, v, b] : cases) {
    params.linear = settings;
    train_linear_class(training(), top());
    const ClassProfile &profile = at("a").profile;
    EXPECT_NEAR(profile.find(1)->pos_weight, v / std::log(2.0), 0.05);
    EXPECT_NEAR(profile.bias() - profile.threshold(), b, 0.05);
    // All documents are on or above the margin of the others.
    EXPECT_NEAR(profile.bias(), 0.0, 1e-6);
    EXPECT_EQ(profile.find(2), nullptr);
  }
}

TEST_F(Linear, ToldApartWhateverTheScaleAndTheNumberOfClasses) {
  train("d1", {{1, 3}, {4, 1}}, {"a"});
  train("d2", {{1, 1}, {2, 2}}, {"a", "b"});
  train("d3", {{2, 1}, {5, 1}}, {"b"});
  train("d4", {{3, 1}, {4, 1}, {5, 1}}, {"c/only"});
  train("d5", {}, {"c"});
  at("empty");
  gather();
  params.linear.cost = 100.0;
  for (const Strength strength : {Strength::freq, Strength::ltc}) {
    params.strength = strength;
    train_linear_class(training(), top());
    std::string members;
    for (const std::string doc : {"d1", "d2", "d3", "d4"}) {
      for (const std::string path : {"a", "b", "c", "empty"}) {
        if (score(doc, path) > at(path).profile.threshold())
          members += doc + path + ' ';
      }
    }
    EXPECT_EQ(members, "d1a d2a d2b d3b d4c ");
    EXPECT_EQ(score("d1", "empty"), 0.0);
  }
}

// With nothing to be told from, a class scores its own documents 1 on average.
TEST_F(Linear, AnOnlySonHasTheMeanOfItsDocuments) {
  train("d1", {{1, 1}}, {"a"});
  train("d2", {{1, 1}, {2, 3}}, {"a"});
  train("d3", {{3, 1}}, {"a"});
  gather();
  train_linear_class(training(), top());
  EXPECT_NEAR(score("d1", "a") + score("d2", "a") + score("d3", "a"), 3.0,
              1e-6);
  EXPECT_GT(score("d2", "a"), score("d1", "a"));
}

// The library shuffles by rand(), which others may have used.
TEST_F(Linear, RepeatsToTheBit) {
  Dice dice(7);
  for (int doc = 0; doc < 40; ++doc) {
    const std::vector<TermCount> terms = {{dice(20), 1 + dice(3)},
                                          {20 + dice(20), 1}};
    train('d' + std::to_string(doc), terms, {std::string(1, "ab"[dice(2)])});
  }
  gather();
  std::string seen[2];
  for (std::string &text : seen) {
    text.clear();
    train_classes(training(), classifier_of(Algorithm::linear));
    for (const std::string path : {"a", "b"}) {
      text += exact(at(path).profile.bias());
      for (const auto &[term, entry] : at(path).profile)
        text += exact(entry.pos_weight);
    }
    std::rand();
  }
  EXPECT_EQ(seen[0], seen[1]);
  EXPECT_NE(messages.lines("Class"), "");
}

}  // namespace
}  // namespace vek

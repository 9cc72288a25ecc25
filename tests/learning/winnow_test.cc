#include "learning/winnow.h"

#include <cstdlib>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "learning/classifiers.h"
#include "support/collection_fixture.h"
#include "support/plain_winnow.h"

namespace vek {
namespace {

// Three levels; documents filed in leaves, in two classes, in fathers, in one
// class twice; one term in all of them. Odd seeds make many classes that share
// few terms, every fourth very many, even seeds few that share many.
void fill(SmallCollection &collection, unsigned seed) {
  Dice dice(seed);
  std::vector<std::string> paths = {"a", "b", "c", "a/x", "a/y", "c/only"};
  const unsigned nr_more = seed % 4 == 3 ? 71 : seed % 2 * 12;
  for (unsigned i = 0; i < nr_more; ++i)
    paths.push_back("s" + std::to_string(i));
  for (const std::string &path : paths)
    collection.at(path);
  const std::uint32_t nr_used = seed % 2 == 0 ? 20 : 60;
  const std::uint32_t nr_docs = 3 + dice(30);
  for (std::uint32_t i = 0; i < nr_docs; ++i) {
    std::vector<TermCount> terms;
    for (std::uint32_t term = nr_used; term-- > 1;) {
      if (dice(nr_used / 5) == 0)
        terms.push_back({term, 1 + dice(3)});
    }
    if (dice(8) != 0)
      terms.push_back({0, 1 + dice(2)});
    std::vector<std::string> filed;
    for (std::uint32_t k = 1 + dice(2); k-- > 0;)
      filed.push_back(paths[dice(std::uint32_t(paths.size()))]);
    collection.train(std::to_string(dice(1000)) + '-' + std::to_string(i),
                     terms, filed);
  }
  collection.gather();
}

// All that the passes leave behind, to the last bit.
std::string result(const SmallCollection &collection) {
  std::string text;
  for (const auto &[key, data] : collection.classes) {
    const ClassProfile &profile = data.profile;
    text += key.name + ' ' + exact(data.weight_sum) + ' ' +
            exact(profile.init_pos_weight()) + ' ' +
            exact(profile.init_neg_weight()) + '\n';
    for (const auto &[term, entry] : profile) {
      text += std::to_string(term) + ' ' + exact(entry.weight) + ' ' +
              exact(entry.pos_weight) + ' ' + exact(entry.neg_weight) + ' ' +
              std::to_string(entry.promotions) + ' ' +
              std::to_string(entry.demotions) + '\n';
    }
  }
  return text;
}

TEST(Winnow, TrainsAsThePlainTrainerToTheLastBit) {
  const struct {
    Strength strength;
    Normalize normalize;
    // The most passes, alpha, beta, theta_plus, theta_min, negative weights.
    WinnowParams winnow;
  } settings[] = {
      {Strength::freq, Normalize::off, {5, 1.1, 0.9, 1.0, 1.0, true}},
      {Strength::sqrt, Normalize::vector, {20, 1.1, 0.9, 1.5, 0.7, true}},
      {Strength::ltc, Normalize::linear, {5, 1.3, 0.8, 1.0, 1.0, false}},
      // Exact halves and doubles: many scores lie on the thetas.
      {Strength::boolean, Normalize::linear, {9, 2.0, 0.5, 1.0, 1.0, true}},
      {Strength::boolean, Normalize::linear, {9, 2.0, 0.5, 2.0, 2.0, false}},
      // All scores stay so near to the thetas that single precision does not
      // tell on which side.
      {Strength::sqrt,
       Normalize::linear,
       {9, 1 + 1e-9, 1 - 1e-9, 1.0, 1.0, true}},
      // Weights of 0, and thetas that every score meets.
      {Strength::freq, Normalize::vector, {4, 1.1, 0.0, 0.0, 0.0, true}},
      {Strength::ltc, Normalize::off, {2, 1.0, 1.0, 0.5, 3.0, false}},
      {Strength::freq, Normalize::off, {0, 1.1, 0.9, 1.0, 1.0, true}},
      // Weights without bounds: infinities and what is not a number.
      {Strength::freq, Normalize::off, {12, 1e100, 0.9, 1.0, 1.0, true}},
  };
  for (const auto &setting : settings) {
    for (unsigned seed = 1; seed <= 20; ++seed) {
      SmallCollection plain, trained;
      for (SmallCollection *one_P : {&plain, &trained}) {
        one_P->params.strength = setting.strength;
        one_P->params.normalize = setting.normalize;
        one_P->params.winnow = setting.winnow;
        fill(*one_P, seed);
      }
      srand48(seed);
      const std::string lines = PlainWinnow(plain).train();
      const Training training = trained.training();
      // What srand48() makes of the seed.
      training.random = {0x330E, static_cast<unsigned short>(seed), 0};
      train_classes(training, classifier_of(Algorithm::winnow));
      EXPECT_EQ(result(trained), result(plain)) << "seed " << seed;
      EXPECT_EQ(trained.messages.lines("iteration"), lines) << "seed " << seed;
    }
  }
}

using WinnowLimits = CollectionTest;

TEST_F(WinnowLimits, LetCountersWrap) {
  params.normalize = Normalize::linear;
  params.winnow.max_iters = 1;
  // "one" scores 1 in each class, on the thetas, but is a member of the first
  // alone.
  train("one", {{1, 1}}, {"a"});
  train("two", {{2, 1}}, {"b"});
  gather();
  at("b").profile[1].demotions = std::numeric_limits<std::int32_t>::max();
  EXPECT_EQ(train_winnow_class(training(), top()), 1U);
  EXPECT_EQ(at("b").profile.find(1)->demotions,
            std::numeric_limits<std::int32_t>::min());
}

TEST_F(WinnowLimits, StartWithoutAMeanToDivideBy) {
  ClassData &son = at("a");
  son.profile[7] = {};
  for (const auto &[nr_docs, weight_sum] : {std::pair(0U, 1.0), {4U, 0.0}}) {
    top().nr_docs = nr_docs;
    top().weight_sum = weight_sum;
    init_winnow_weights(params, son);
    EXPECT_EQ(son.profile.find(7)->pos_weight, 2.0 / 10000.0);
  }
}

}  // namespace
}  // namespace vek

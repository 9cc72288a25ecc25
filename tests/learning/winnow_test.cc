#include "learning/winnow.h"

#include <array>
#include <cstdlib>
#include <limits>
#include <string>
#include <vector>

#include "evaluation/scoretable.h"
#include "support/collection_fixture.h"
#include "support/plain_threshold.h"
#include "support/plain_winnow.h"

namespace vek {
namespace {

class Winnow : public CollectionTest {
 protected:
  // Three levels; documents filed in leaves, in two classes, in fathers, in
  // one class twice; one term in all of them. Odd seeds make many classes that
  // share few terms, every fourth very many, even seeds few that share many.
  void make_random_collection(unsigned seed) {
    Dice dice(seed);
    new_classes();
    std::vector<ClassData *> classes = {&at("a"),   &at("b"),   &at("c"),
                                        &at("a/x"), &at("a/y"), &at("c/only")};
    const unsigned nr_more = seed % 4 == 3 ? 71 : seed % 2 * 12;
    for (unsigned i = 0; i < nr_more; ++i) {
      classes.push_back(&at("s" + std::to_string(i)));
    }
    const std::uint32_t nr_used = seed % 2 == 0 ? 20 : 60;
    const std::uint32_t nr_docs = 3 + dice(30);
    for (std::uint32_t i = 0; i < nr_docs; ++i) {
      const std::string name =
          std::to_string(dice(1000)) + '-' + std::to_string(i);
      std::vector<TermCount> terms;
      for (std::uint32_t term = nr_used; term-- > 1;) {
        if (dice(nr_used / 5) == 0)
          terms.push_back({term, 1 + dice(3)});
      }
      if (dice(8) != 0)
        terms.push_back({0, 1 + dice(2)});
      store(name, terms);
      for (std::uint32_t k = 1 + dice(2); k-- > 0;) {
        train(name, *classes[dice(std::uint32_t(classes.size()))]);
      }
    }
    gather();
  }

  static void train_plainly(std::string &log) {
    for (auto &[key, data] : class_table) {
      if (data.sons.empty() || data.train_docs.empty())
        continue;
      log += PlainWinnow::train_winnow_class(data);
    }
    for (auto &[key, data] : class_table) {
      if (!data.sons.empty())
        continue;
      ScoreTable table;
      for (const auto &[name, profile] : data_base.cache()) {
        (data.train_docs.contains(name) ? table.pos : table.neg)
            .push_back(PlainWinnow::score_document(data.profile, *profile));
      }
      const auto threshold = PlainThreshold::threshold(table.pos, table.neg);
      if (threshold)
        data.profile.set_threshold(*threshold);
    }
  }

  // All that training leaves behind, to the last bit.
  static std::string result() {
    std::string text;
    for (auto &[key, data] : class_table) {
      const ClassProfile &profile = data.profile;
      text += key.name + ' ' + exact(data.weight_sum) + ' ' +
              exact(profile.threshold()) + ' ' +
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

  void expect_equal_training(unsigned seed) {
    make_random_collection(seed);
    srand48(seed);
    std::string plain_log;
    train_plainly(plain_log);
    const std::string plain_result = result();
    make_random_collection(seed);
    srand48(seed);
    renew(log_file);
    log_file.open("vek.log");
    train_winnow();
    EXPECT_EQ(result(), plain_result) << "seed " << seed;
    EXPECT_EQ(log_lines("iteration"), plain_log) << "seed " << seed;
  }

  // Two sons, each with one document of one term.
  void make_two_documents() {
    store("one", {{1, 1}});
    store("two", {{2, 1}});
    train("one", at("a"));
    train("two", at("b"));
    gather();
  }
};

TEST_F(Winnow, TrainsAsThePlainTrainerToTheLastBit) {
  const struct {
    Strength strength;
    Normalize normalize;
    bool negative_weights;
    double alpha, beta, theta_plus, theta_min;
    unsigned max_iters;
  } settings[] = {
      {Strength::freq, Normalize::off, true, 1.1, 0.9, 1.0, 1.0, 5},
      {Strength::sqrt, Normalize::vector, true, 1.1, 0.9, 1.5, 0.7, 20},
      {Strength::ltc, Normalize::linear, false, 1.3, 0.8, 1.0, 1.0, 5},
      // Exact halves and doubles: many scores lie on the thetas.
      {Strength::boolean, Normalize::linear, true, 2.0, 0.5, 1.0, 1.0, 9},
      {Strength::boolean, Normalize::linear, false, 2.0, 0.5, 2.0, 2.0, 9},
      // All scores stay so near to the thetas that single precision does not
      // tell on which side.
      {Strength::sqrt, Normalize::linear, true, 1 + 1e-9, 1 - 1e-9, 1.0, 1.0,
       9},
      // Weights of 0, and thetas that every score meets.
      {Strength::freq, Normalize::vector, true, 1.1, 0.0, 0.0, 0.0, 4},
      {Strength::ltc, Normalize::off, false, 1.0, 1.0, 0.5, 3.0, 2},
      {Strength::freq, Normalize::off, true, 1.1, 0.9, 1.0, 1.0, 0},
      // Weights without bounds: infinities and what is not a number.
      {Strength::freq, Normalize::off, true, 1e100, 0.9, 1.0, 1.0, 12},
  };
  for (const auto &setting : settings) {
    params.set_strength(setting.strength);
    params.set_normalize(setting.normalize);
    params.winnow().set_negative_weights(setting.negative_weights);
    params.winnow().set_alpha(setting.alpha);
    params.winnow().set_beta(setting.beta);
    params.winnow().set_theta_plus(setting.theta_plus);
    params.winnow().set_theta_min(setting.theta_min);
    params.winnow().set_max_iters(setting.max_iters);
    for (unsigned seed = 1; seed <= 20; ++seed)
      expect_equal_training(seed);
  }
}

// From the fixed state in which a program starts, to be repeated by each run.
TEST_F(Winnow, ShufflesWithTheUnseededGenerator) {
  std::array<unsigned short, 3> state{0, 0, 0};
  seed48(state.data());
  EXPECT_EQ(make_training_list(8),
            (std::vector<std::uint32_t>{1, 7, 2, 3, 5, 6, 0, 4}));
  EXPECT_EQ(make_training_list(0), (std::vector<std::uint32_t>{}));
}

TEST_F(Winnow, LetsCountersWrap) {
  params.set_normalize(Normalize::linear);
  params.winnow().set_max_iters(1);
  // "one" scores 1 in each class, on the thetas, but is a member of the first
  // alone.
  make_two_documents();
  at("b").profile[1].demotions = std::numeric_limits<std::int32_t>::max();
  EXPECT_EQ(train_winnow_class(top()), 1U);
  EXPECT_EQ(at("b").profile.find(1)->demotions,
            std::numeric_limits<std::int32_t>::min());
}

TEST_F(Winnow, StartsFromTheMeanWeightOfADocument) {
  const struct {
    std::uint32_t nr_docs;
    double weight_sum, neg;
  } cases[] = {
      {4, 10.0, 1.0 / 2.5},
      // No mean, and nothing to divide by.
      {0, 10.0, 1.0 / 10000.0},
      {4, 0.0, 1.0 / 10000.0},
  };
  ClassData &son = at("a");
  son.profile[7] = {};
  for (const auto &[nr_docs, weight_sum, neg] : cases) {
    top().nr_docs = nr_docs;
    top().weight_sum = weight_sum;
    init_winnow_weights(son);
    EXPECT_EQ(son.profile.find(7)->pos_weight, 2.0 * neg);
    EXPECT_EQ(son.profile.find(7)->neg_weight, neg);
  }
  EXPECT_DEATH(init_winnow_weights(top()), "data.father != 0");
}

TEST_F(Winnow, LogsThatANewDocumentHasNoClass) {
  make_two_documents();
  store("unknown", {{9, 1}});
  set_verbosity(4);
  params.set_min_ranks(0);
  screen([] {
    Ranks ranks;
    EXPECT_FALSE(classify_new_document("unknown", ranks));
  });
  EXPECT_EQ(log_lines("classified"),
            "classified document `unknown' in no class (not significant)\n");
}

}  // namespace
}  // namespace vek

#include "learning/heldout.h"

#include <pthread.h>

#include <new>
#include <string>
#include <thread>
#include <vector>

#include "evaluation/scorer.h"
#include "learning/calibrate.h"
#include "support/collection_fixture.h"

namespace vek {
namespace {

// Forty documents of two leaves below one class, and of a third leaf.
void fill(SmallCollection &collection, std::uint32_t left_out_part = 99,
          const std::vector<std::uint32_t> &parts = {}) {
  Dice dice(5);
  for (std::uint32_t doc = 0; doc < 40; ++doc) {
    const std::uint32_t own = dice(3);
    std::string name = "d" + std::to_string(10 + doc);
    const std::vector<TermCount> terms = {{own * 10 + dice(5), 1 + dice(3)},
                                          {30 + dice(6), 1}};
    const char *const paths[] = {"g/a", "g/b", "c"};
    // The class is there even if its documents are not.
    collection.at(paths[own]);
    if (parts.empty() || parts[doc] != left_out_part)
      collection.train(name, terms, {paths[own]});
    else
      collection.documents.put(name, terms);
  }
  collection.gather();
}

class HeldOut : public CollectionTest {
 protected:
  HeldOut() {
    params.strength = Strength::ltc;
    params.normalize = Normalize::vector;
    fill(*this);
  }
};

TEST_F(HeldOut, EachPartHasItsShareOfEachClass) {
  const TrainingSet set(classes, documents);
  ASSERT_EQ(set.documents().size(), 40U);
  const std::vector<std::uint32_t> parts = deal_to_parts(classes, set, 4);
  for (const char *path : {"g/a", "g/b", "c"}) {
    std::vector<std::size_t> counts(4);
    for (const auto &[name, sons] : at(path).train_docs)
      ++counts[parts[set.place_of(name)]];
    const auto [least, most] = std::ranges::minmax(counts);
    // Texts this short are all alike, and are dealt out nevertheless.
    EXPECT_LE(most, at(path).train_docs.size() / 4 * 3 / 2 + 1) << path;
    EXPECT_GE(least, 1U) << path;
  }
  EXPECT_EQ(parts, deal_to_parts(classes, set, 4));
}

TEST_F(HeldOut, IsScoredByClassesThatHaveNotLearntIt) {
  const TrainingSet set(classes, documents);
  const std::vector<std::uint32_t> parts = deal_to_parts(classes, set, 3);
  for (const Classifier &classifier : classifiers()) {
    const ScoreMatrix one = held_out_scores(classes, set, parts, 3, classifier,
                                            params, nr_terms, 1);
    EXPECT_EQ(one.scores, held_out_scores(classes, set, parts, 3, classifier,
                                          params, nr_terms, 3)
                              .scores);
    // By hand.
    SmallCollection others;
    others.params = params;
    fill(others, 1, parts);
    classifier.train(others.training());
    for (ClassData *father_P : {&others.top(), &others.at("g")}) {
      const ClassScorer scorer(father_P->sons, classifier.scoring, params);
      for (std::size_t i = 0; i < parts.size(); ++i) {
        if (parts[i] != 1)
          continue;
        DocProfile profile = set.documents()[i].profile;
        profile.weigh(*father_P, params);
        std::vector<WeightType> evidence;
        scorer.find_evidence(profile, evidence);
        for (std::size_t son = 0; son < evidence.size(); ++son) {
          EXPECT_EQ(one.row(i)[father_P->sons[son]->id], evidence[son])
              << classifier.name;
        }
      }
    }
  }
}

// The thread that asks does alone what the others have no memory for.
TEST_F(HeldOut, IsScoredWithoutMemoryForThreads) {
  const TrainingSet set(classes, documents);
  const std::vector<std::uint32_t> parts = deal_to_parts(classes, set, 3);
  Classifier classifier = classifier_of(Algorithm::rocchio);
  const auto scores_of = [&](unsigned nr_threads) {
    return held_out_scores(classes, set, parts, 3, classifier, params, nr_terms,
                           nr_threads)
        .scores;
  };
  const std::vector<WeightType> expected = scores_of(1);
  static const std::thread::id own_id = std::this_thread::get_id();
  classifier.train = [](const Training &training) {
    if (std::this_thread::get_id() != own_id)
      throw std::bad_alloc();
    classifier_of(Algorithm::rocchio).train(training);
  };
  EXPECT_EQ(scores_of(2), expected);
  pthread_attr_t usual;
  ASSERT_EQ(pthread_getattr_default_np(&usual), 0);
  pthread_attr_t huge = usual;
  ASSERT_EQ(pthread_attr_setstacksize(&huge, std::size_t{1} << 46), 0);
  ASSERT_EQ(pthread_setattr_default_np(&huge), 0);
  EXPECT_EQ(scores_of(2), expected);
  ASSERT_EQ(pthread_setattr_default_np(&usual), 0);
  pthread_attr_destroy(&usual);
}

TEST_F(HeldOut, TeachesThresholdsAndProbabilities) {
  const TrainingSet set(classes, documents);
  const Classifier &winnow = classifier_of(Algorithm::winnow);
  const ScoreMatrix matrix =
      held_out_scores(classes, set, deal_to_parts(classes, set, 5), 5, winnow,
                      params, nr_terms, 2);
  set_held_out_thresholds(classes, set, matrix, scores);
  for (const char *path : {"g/a", "g/b", "c"}) {
    EXPECT_GT(at(path).profile.threshold(), 0.0) << path;
    EXPECT_NE(at(path).profile.threshold(), 1.0) << path;
  }
  const Judging judging = learn_judging(classes, set, matrix, 5, params);
  params.walk = WalkKind::path;
  params.insignificant = Insignificant::best;
  const ConfusionMatrix counts =
      judge_held_out(classes, set, matrix, judging, params);
  // Each class has terms of its own: most documents are found.
  EXPECT_GE(counts.nr_correct(0), 32U);
  EXPECT_EQ(counts.nr_correct(0) + counts.nr_missed(0), 40U);
}

}  // namespace
}  // namespace vek

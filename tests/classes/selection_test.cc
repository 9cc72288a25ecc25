#include "classes/selection.h"

#include <cerrno>
#include <cmath>
#include <string>
#include <vector>

#include "support/collection_fixture.h"

namespace vek {
namespace {

constexpr std::uint32_t term = 70;

// A class with one term: N, T, the term's tf and df, S1 and S2; and V, with
// three classes in the table.
struct Facts {
  std::uint32_t nr_docs = 1, nr_terms = 1, tf = 1, df = 1;
  TermStats stats;
  std::size_t vocabulary_size = 1;
};

bool passes(TermSelection selection, double selectivity, const Facts &facts) {
  params.set_term_selection(selection);
  params.set_selectivity(selectivity);
  while (class_table.size() < 3) {
    class_table.enter(std::to_string(class_table.size()), 0);
  }
  ClassData data;
  data.nr_docs = facts.nr_docs;
  data.nr_terms = facts.nr_terms;
  // One half comes from earlier runs, the rest from this one.
  data.profile[term] = {facts.tf / 2, facts.df / 2, 0.0, 0.0, 0.0, 0, 0};
  TermStats &stats = data.term_stats[term] = facts.stats;
  stats.tf = facts.tf - facts.tf / 2;
  stats.df = facts.df - facts.df / 2;
  data.term_stats.settle();
  TermSet active;
  active.insert(3);
  select_terms(data, facts.vocabulary_size, active);
  EXPECT_TRUE(active.contains(3));
  return active.contains(term);
}

TEST(Selection, WithoutACriterionOrABoundTakesEveryTerm) {
  for (const auto selection : {TermSelection::none, TermSelection::uncertainty,
                               TermSelection::termfreq, TermSelection::docfreq,
                               TermSelection::tfidf, TermSelection::infogain}) {
    EXPECT_TRUE(passes(selection, 0.0, {1000, 1000, 0, 1, {0, 0}, 1}));
    EXPECT_EQ(passes(selection, 1e9, {1000, 1000, 1, 1, {0, 0}, 1}),
              selection == TermSelection::none);
  }
}

TEST(Selection, ComparesWithTheBoundOfItsCriterion) {
  const auto uncertainty = TermSelection::uncertainty;
  const auto termfreq = TermSelection::termfreq;
  const auto docfreq = TermSelection::docfreq;
  const auto tfidf = TermSelection::tfidf;
  const auto infogain = TermSelection::infogain;
  const double half_ln_6 = 0.8958797346140275;
  const struct {
    TermSelection selection;
    double selectivity;
    Facts facts;
    bool expected;
  } cases[] = {
      // 10 and 30: mean 20, standard deviation 10. The bound itself fails.
      {uncertainty, 2.0, {2, 1, 1, 1, {40, 1000}, 1}, false},
      {uncertainty, 1.99, {2, 1, 1, 1, {40, 1000}, 1}, true},
      // The same in every document: no deviation.
      {uncertainty, 1e9, {3, 1, 1, 1, {30, 300}, 1}, true},
      {uncertainty, 1e9, {3, 1, 1, 1, {0, 0}, 1}, false},
      // A negative variance, as sums that wrapped or were rounded can say.
      {uncertainty, 1e-300, {2, 1, 1, 1, {40, 799}, 1}, false},
      // From here on the bound itself passes.
      {termfreq, 0.5, {5, 20, 2, 9, {}, 1}, true},
      {termfreq, 0.5, {5, 20, 1, 9, {}, 1}, false},
      // s * T first: exactly 1, and a little over 3. T / N first: over 1,
      // and 3.
      {termfreq, 0.17, {17, 100, 1, 9, {}, 1}, true},
      {termfreq, 0.14, {7, 150, 3, 9, {}, 1}, false},
      {docfreq, 0.25, {100, 1, 99, 25, {}, 1}, true},
      {docfreq, 0.25, {100, 1, 99, 24, {}, 1}, false},
      {tfidf, 0.5, {4, 1, 6, 3, {}, 1}, true},
      {tfidf, 0.5, {4, 1, 5, 3, {}, 1}, false},
      {tfidf, 0.5, {5, 1, 6, 3, {}, 1}, false},
      // V * p * C is 6, 1 and 12 / 11.
      {infogain, half_ln_6, {1, 10, 5, 1, {}, 4}, true},
      {infogain, std::nextafter(half_ln_6, 1.0), {1, 10, 5, 1, {}, 4}, false},
      {infogain, 1e-300, {1, 12, 1, 1, {}, 4}, false},
      {infogain, 1e-300, {1, 11, 1, 1, {}, 4}, true},
  };
  for (const auto &one : cases) {
    errno = 0;
    EXPECT_EQ(passes(one.selection, one.selectivity, one.facts), one.expected)
        << &one - cases;
    EXPECT_EQ(errno, 0) << &one - cases;
  }
}

TEST(Selection, MultipliesInTheOrderOfTheFormula) {
  for (const char *name : {"0", "1", "2", "3", "4"})
    class_table.enter(name, 0);
  // V * p, then C: 0.4 * ln(3 * 0.4 * 5). Any other order is a bit smaller.
  EXPECT_TRUE(
      passes(TermSelection::infogain, 0.7167037876912221, {1, 5, 2, 1, {}, 3}));
}

// Three documents over five terms:
//   a: d1 = 0 0 1, d2 = 0 2 2 2 3 3 3 3;  b: d3 = 2 2 2 2 2
class Collection : public CollectionTest {
 protected:
  Collection() {
    store("d1", {{0, 2}, {1, 1}});
    store("d2", {{0, 1}, {2, 3}, {3, 4}});
    store("d3", {{2, 5}});
    train("d1", at("a"));
    train("d2", at("a"));
    train("d3", at("b"));
    at("empty");
    class_table.gather_documents();
  }

  // The class's counts, and its terms with tf and df.
  static std::string dump(std::uint32_t id) {
    const ClassData &data = class_table.get_data(id);
    EXPECT_TRUE(data.term_stats.empty());
    std::string text = std::to_string(data.nr_docs) + " " +
                       std::to_string(data.nr_others) + " " +
                       std::to_string(data.nr_terms) + ":";
    for (const auto &[slot_term, entry] : data.profile) {
      text += " " + std::to_string(slot_term) + "=" + std::to_string(entry.tf) +
              "/" + std::to_string(entry.df);
    }
    return text;
  }
};

TEST_F(Collection, KeepsInEveryClassWhatPassesInOne) {
  params.set_term_selection(TermSelection::docfreq);
  params.set_selectivity(0.75);
  class_table.update_profiles();
  // Term 0 passes in a with both documents, term 2 in b alone.
  EXPECT_EQ(dump(0), "3 0 11: 0=3/2 2=8/2");
  EXPECT_EQ(dump(1), "2 1 6: 0=3/2 2=3/1");
  EXPECT_EQ(dump(2), "1 2 5: 2=5/1");
  EXPECT_EQ(dump(3), "0 3 0:");
  EXPECT_EQ(active_terms.size(), 2U);
  EXPECT_EQ(data_base.get("d2")->total(), 4U);
  EXPECT_EQ(data_base.get("d1")->size(), 1U);
}

// V is 5: with 4, term 3 would fail in a, where it has 4/11 * ln(V * 16/11);
// with 6, term 0 would pass in the top class, where it has 8/23 * ln(V *
// 32/23).
TEST_F(Collection, JudgesByAllTermsThatTheTopClassEverHad) {
  params.set_term_selection(TermSelection::infogain);
  params.set_selectivity(0.7);
  top().nr_terms = 7;
  top().profile[0].tf = 5;
  top().profile[7].tf = 2;
  class_table.update_profiles();
  EXPECT_EQ(dump(0), "3 0 14: 2=8/2 3=4/1 7=2/0");
  EXPECT_EQ(dump(1), "2 1 7: 2=3/1 3=4/1");
}

TEST_F(Collection, AddsToTheStatisticsOfEarlierRuns) {
  ClassData &data = at("a");
  data.nr_docs = 9;
  data.nr_terms = 100;
  data.profile[0] = {50, 5, 0.0, 0.0, 0.0, 6, 7};
  class_table.update_profiles();
  EXPECT_EQ(dump(1), "2 1 111: 0=53/7 1=1/1 2=3/1 3=4/1");
  EXPECT_EQ(data.profile.find(0)->promotions, 0);
  EXPECT_EQ(data.profile.find(0)->demotions, 0);
}

}  // namespace
}  // namespace vek

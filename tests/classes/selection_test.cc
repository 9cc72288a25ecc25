#include "classes/selection.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>

namespace vek {
namespace {

constexpr std::uint32_t term = 70;

// A class with one term: N, T, the term's tf and df, S1 and S2; and V, with
// three classes in the table.
struct Facts {
  std::uint32_t nr_docs = 1, nr_terms = 1, tf = 1, df = 1;
  std::uint32_t sum = 0, sum_of_squares = 0;
  std::size_t vocabulary_size = 1;
};

bool passes(TermSelection criterion, double selectivity, const Facts &facts,
            std::size_t nr_classes = 3) {
  ClassData data;
  data.nr_docs = facts.nr_docs;
  data.nr_terms = facts.nr_terms;
  // One half comes from earlier runs, the rest from this one.
  data.profile[term] = {facts.tf / 2, facts.df / 2, 0.0, 0.0, 0.0, 0, 0};
  data.term_stats = {{term, facts.sum, facts.sum_of_squares,
                      facts.tf - facts.tf / 2, facts.df - facts.df / 2}};
  TermSet active;
  active.insert(3);
  select_terms({criterion, selectivity, facts.vocabulary_size, nr_classes},
               data, active);
  EXPECT_TRUE(active.contains(3));
  return active.contains(term);
}

TEST(Selection, WithoutACriterionOrABoundTakesEveryTerm) {
  for (const auto criterion : {TermSelection::none, TermSelection::uncertainty,
                               TermSelection::termfreq, TermSelection::docfreq,
                               TermSelection::tfidf, TermSelection::infogain}) {
    EXPECT_TRUE(passes(criterion, 0.0, {1000, 1000, 0, 1, 0, 0, 1}));
    EXPECT_EQ(passes(criterion, 1e9, {1000, 1000, 1, 1, 0, 0, 1}),
              criterion == TermSelection::none);
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
    TermSelection criterion;
    double selectivity;
    Facts facts;
    bool expected;
  } cases[] = {
      // 10 and 30: mean 20, standard deviation 10. The bound itself fails.
      {uncertainty, 2.0, {2, 1, 1, 1, 40, 1000, 1}, false},
      {uncertainty, 1.99, {2, 1, 1, 1, 40, 1000, 1}, true},
      // The same in every document: no deviation.
      {uncertainty, 1e9, {3, 1, 1, 1, 30, 300, 1}, true},
      {uncertainty, 1e9, {3, 1, 1, 1, 0, 0, 1}, false},
      // A negative variance, as sums that wrapped or were rounded can say.
      {uncertainty, 1e-300, {2, 1, 1, 1, 40, 799, 1}, false},
      // From here on the bound itself passes.
      {termfreq, 0.5, {5, 20, 2, 9, 0, 0, 1}, true},
      {termfreq, 0.5, {5, 20, 1, 9, 0, 0, 1}, false},
      // s * T first: exactly 1, and a little over 3. T / N first: over 1,
      // and 3.
      {termfreq, 0.17, {17, 100, 1, 9, 0, 0, 1}, true},
      {termfreq, 0.14, {7, 150, 3, 9, 0, 0, 1}, false},
      {docfreq, 0.25, {100, 1, 99, 25, 0, 0, 1}, true},
      {docfreq, 0.25, {100, 1, 99, 24, 0, 0, 1}, false},
      {tfidf, 0.5, {4, 1, 6, 3, 0, 0, 1}, true},
      {tfidf, 0.5, {4, 1, 5, 3, 0, 0, 1}, false},
      {tfidf, 0.5, {5, 1, 6, 3, 0, 0, 1}, false},
      // V * p * C is 6, 1 and 12 / 11.
      {infogain, half_ln_6, {1, 10, 5, 1, 0, 0, 4}, true},
      {infogain, std::nextafter(half_ln_6, 1.0), {1, 10, 5, 1, 0, 0, 4}, false},
      {infogain, 1e-300, {1, 12, 1, 1, 0, 0, 4}, false},
      {infogain, 1e-300, {1, 11, 1, 1, 0, 0, 4}, true},
  };
  for (const auto &one : cases) {
    errno = 0;
    EXPECT_EQ(passes(one.criterion, one.selectivity, one.facts), one.expected)
        << &one - cases;
    EXPECT_EQ(errno, 0) << &one - cases;
  }
}

TEST(Selection, MultipliesInTheOrderOfTheFormula) {
  // V * p, then C: 0.4 * ln(3 * 0.4 * 5). Any other order is a bit smaller.
  EXPECT_TRUE(passes(TermSelection::infogain, 0.7167037876912221,
                     {1, 5, 2, 1, 0, 0, 3}, 5));
}

}  // namespace
}  // namespace vek

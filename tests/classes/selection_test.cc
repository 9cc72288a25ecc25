#include "classes/selection.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>

namespace vek {
namespace {

constexpr std::uint32_t term = 70;

// A class with one term: N, T, the term's tf and df, S1 and S2; and V.
struct Facts {
  std::uint32_t nr_docs = 1, nr_terms = 1, tf = 1, df = 1;
  std::uint32_t sum = 0, sum_of_squares = 0;
  std::size_t vocabulary_size = 1;
};

bool passes(TermSelection criterion, double selectivity, const Facts &facts,
            std::size_t nr_classes) {
  ClassData data;
  data.nr_docs = facts.nr_docs;
  data.nr_terms = facts.nr_terms;
  // One half comes from earlier runs, the rest from this one.
  data.profile[term] = {facts.tf / 2, facts.df / 2, 0.0, 0.0, 0.0, 0, 0};
  data.term_stats = {{term, facts.sum, facts.sum_of_squares,
                      facts.tf - facts.tf / 2, facts.df - facts.df / 2}};
  TermSet active;
  select_terms({criterion, selectivity, facts.vocabulary_size, nr_classes},
               data, active);
  return active.contains(term);
}

TEST(Selection, ComparesWithTheBoundOfItsCriterion) {
  using enum TermSelection;
  const double half_ln_6 = 0.8958797346140275;
  const struct {
    TermSelection criterion;
    double selectivity;
    Facts facts;
    bool expected;
    std::size_t nr_classes = 3;
  } cases[] = {
      {none, 1e9, {1000, 1000, 1, 1, 0, 0, 1}, true},
      {infogain, 0.0, {1000, 1000, 0, 1, 0, 0, 1}, true},
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
      // V * p * C is 6 and 1.
      {infogain, half_ln_6, {1, 10, 5, 1, 0, 0, 4}, true},
      {infogain, std::nextafter(half_ln_6, 1.0), {1, 10, 5, 1, 0, 0, 4}, false},
      {infogain, 1e-300, {1, 12, 1, 1, 0, 0, 4}, false},
      // V * p, then C: 0.4 * ln(3 * 0.4 * 5). Any other order is a bit smaller.
      {infogain, 0.7167037876912221, {1, 5, 2, 1, 0, 0, 3}, true, 5},
  };
  for (const auto &one : cases) {
    errno = 0;
    EXPECT_EQ(passes(one.criterion, one.selectivity, one.facts, one.nr_classes),
              one.expected)
        << &one - cases;
    EXPECT_EQ(errno, 0) << &one - cases;
  }
}

}  // namespace
}  // namespace vek

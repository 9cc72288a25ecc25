#include "classes/selection.h"

#include <array>
#include <cmath>

#include "base/logarithm.h"

namespace vek {
namespace {

// Earlier runs and this one together. In 32 bits, so that a sum wraps as the
// profile's own count will.
double term_frequency(const TermStats &stats, const ClassData &data) {
  return double(data.profile.tf(stats.term) + stats.tf);
}
double document_frequency(const TermStats &stats, const ClassData &data) {
  return double(data.profile.df(stats.term) + stats.df);
}

bool always(const Selection &, const TermStats &, const ClassData &) {
  return true;
}

// In the order of TermSelection, whose values are the indices.
constexpr std::array criteria = {always,
                                 term_passes_uncertainty,
                                 term_passes_termfreq,
                                 term_passes_docfreq,
                                 term_passes_tfidf,
                                 term_passes_infogain};

}  // namespace

bool term_passes_uncertainty(const Selection &selection, const TermStats &stats,
                             const ClassData &data) {
  // Not 0, here and below: a class has records only of terms that occur in its
  // training documents.
  const double n = data.nr_docs;
  const double mean = double(stats.sum) / n;
  const double variance = double(stats.sum_of_squares) / n - mean * mean;
  // The root of a negative number would compare false too, and set errno.
  if (variance < 0.0)
    return false;
  return mean > selection.selectivity * std::sqrt(variance) && stats.sum != 0;
}

bool term_passes_termfreq(const Selection &selection, const TermStats &stats,
                          const ClassData &data) {
  return term_frequency(stats, data) >=
         selection.selectivity * double(data.nr_terms) / double(data.nr_docs);
}

bool term_passes_docfreq(const Selection &selection, const TermStats &stats,
                         const ClassData &data) {
  return document_frequency(stats, data) >=
         selection.selectivity * double(data.nr_docs);
}

bool term_passes_tfidf(const Selection &selection, const TermStats &stats,
                       const ClassData &data) {
  return term_frequency(stats, data) / document_frequency(stats, data) >=
         selection.selectivity * double(data.nr_docs);
}

bool term_passes_infogain(const Selection &selection, const TermStats &stats,
                          const ClassData &data) {
  // Above 0, but for a count that has wrapped: then the product is NaN, which
  // compares false.
  const double share = term_frequency(stats, data) / double(data.nr_terms);
  return share * natural_logarithm(double(selection.vocabulary_size) * share *
                                   double(selection.nr_classes)) >=
         selection.selectivity;
}

void select_terms(const Selection &selection, const ClassData &data,
                  TermSet &active) {
  const auto passes =
      // Not each criterion passes all terms with a bound of 0: uncertainty
      // fails a term whose variance is rounded below 0.
      selection.selectivity == 0.0
          ? always
          : criteria.at(static_cast<std::size_t>(selection.criterion));
  for (const TermStats &stats : data.term_stats) {
    if (passes(selection, stats, data))
      active.insert(stats.term);
  }
}

}  // namespace vek

// Term selection: which terms the classifiers use.
//
// Each class judges each term of its training documents by one criterion, on
// its own and against a fixed bound; a term that passes in at least one class
// is active for the whole system.
//
// Symbols below, for a class and one of its terms, all as doubles: s the
// selectivity, N the number of documents, T the number of term occurrences, tf
// and df the term's own, S1 and S2 the sums of its relative frequencies (in
// thousandths) and of their squares, V the number of terms of the top class, C
// the number of classes. tf and df include those of earlier runs.
#ifndef VEK_CLASSES_SELECTION_H_
#define VEK_CLASSES_SELECTION_H_

#include <cstddef>

#include "classes/classtab.h"
#include "classes/termset.h"
#include "params/params.h"

namespace vek {

// What a term is judged by, beside its class.
struct Selection {
  TermSelection criterion = TermSelection::none;
  double selectivity = 0.0;         // s
  std::size_t vocabulary_size = 0;  // V
  std::size_t nr_classes = 0;       // C
};

// Adds the terms of the class that pass the criterion; with a selectivity of 0
// all do.
void select_terms(const Selection &selection, const ClassData &data,
                  TermSet &active);

// Uncertainty: m > s * d and S1 is not 0, where m = S1 / N is the mean and
// d = sqrt(S2 / N - m * m) the standard deviation of the term's relative
// frequency over the documents of the class. Rounding can leave a negative
// variance; the term then fails. A term is certain of a class if it is about
// equally frequent in all documents of it: Peters and Koster, Uncertainty-based
// noise reduction and term selection in text categorization, ECIR 2002.
bool term_passes_uncertainty(const Selection &selection, const TermStats &stats,
                             const ClassData &data);

// Term frequency: tf >= (s * T) / N.
bool term_passes_termfreq(const Selection &selection, const TermStats &stats,
                          const ClassData &data);

// Document frequency: df >= s * N.
bool term_passes_docfreq(const Selection &selection, const TermStats &stats,
                         const ClassData &data);

// Term frequency against document frequency: tf / df >= s * N.
bool term_passes_tfidf(const Selection &selection, const TermStats &stats,
                       const ClassData &data);

// Information gain: p * ln(V * p * C) >= s, where p = tf / T. It is the term's
// part in the Kullback-Leibler divergence of the class's terms from a
// distribution that gives each term of each class 1 / (V * C).
bool term_passes_infogain(const Selection &selection, const TermStats &stats,
                          const ClassData &data);

}  // namespace vek

#endif  // VEK_CLASSES_SELECTION_H_

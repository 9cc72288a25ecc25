// Term selection: which terms the classifiers get to see.
//
// Each class judges each term of its training documents by one criterion, on
// its own and against a fixed bound; a term that passes in at least one class
// is active for the whole system.
//
// Symbols below, for a class and one of its terms, all as doubles: s the
// selectivity, N the number of documents, T the number of term occurrences, tf
// and df the term's own, S1 and S2 the sums of its relative frequencies (in
// thousandths) and of their squares, V the number of terms of the top class, C
// the number of classes.
#ifndef VEK_CLASSES_SELECTION_H_
#define VEK_CLASSES_SELECTION_H_

#include <cstddef>
#include <cstdint>

#include "classes/classtab.h"
#include "classes/termset.h"

namespace vek {

// Adds the terms of the class that pass the criterion that is set.
// `vocabulary_size` is V.
void select_terms(ClassData &data, std::size_t vocabulary_size,
                  TermSet &active);

// m > s * d and S1 is not 0, where m = S1 / N is the mean and
// d = sqrt(S2 / N - m * m) the standard deviation. Rounding can leave a
// negative variance; the term then fails.
bool term_passes_uncertainty(const TermStats &stats, std::uint32_t nr_docs);

// tf >= (s * T) / N.
bool term_passes_termfreq(std::uint32_t term, const TermStats &stats,
                          const ClassData &data);

// df >= s * N.
bool term_passes_docfreq(std::uint32_t term, const TermStats &stats,
                         const ClassData &data);

// tf / df >= s * N.
bool term_passes_tfidf(std::uint32_t term, const TermStats &stats,
                       const ClassData &data);

// p * ln(V * p * C) >= s, where p = tf / T.
bool term_passes_infogain(std::uint32_t term, const TermStats &stats,
                          const ClassData &data, std::size_t vocabulary_size);

}  // namespace vek

#endif  // VEK_CLASSES_SELECTION_H_

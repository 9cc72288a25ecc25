// What the system knows of one document: which terms occur in it and how
// often.
//
// Made once, from the analyser's answer; kept as a small binary block in the
// profile store; read back whenever statistics are gathered, a classifier is
// trained or the document is scored. This is the one place where frequencies
// are turned into the strengths that classifiers see.
#ifndef VEK_INTAKE_DOCPROF_H_
#define VEK_INTAKE_DOCPROF_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "base/helpers.h"
#include "classes/classtab.h"
#include "classes/termset.h"
#include "classes/termstats.h"
#include "params/params.h"

namespace vek {

struct DocProfileEntry {
  std::uint32_t term;
  std::uint32_t freq;
  // Set by DocProfile::weigh(), never stored.
  WeightType weight;
};

class DocProfile {
 public:
  using Entries = std::vector<DocProfileEntry>;

  // Appends an entry of weight 0. The caller makes sure that no term is added
  // twice.
  void add_term(std::uint32_t term, std::uint32_t freq);

  // Sets `block` to the stored form: the number of entries, then term and
  // frequency of each, four bytes each, least significant byte first.
  bool write(std::string &block) const;

  // Appends the entries of a block of `len` bytes to the empty profile. A
  // null block and a length below four bytes are programming errors and stop
  // the program; false means that the count in the block belies its length.
  bool read(const void *contents, unsigned len);

  // Turns frequencies into weights against a class, the one among whose sons
  // the document is to be placed:
  //   w = strength(tf) * ln(N / df)
  // with the term's frequency tf in the document, the class's number of
  // documents N and the number df of those with the term. The strength is tf,
  // 1, sqrt(tf) or 1 + ln(tf). Then each weight is divided by the sum of all
  // weights (linear) or by the root of the sum of their squares (vector), or
  // left as it is. With `ltc` and `vector` that is the weighting ltc of Salton
  // and Buckley, Term-weighting approaches in automatic text retrieval,
  // Information Processing & Management 24 (1988). Overwrites earlier weights.
  //
  // A document whose weights cannot be normalised has all weights 0. So has a
  // term of a class without documents.
  void weigh(const ClassData &data, const Params &params);

  // The same for a training document: each weight is also added to the class's
  // entry for the term, if it has one.
  void weigh_and_add(ClassData &data, const Params &params);

  // Adds this training document to the statistics of a class. They reach the
  // class's profile when terms have been selected.
  void update_statistics(TermStatsCollector &statistics) const;

  // Makes the profile empty again; its memory serves the next document.
  void clear();

  // Drops all terms outside the set; an empty set drops none.
  void select_active(const TermSet &active);

  // Drops all terms from `nr_terms` upward, which the term table does not hold.
  // Returns how many there were.
  std::size_t drop_unknown(std::size_t nr_terms);

  Entries::const_iterator begin() const { return entries_.begin(); }
  Entries::const_iterator end() const { return entries_.end(); }
  std::size_t size() const { return entries_.size(); }
  // Sum of the frequencies.
  std::uint32_t total() const { return total_; }

 private:
  template <class Keep>
  void filter(Keep keep);
  WeightType normaliser(Normalize kind) const;

  Entries entries_;
  std::uint32_t total_ = 0;
};

}  // namespace vek

#endif  // VEK_INTAKE_DOCPROF_H_

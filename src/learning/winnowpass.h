// The documents and sons of one father, laid out for Winnow's passes.
//
// A run spends most of its time in the passes, so nothing is looked up in them:
// each document's terms are translated once into rows, and the weights of the
// sons that know a term stand next to each other. The sons do not see each
// other's weights, so scoring all of them before updating any gives the same
// result as taking them one by one, to the last bit.
//
// Mixed precision: a pass only asks on which side of a theta a score lies, and
// for nearly all of them single precision tells, with a bound on its error.
#ifndef VEK_LEARNING_WINNOWPASS_H_
#define VEK_LEARNING_WINNOWPASS_H_

#include <tsl/robin_map.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "base/helpers.h"
#include "classes/classtab.h"
#include "evaluation/invertedindex.h"
#include "intake/docprof.h"
#include "params/params.h"

namespace vek {

class WinnowPasses {
 public:
  // Starts from the sons' weights and counters as they are. The parameters must
  // outlive the passes. What training changes is in the sons' profiles at once;
  // nothing else may change these during the passes.
  WinnowPasses(ClassData &father, const Params &params);

  // Makes room for so many documents and terms of documents in all.
  void reserve(std::size_t nr_docs, std::size_t nr_terms);

  // Adds the next document, weighed against the father, with the sons that hold
  // it. It must stay unchanged as long as the passes are used.
  void add_document(const DocProfile &doc,
                    const DocumentMap::ClassList &members);

  // Scores a document, by its number in order of adding, against each son and
  // updates those on the wrong side. Returns what the last update in the order
  // of sons did: 1 promoted, -1 demoted, 0 if there was none.
  int train_document(std::uint32_t number);

 private:
  struct Document {
    const DocProfile *profile_P = nullptr;
    std::size_t terms_end = 0;
    std::size_t members_end = 0;
    WeightType strengths = 0.0;  // the sum of their magnitudes
  };
  struct KnownTerm {
    ClassProfileEntry *entry_P;
    std::size_t place;
  };
  using Terms = std::span<const RowWeight<float>>;

  void set_member(std::uint32_t son, bool is_member);
  bool is_member(std::uint32_t son) const { return sides_[son] > 0.0; }
  void choose_sons(const Document &doc, Terms terms);
  bool score_roughly(const Document &doc, Terms terms);
  bool is_wrong(std::uint32_t son, const DocProfile &doc) const;
  void update(std::uint32_t son, const DocProfile &doc);
  void set_weight(std::size_t place, std::uint32_t son,
                  const ClassProfileEntry &entry);

  const std::vector<ClassData *> &sons_;
  const Params &params_;
  InvertedIndex index_;
  tsl::robin_map<const ClassData *, std::uint32_t> son_numbers_;
  // By place of the index: what the score multiplies with, rounded.
  std::vector<float> weights_;
  // All documents, one behind the other. A document's terms are rounded, and
  // those with full rows come first.
  std::vector<Document> documents_;
  std::vector<RowWeight<float>> terms_;
  std::vector<std::uint32_t> members_;
  // By sum of the index, for the document at hand: theta_plus and 1 for
  // members, theta_min and -1 for others.
  std::vector<WeightType> thetas_;
  std::vector<WeightType> sides_;
  std::vector<float> scores_;
  // At least the magnitude of each of the son's weights. It never falls,
  // although weights do: an upper bound is all that the error needs.
  std::vector<WeightType> largest_weights_;
  WeightType largest_weight_ = 0.0;  // of any son
  // The sons to be updated, ascending.
  std::vector<std::uint32_t> chosen_;
  // The terms that one of them knows.
  std::vector<KnownTerm> known_;
};

}  // namespace vek

#endif  // VEK_LEARNING_WINNOWPASS_H_

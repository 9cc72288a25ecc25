// The documents and sons of one father, laid out for Winnow's passes.
//
// The passes are where a run spends its time, so nothing is looked up in them:
// each document's terms are translated once into rows, and the weights of the
// sons that know a term stand next to each other. The sons do not see each
// other's weights, so scoring all of them before updating any gives what
// taking them one by one gives, to the last bit.
#ifndef VEK_LEARNING_WINNOWPASS_H_
#define VEK_LEARNING_WINNOWPASS_H_

#include <boost/unordered/unordered_flat_map.hpp>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "classes/classtab.h"
#include "evaluation/termindex.h"
#include "intake/docprof.h"
#include "run/helpers.h"

namespace vek {

class WinnowPasses {
 public:
  // Takes over the sons' weights and counters as they are.
  explicit WinnowPasses(ClassData &father);

  // Makes room for so many documents and terms of documents in all.
  void reserve(std::size_t nr_docs, std::size_t nr_terms);

  // Adds the next document, weighed against the father, with the sons that
  // hold it.
  void add_document(const DocProfile &doc,
                    const DocumentMap::ClassList &members);

  // Scores a document, by its number in order of adding, against each son and
  // updates those on the wrong side. Returns what the last update in the order
  // of sons did: 1 promoted, -1 demoted, 0 if there was none.
  int train_document(std::uint32_t number);

  // Puts weights and counters back into the sons' profiles.
  void store();

 private:
  struct Document {
    std::size_t terms_end;
    std::size_t members_end;
  };
  // What an update changes, next to each other. The counts are unsigned, so
  // that one that was read at its limit wraps.
  struct Entry {
    WeightType pos;
    WeightType neg;
    std::uint32_t promotions;
    std::uint32_t demotions;
  };

  void score(std::size_t terms_begin, std::size_t terms_end);
  int choose_sons();
  void update(std::size_t terms_begin, std::size_t terms_end);
  WeightType scoring_weight(const Entry &entry) const;

  const std::vector<ClassData *> &sons_;
  const bool uses_neg_;  // for scores
  TermIndex index_;
  boost::unordered_flat_map<const ClassData *, std::uint32_t> son_numbers_;
  // By place of the index. `scoring_` is what the score multiplies with.
  std::vector<Entry> entries_;
  std::vector<WeightType> scoring_;
  // All documents, one behind the other.
  std::vector<Document> documents_;
  std::vector<RowWeight> terms_;
  std::vector<std::uint32_t> members_;
  // By son, for the document at hand.
  std::vector<WeightType> scores_;
  std::vector<std::uint8_t> is_member_;
  // The sons to be updated, ascending, and the same by son.
  std::vector<std::uint32_t> chosen_;
  std::vector<std::uint8_t> is_chosen_;
};

}  // namespace vek

#endif  // VEK_LEARNING_WINNOWPASS_H_

// Scores of training documents from classes that have not learnt them.
//
// A document that was learnt scores higher than a new one, so thresholds and
// probabilities that come from such scores promise too much. Here the training
// documents are dealt to parts; for each part the classes are trained without
// it, and score it (k-fold cross-validation; Stone, Cross-validatory choice and
// assessment of statistical predictions, Journal of the Royal Statistical
// Society B 36, 1974).
#ifndef VEK_LEARNING_HELDOUT_H_
#define VEK_LEARNING_HELDOUT_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "base/helpers.h"
#include "classes/classtab.h"
#include "intake/documents.h"
#include "learning/classifiers.h"
#include "params/params.h"

namespace vek {

// The training documents of a collection in the order of their names, all terms
// in memory, each in the classes in which it was filed.
class TrainingSet {
 public:
  struct Document {
    const std::string *name_P = nullptr;  // in the class table
    DocProfile profile;
    std::vector<std::uint32_t> filed_in;  // ids of classes, as they were filed
  };

  // The table must outlive the set, its documents gathered.
  TrainingSet(const ClassTable &classes, Documents &documents);

  const std::vector<Document> &documents() const { return documents_; }
  // The place of a training document; that of another name is the size.
  std::size_t place_of(const std::string &name) const;

 private:
  std::vector<Document> documents_;
};

// Deals documents to parts, 0 to nr_parts - 1: the answer has one for each
// document. Documents that are nearly alike go to one part (by MinHash of their
// terms; Broder, On the resemblance and containment of documents, 1997): what a
// document scores where its double was learnt tells nothing of new ones. Each
// part gets its share of each class, or up to half as much again: the documents
// of a class are dealt out in the order of a hash of their names. One with
// several classes counts for the smallest of them.
std::vector<std::uint32_t> deal_to_parts(const ClassTable &classes,
                                         const TrainingSet &set,
                                         std::uint32_t nr_parts);

// A row for each document, a column for each class: the unscaled score, with
// the document weighed against the father of the class. Column 0, that of the
// top class, is 0.
struct ScoreMatrix {
  std::size_t nr_classes = 0;
  std::vector<WeightType> scores;

  WeightType *row(std::size_t document) {
    return scores.data() + document * nr_classes;
  }
  const WeightType *row(std::size_t document) const {
    return scores.data() + document * nr_classes;
  }
};

// Trains each part's classes with the documents of all other parts and fills in
// the rows of its own, several parts at a time if there are several threads. A
// part for which a thread has no memory is done again when the others are
// through. Class table and documents stay as they are.
ScoreMatrix held_out_scores(const ClassTable &classes, const TrainingSet &set,
                            const std::vector<std::uint32_t> &parts,
                            std::uint32_t nr_parts,
                            const Classifier &classifier, const Params &params,
                            std::size_t nr_terms, unsigned nr_threads);

}  // namespace vek

#endif  // VEK_LEARNING_HELDOUT_H_

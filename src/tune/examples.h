// The training documents of a collection, as a search for settings needs them:
// in an order in which any first ones are a fair sample of all, and in memory.
#ifndef VEK_TUNE_EXAMPLES_H_
#define VEK_TUNE_EXAMPLES_H_

#include <tsl/robin_map.h>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "base/failure.h"
#include "classes/classtab.h"
#include "intake/docprof.h"
#include "intake/documents.h"
#include "model/model.h"

namespace vek::tuning {

class Examples {
 public:
  struct Example {
    std::string name;
    std::size_t place = 0;             // in the list
    std::vector<std::string> classes;  // as filed, by their paths
    DocProfile profile;
  };
  // What the work on a sample grows with.
  struct Size {
    std::size_t nr_docs = 0;
    std::size_t nr_classes = 0;
    // Terms of the documents, each document once for each class with sons that
    // holds it, and once more for each of those sons.
    double nr_terms = 0.0;
    double nr_terms_by_son = 0.0;
    // Of the terms of all documents.
    double share_of_words = 1.0;
  };

  // Reads the training list of an examples directory. False, with `failure`
  // filled in, if it cannot be read or a line of it is malformed.
  bool read_list(const std::string &directory, Failure &failure);

  // Puts the documents in their order and forgets all behind the first
  // `nr_docs`. Classes have the same shares in any first ones, as far as that
  // is possible; within a class a hash of the names decides, so that the order
  // of the list does not matter.
  void choose(std::size_t nr_docs);

  // Reads the profiles of all documents.
  bool read_profiles(const Model &model, Failure &failure);

  std::size_t size() const { return examples_.size(); }
  const std::vector<Example> &examples() const { return examples_; }
  // The classes with documents, and the largest number of them that a document
  // has.
  std::size_t nr_classes() const;
  std::size_t most_classes() const;
  // The share of the documents that have several.
  double share_of_several() const;
  // Some terms of the documents are words, and some are not.
  bool has_pairs() const {
    return share_of_words_ > 0.0 && share_of_words_ < 1.0;
  }
  std::size_t nr_terms() const { return words_.size(); }

  // Fills the empty table with the first documents. Classes get their ids in
  // the order of the list, as in a run with these documents: with the same
  // parts held out, it comes to the same.
  void fill(std::size_t nr_docs, ClassTable &classes) const;
  Size size_of(std::size_t nr_docs) const;
  // Fills the empty profile with the terms of a document. Those without a
  // modifier alone are counted among themselves, as where there are no others.
  void read(const std::string &name, bool words_only,
            DocProfile &profile) const;

 private:
  std::vector<Example> examples_;
  std::string top_;                             // the name of the top class
  std::map<std::string, std::size_t> classes_;  // the place in the list's order
  tsl::robin_map<std::string, std::size_t> places_;
  // By term: which of the words it is, or not_a_word.
  std::vector<std::uint32_t> words_;
  double share_of_words_ = 1.0;
};

}  // namespace vek::tuning

#endif  // VEK_TUNE_EXAMPLES_H_

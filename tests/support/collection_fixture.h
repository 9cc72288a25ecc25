// A small collection made by hand, in memory alone: classes, documents of which
// only the profiles exist, and all that a trainer or a test works with.
#ifndef VEK_TESTS_SUPPORT_COLLECTION_FIXTURE_H_
#define VEK_TESTS_SUPPORT_COLLECTION_FIXTURE_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "classes/classtab.h"
#include "classes/termset.h"
#include "evaluation/scoring.h"
#include "intake/docprof.h"
#include "intake/documents.h"
#include "learning/training.h"
#include "params/params.h"
#include "support/recorded_messages.h"

namespace vek {

struct TermCount {
  std::uint32_t term;
  std::uint32_t freq;
};

inline DocProfile make_profile(const std::vector<TermCount> &terms) {
  DocProfile profile;
  for (const TermCount &one : terms)
    profile.add_term(one.term, one.freq);
  return profile;
}

// A classifier as plain as can be.
inline constexpr Scoring pos_weight_sum = {
    Scoring::Kind::sum, [](const ClassProfileEntry &entry, const Params &) {
      return entry.pos_weight;
    }};

class MadeDocuments : public Documents {
 public:
  using Documents::Documents;
  void put(const std::string &name, const std::vector<TermCount> &terms) {
    profiles_[name] = make_profile(terms);
  }
  void read_profile(const std::string &name, DocProfile &profile) override {
    profile = profiles_.at(name);
  }

 private:
  std::map<std::string, DocProfile> profiles_;
};

// Every term is active unless a case asks for a selection.
struct SmallCollection {
  static constexpr std::uint32_t nr_terms = 64;

  SmallCollection() {
    params.selectivity = 0.0;
    classes.enter("top", 0);
  }

  // The class of that path below the top class, made if need be.
  ClassData &at(const std::string &path) {
    return classes.get_data(classes.enter_path(path, 0));
  }
  ClassData &top() { return classes.get_data(0); }

  // Files the document for training, in the classes of these paths.
  void train(const std::string &name, const std::vector<TermCount> &terms,
             const std::vector<std::string> &paths) {
    documents.put(name, terms);
    for (const std::string &path : paths)
      classes.add_train_document(at(path).id, name);
  }
  // All documents are filed.
  void gather() {
    classes.gather_documents();
    update_profiles(training(), nr_terms);
  }
  Training training() {
    return {classes, documents, active_terms, params, scores, messages};
  }

  Params params;
  TermSet active_terms;
  ClassTable classes;
  MadeDocuments documents{active_terms};
  std::ostringstream scores;
  RecordedMessages messages;
};

class CollectionTest : public testing::Test, protected SmallCollection {};

// Numbers that are the same in every run.
class Dice {
 public:
  explicit Dice(unsigned seed) : engine_(seed) {}
  // From 0 to n - 1.
  std::uint32_t operator()(std::uint32_t n) {
    return static_cast<std::uint32_t>(engine_() % n);
  }

 private:
  std::mt19937 engine_;
};

// A number by all its bits.
inline std::string exact(double value) {
  char text[40];
  std::snprintf(text, sizeof text, "%a", value);
  return text;
}

}  // namespace vek

#endif  // VEK_TESTS_SUPPORT_COLLECTION_FIXTURE_H_

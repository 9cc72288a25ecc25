// A small collection made by hand: classes, documents of which only the
// profiles exist, and a data directory of its own.
#ifndef VEK_TESTS_SUPPORT_COLLECTION_FIXTURE_H_
#define VEK_TESTS_SUPPORT_COLLECTION_FIXTURE_H_

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "classes/classtab.h"
#include "evaluation/scoretable.h"
#include "evaluation/testing.h"
#include "intake/docprof.h"
#include "params/params.h"
#include "run/log.h"
#include "store/database.h"
#include "support/messages.h"
#include "support/temporary_directory.h"
#include "vocabulary/termtab.h"

namespace vek {

// Gives a global object its first state back. Needed within a case too: the
// store has to be closed before its directory goes.
template <class Object>
void renew(Object &object) {
  std::destroy_at(&object);
  std::construct_at(&object);
}

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

class CollectionTest : public testing::Test {
 protected:
  static constexpr std::uint32_t nr_terms = 64;

  CollectionTest() {
    params = Params();
    params.set_selectivity(0.0);
    log_file.open("vek.log");
    scores.open("scores.dat", OutputFile::Mode::truncate);
    data_base.open("data");
    for (std::uint32_t i = 0; i < nr_terms; ++i) {
      term_table.enter(i, EmptyAtom);
    }
    new_classes();
  }
  ~CollectionTest() override {
    clear_scorers();
    renew(data_base);
    renew(term_table);
    renew(scores);
    renew(log_file);
    renew(options);
  }

  // Back to a top class alone, and to an empty cache.
  void new_classes() {
    clear_scorers();
    data_base.clear_cache();
    active_terms = TermSet();
    renew(class_table);
    class_table.enter("top", 0);
  }

  // The class of that path below the top class, made if need be.
  ClassData &at(const std::string &path) {
    return class_table.get_data(class_table.enter_path(path, 0));
  }
  ClassData &top() { return class_table.get_data(0); }

  void store(const std::string &name, const std::vector<TermCount> &terms) {
    data_base.put(name, make_profile(terms));
  }
  void train(const std::string &name, ClassData &data) {
    class_table.add_train_document(data.id, name);
  }
  void test(const std::string &name, ClassData &data) {
    class_table.add_test_document(data.id, name);
  }
  // All documents are filed.
  void gather() {
    class_table.gather_documents();
    class_table.update_profiles();
  }

  // The lines of the log that begin so, each with its end.
  static std::string log_lines(const std::string &start) {
    std::istringstream log(read_text("vek.log"));
    std::string lines;
    for (std::string line; std::getline(log, line);) {
      if (line.starts_with(start))
        lines += line + '\n';
    }
    return lines;
  }

 private:
  TemporaryDirectory directory_;
};

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

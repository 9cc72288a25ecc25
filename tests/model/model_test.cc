#include "model/model.h"

#include <gtest/gtest.h>

#include <string>

#include "support/temporary_directory.h"

namespace vek {
namespace {

const std::string first_line = "vek journal 1\n";

// A run of Rocchio with one class, and two terms.
class ModelTest : public testing::Test {
 protected:
  ModelTest() {
    write_text("data/atoms.dat", "house\nbig\n");
    write_text("data/terms.dat", "0 4294967295 0 1\n0 1 1 4294967295\n");
    write_text("data/classes", "1\n0\t1\t0\t3\t0\t\"ex\"\n");
    write_text("data/class0.cpf", "1\t3\t0.5\n1\t2\t1\t0.25\t\n");
  }

  // The failure of looking at it, the terms otherwise.
  static std::string look(bool with_classes = false) {
    Model model;
    Failure failure;
    if (!model.open("data", failure))
      return failure.text();
    const Classifier *classifier_P = nullptr;
    if (with_classes &&
        ((classifier_P = model.find_classifier(failure)) == nullptr ||
         !model.read_classes(*classifier_P, failure))) {
      return failure.text();
    }
    std::string text;
    for (std::uint32_t id = 0; id < model.terms().size(); ++id)
      text += model.term_text(id) + ';';
    return text;
  }

  const TemporaryDirectory directory_;
};

// As a run of vek would find it.
TEST_F(ModelTest, JournalCounts) {
  const std::string pending = "tree\n2 1\nend\n";
  struct Case {
    std::string journal;
    std::string expected;
  };
  const std::string damaged = "data/journal.dat: format error";
  for (const auto &[journal, expected] :
       {Case{first_line + "2 10 2 34 1 1\n" + pending,
             "house;big house;big tree;"},
        // The last term was being appended.
        Case{first_line + "2 10 1 17 1 1\n" + pending, "house;big tree;"},
        Case{first_line + "2 10 2 34 1 1\n", damaged},
        Case{first_line + "2 11 2 34 1 1\n" + pending,
             "data/journal.dat: it does not fit data/atoms.dat"}}) {
    write_text("data/journal.dat", journal);
    EXPECT_EQ(look(), expected) << journal;
    EXPECT_EQ(read_text("data/journal.dat"), journal);
  }
}

TEST_F(ModelTest, ClassesHaveKnownTerms) {
  EXPECT_EQ(look(true), "house;big house;");
  std::filesystem::remove("data/atoms.dat");
  EXPECT_EQ(look(true),
            "data/class0.cpf: line 2: no class profile of Rocchio: term 1 is "
            "not known");
}

}  // namespace
}  // namespace vek

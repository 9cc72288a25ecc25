#include "evaluation/confus.h"

#include <sstream>
#include <string>

#include "support/collection_fixture.h"

namespace vek {
namespace {

class Confusion : public CollectionTest {
 protected:
  void make_test_documents(int number) {
    for (int i = 0; i < number; ++i)
      test("t" + std::to_string(i), top());
  }
  static void enter(ConfusionMatrix &matrix, const ClassData &data, int rs,
                    int rns, int nrs) {
    while (rs-- > 0)
      matrix.enterRS(data.id);
    while (rns-- > 0)
      matrix.enterRNS(data.id);
    while (nrs-- > 0)
      matrix.enterNRS(data.id);
  }
  static std::string text(const ConfusionMatrix &matrix) {
    std::ostringstream os;
    matrix.print(os);
    return os.str();
  }
};

TEST_F(Confusion, ReportsCountsAndMeasures) {
  const ClassData &sport = at("sport");
  make_test_documents(100);
  ConfusionMatrix matrix;
  enter(matrix, sport, 12, 3, 4);
  EXPECT_EQ(text(matrix),
            "Contingency table:RS/RNS/NRS/NRNS\n"
            "top          12             3             4            81  \n"
            "sport          12             3             4            81  \n"
            "\n"
            "Precision/Recall/F-Measure/Fallout\n"
            "Total       75.00%        80.00%        77.42%         4.71% \n"
            "sport       75.00%        80.00%        77.42%         4.71% \n"
            "\n");
}

TEST_F(Confusion, LeavesOutMeasuresThatAreNotDefined) {
  at("unused");
  const ClassData &missed = at("missed");
  const ClassData &deep = at("a/deep");
  make_test_documents(3);
  ConfusionMatrix matrix;
  enter(matrix, missed, 0, 2, 0);
  EXPECT_TRUE(text(matrix).ends_with(
      "a/deep           0             0             0             3  \n"
      "\n"
      "Precision/Recall/F-Measure/Fallout\n"
      "\n"));
  // Relevant or not, but never right: all measures are 0, and defined.
  enter(matrix, deep, 0, 1, 1);
  EXPECT_TRUE(text(matrix).ends_with(
      "Fallout\n"
      "Total        0.00%         0.00%         0.00%         0.00% \n"
      "a/deep        0.00%         0.00%         0.00%        50.00% \n"
      "\n"));
}

// Two documents in two classes each: RS + RNS exceeds the number of documents.
TEST_F(Confusion, WrapsWhereDocumentsHaveSeveralClasses) {
  const ClassData &a = at("a");
  const ClassData &b = at("b");
  make_test_documents(2);
  ConfusionMatrix matrix;
  enter(matrix, a, 2, 0, 1);
  enter(matrix, b, 0, 1, 1);
  EXPECT_TRUE(text(matrix).starts_with(
      "Contingency table:RS/RNS/NRS/NRNS\n"
      "top           2             1             2    0\n"
      "a           2             0             1    0\n"
      "b           0             1             1             0  \n"));
  WeightType fallout = 1.0;
  matrix.fallout(0, fallout);
  EXPECT_EQ(fallout, 2.0 / 4294967295.0);
}

TEST_F(Confusion, MeasuresAreZeroWhereTheDivisorIs) {
  const ClassData &a = at("a");
  make_test_documents(1);
  ConfusionMatrix matrix;
  WeightType precision = 1.0;
  WeightType recall = 1.0;
  WeightType fallout = 1.0;
  EXPECT_FALSE(matrix.precision(a.id, precision));
  EXPECT_FALSE(matrix.recall(a.id, recall));
  enter(matrix, a, 1, 0, 2);
  matrix.fallout(a.id, fallout);
  EXPECT_EQ(precision + recall + fallout, 0.0);
  EXPECT_DEATH(matrix.enterNRS(2), "pos < size\\(\\)");
  EXPECT_DEATH(matrix.get_confusion(3, 0), "pos < size\\(\\)");
}

TEST(FMeasure, WeighsPrecisionAgainstRecall) {
  const struct {
    double precision, recall, f, value;
  } cases[] = {
      {0.75, 0.8, 1.0, 2.0 * 0.75 * 0.8 / (0.75 + 0.8)},
      {0.5, 1.0, 2.0, 2.5 / 3.0},
      {0.0, 0.0, 1.0, 0.0},
      {0.5, 0.0, 0.0, 0.0},
      // Another order of multiplying ends in other bits.
      {0.8, 0.9, 3.0, 0.888888888888889},
  };
  for (const auto &one : cases) {
    EXPECT_EQ(f_measure(one.precision, one.recall, one.f), one.value);
  }
}

}  // namespace
}  // namespace vek

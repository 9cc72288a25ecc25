#include "evaluation/confus.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace vek {
namespace {

struct Counts {
  const char *path;
  int rs, rns, nrs;
};

// The report of a test of so many documents.
std::string report(int nr_docs, const std::vector<Counts> &all) {
  ClassTable classes;
  classes.enter("top", 0);
  for (const Counts &one : all)
    classes.enter_path(one.path, 0);
  for (int i = 0; i < nr_docs; ++i)
    classes.add_test_document(0, std::to_string(i));
  ConfusionMatrix matrix(classes);
  for (const auto &[path, rs, rns, nrs] : all) {
    const std::uint32_t id = classes.enter_path(path, 0);
    for (int i = 0; i < rs; ++i)
      matrix.enterRS(id);
    for (int i = 0; i < rns; ++i)
      matrix.enterRNS(id);
    for (int i = 0; i < nrs; ++i)
      matrix.enterNRS(id);
  }
  std::ostringstream os;
  matrix.print(os, 1.0);
  return os.str();
}

TEST(Confusion, ReportsCountsAndMeasures) {
  // Measures that are not defined are left out.
  EXPECT_TRUE(report(3, {{"a/missed", 0, 2, 0}}).ends_with("Fallout\n\n"));
  // Two documents in two classes each: RS + RNS exceeds their number, and the
  // difference wraps. No others than those of a are left to be fallen out.
  EXPECT_EQ(report(2, {{"a", 2, 0, 1}, {"b", 0, 1, 1}}),
            "Contingency table:RS/RNS/NRS/NRNS\n"
            "top           2             1             2    0\n"
            "a           2             0             1    0\n"
            "b           0             1             1             0  \n"
            "\n"
            "Precision/Recall/F-Measure/Fallout\n"
            "Total       50.00%        66.67%        57.14%         0.00% \n"
            "a       66.67%       100.00%        80.00%         0.00% \n"
            "b        0.00%         0.00%         0.00%       100.00% \n"
            "\n");
}

TEST(FMeasure, WeighsPrecisionAgainstRecall) {
  // Another order of multiplying ends in other bits.
  EXPECT_EQ(f_measure(0.8, 0.9, 3.0), 0.888888888888889);
  // Its square is beyond all numbers: only recall counts.
  EXPECT_EQ(f_measure(0.8, 0.9, 1e200), 0.9);
  EXPECT_EQ(f_measure(0.0, 0.9, 1e200), 0.0);
}

}  // namespace
}  // namespace vek

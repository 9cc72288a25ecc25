#include "learning/classifiers.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace vek {
namespace {

TEST(Classifiers, HaveEachARecordAtItsPlaceAndALetterOfItsOwn) {
  std::string names;
  std::set<char> letters;
  for (const Algorithm algorithm : {Algorithm::winnow, Algorithm::rocchio,
                                    Algorithm::sbc, Algorithm::linear}) {
    const Classifier &record = classifier_of(algorithm);
    EXPECT_EQ(record.algorithm, algorithm);
    names += std::string(record.name) + ' ';
    letters.insert(record.option_letter);
  }
  EXPECT_EQ(names, "Winnow Rocchio SBC Linear ");
  EXPECT_EQ(letters.size(), classifiers().size());
}

}  // namespace
}  // namespace vek

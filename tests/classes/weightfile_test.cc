#include "classes/weightfile.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>

namespace vek {
namespace {

ClassProfile make_profile() {
  ClassProfile profile;
  profile[70] = {.pos_weight = 1.0 / 3.0, .neg_weight = 5e-324};
  profile[2] = {.pos_weight = 0.2, .neg_weight = 1e+100};
  profile.set_threshold(2.0 / 3.0);
  return profile;
}

TEST(WeightFile, HoldsWeightsInFullPrecisionByTerm) {
  std::ostringstream os;
  EXPECT_TRUE(write_winnow_weights(os, make_profile()));
  EXPECT_EQ(os.str(),
            "2\t0.6666666666666666\n"
            "2\t0.2\t1e+100\n"
            "70\t0.3333333333333333\t5e-324\n");
  ClassProfile profile;
  profile[2] = {};
  profile[70] = {};
  profile.set_threshold(0.666667);
  EXPECT_TRUE(parse_winnow_weights(os.str(), profile));
  EXPECT_EQ(profile.threshold(), 2.0 / 3.0);
  EXPECT_EQ(profile.find(70)->pos_weight, 1.0 / 3.0);
  EXPECT_EQ(profile.find(70)->neg_weight, 5e-324);
  // Set by hand in the class's own file.
  profile.set_threshold(0.7);
  EXPECT_TRUE(parse_winnow_weights(os.str(), profile));
  EXPECT_EQ(profile.threshold(), 0.7);
}

TEST(WeightFile, KeepsWeightsBeyondAllBounds) {
  const char *text = "2\t-inf\n2\tinf\tnan\n70\t-nan\t-0\n";
  ClassProfile profile = make_profile();
  profile.set_threshold(-std::numeric_limits<double>::infinity());
  ASSERT_TRUE(parse_winnow_weights(text, profile));
  std::ostringstream os;
  write_winnow_weights(os, profile);
  EXPECT_EQ(os.str(), text);
}

TEST(WeightFile, RefusesOtherTextsAndLeavesWeightsOfZero) {
  for (const char *text : {
           "", "2\n2\t1\t1\n70\t1\t1\n",
           "1\t1\n2\t0.2\t1\n",                  // too few entries
           "3\t1\n2\t1\t1\n70\t1\t1\n71\t1\t1",  // too many
           "2\t1\n2\t1\t1\n71\t1\t1\n",          // another term
           "2\t1\n70\t1\t1\n2\t1\t1\n",          // out of order
           "2\t1\n2\t1\t1\n70\t1\n",             // cut
           "2\t1\n2\t1\tINF\n70\t1\t1\n",
           "2\t1\n2\t1\t1\n70\t1\t1\n3",  // more behind it
       }) {
    ClassProfile profile = make_profile();
    EXPECT_FALSE(parse_winnow_weights(text, profile)) << text;
    for (const auto &[term, entry] : profile)
      EXPECT_EQ(std::abs(entry.pos_weight) + std::abs(entry.neg_weight), 0.0);
  }
}

}  // namespace
}  // namespace vek

#include "learning/bounds.h"

#include <limits>
#include <string>

#include "support/collection_fixture.h"

namespace vek {
namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();

class BoundlessWeights : public CollectionTest {
 protected:
  BoundlessWeights() {
    train("d1", {{0, 1}}, {"a/b"});
    train("d2", {{0, 1}}, {"c"});
    gather();
  }
  void warn() { warn_of_boundless_weights(training()); }
};

TEST_F(BoundlessWeights, AreToldWithTheSettingToBlame) {
  const struct {
    Algorithm algorithm;
    double pos, neg, alpha, beta;  // Rocchio's beta and gamma
    const char *blame;
  } cases[] = {
      {Algorithm::winnow, infinite, 0, 3.0, 0.5, "alpha is too large"},
      {Algorithm::winnow, infinite, 0, 1.1, 9.0, "beta is too large"},
      {Algorithm::winnow, infinite, 0, 1.1, 1.1,
       "beta is too large, as it is above 1"},
      {Algorithm::winnow, infinite, 0, 1.1, 0.9, "thetaplus is too large"},
      {Algorithm::winnow, 0, infinite, 1.1, 0.9, "thetamin is too small"},
      {Algorithm::rocchio, -infinite, 0, 1e9, 1e300, "gamma is too large"},
      {Algorithm::rocchio, std::numeric_limits<double>::quiet_NaN(), 0, 1e300,
       4.0, "beta is too large"},
  };
  for (const auto &[algorithm, pos, neg, alpha, beta, blame] : cases) {
    params.algorithm = algorithm;
    params.winnow.alpha = params.rocchio.beta = alpha;
    params.winnow.beta = params.rocchio.gamma = beta;
    ClassProfileEntry &entry = at("a/b").profile[0];
    entry.pos_weight = 1.0;
    entry.neg_weight = 1.0;
    messages.text.clear();
    warn();
    EXPECT_EQ(messages.text, "");
    entry.pos_weight = pos;
    entry.neg_weight = neg;
    warn();
    EXPECT_EQ(messages.text,
              std::string("WARNING: weights of 1 classes have grown past all "
                          "bounds, those of `a/b' first: ") +
                  blame + '\n');
  }
}

}  // namespace
}  // namespace vek

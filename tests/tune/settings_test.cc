#include "tune/settings.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include "params/rcparser.h"
#include "support/recorded_messages.h"
#include "support/temporary_directory.h"
#include "tune/examples.h"
#include "tune/trial.h"

namespace vek::tuning {
namespace {

// What is tried is what a run reads, and every value is one that it knows.
TEST(TuneSettings, AreThoseOfTheResourceFile) {
  Params own;
  own.term_selection = TermSelection::docfreq;
  own.selectivity = 0.03;
  own.walk = WalkKind::path;
  own.algorithm = Algorithm::rocchio;
  own.rocchio.gamma = 3.5;
  own.linear.loss = LinearLoss::logistic;
  EXPECT_EQ(Settings(Settings(own).params()).description(),
            Settings(own).description());
  std::set<std::string> all;
  for (const Settings &first : first_settings(Settings(own), true)) {
    std::vector<Settings> around = {first};
    for (const Step &step : steps_from(first, true))
      around.push_back(first.with(step.changes));
    for (const Settings &settings : around) {
      EXPECT_TRUE(&settings == &around[0] ||
                  settings.description() != first.description());
      Params read;
      RecordedMessages messages;
      const std::string text = settings.resource_text(own);
      RcParser(&read, text, "x", messages).parse();
      EXPECT_EQ(messages.text, "") << text;
      EXPECT_EQ(
          Settings(read).with("terms " + settings.value("terms")).description(),
          settings.description());
      all.insert(settings.description());
    }
  }
  EXPECT_GT(all.size(), 200U);
}

TEST(TuneExamples, AnyFirstDocumentsAreAFairSample) {
  const TemporaryDirectory directory;
  std::string lines;
  std::string backwards;
  for (int i = 0; i < 300; ++i) {
    const std::string line = "d" + std::to_string(i) +
                             (i % 10 == 0  ? " rare\n"
                              : i % 2 == 0 ? " common often\n"
                                           : " often\n");
    lines += line;
    backwards.insert(0, line);
  }
  write_text("a/train", lines);
  write_text("b/train", backwards);
  Failure failure;
  Examples examples;
  Examples others;
  ASSERT_TRUE(examples.read_list("a", failure));
  ASSERT_TRUE(others.read_list("b", failure));
  examples.choose(1000);
  others.choose(100);
  ASSERT_EQ(examples.size(), 300U);
  ASSERT_EQ(others.size(), 100U);
  EXPECT_EQ(examples.most_classes(), 2U);
  EXPECT_EQ(examples.nr_classes(), 3U);
  int nr_rare = 0;
  for (std::size_t i = 0; i < others.size(); ++i) {
    EXPECT_EQ(examples.examples()[i].name, others.examples()[i].name);
    nr_rare += others.examples()[i].classes[0] == "rare" ? 1 : 0;
  }
  EXPECT_NEAR(nr_rare, 10, 1);
}

TEST(TuneTrial, ErrorOfADifferenceIsThatOfItsDocuments) {
  // One class each: F is the share of right answers. They differ in four of a
  // hundred documents, three of them to the favour of the first.
  Decisions a(100, {1, 0, 0});
  Decisions b = a;
  for (const std::size_t i : {0U, 1U, 2U})
    b[i] = {0, 1, 1};
  a[3] = {0, 1, 1};
  EXPECT_DOUBLE_EQ(quality_of(a, 1.0).f, 0.99);
  EXPECT_DOUBLE_EQ(quality_of(b, 1.0).f, 0.97);
  // By hand: a document counts 1/100 for being right, less F/100.
  const double squares = 3 * std::pow(0.01 - 0.0002, 2) +
                         std::pow(0.01 + 0.0002, 2) + 96 * std::pow(0.0002, 2);
  EXPECT_NEAR(error_of_difference(a, b, 1.0), std::sqrt(squares), 1e-12);
  EXPECT_EQ(error_of_difference(a, a, 1.0), 0.0);
}

}  // namespace
}  // namespace vek::tuning

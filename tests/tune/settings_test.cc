#include "tune/settings.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include "base/messages.h"
#include "params/rcparser.h"
#include "support/temporary_directory.h"
#include "tune/examples.h"
#include "tune/trial.h"

namespace vek::tuning {
namespace {

// What is written is what was tried.
TEST(TuneSettings, ResourceTextReadsBack) {
  Params common;
  common.analyser = "./a -x";
  common.f_parameter = 0.5;
  std::set<std::string> all;
  for (const Settings &first : first_settings(common, true)) {
    std::vector<Settings> around = {first};
    for (const Step &step : steps_from(first, true)) {
      around.push_back(first);
      step.take(around.back());
      EXPECT_NE(description(around.back()), description(first));
    }
    for (const Settings &settings : around) {
      Settings read = {{}, settings.terms};
      Messages messages;
      const std::string text = resource_text(settings.params);
      RcParser parser(&read.params, text, "x", messages);
      parser.parse();
      EXPECT_EQ(parser.nr_errors(), 0U) << text;
      EXPECT_EQ(description(read), description(settings));
      EXPECT_EQ(read.params.general_text(""), settings.params.general_text(""));
      all.insert(description(settings));
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
  write_text("train", lines);
  write_text("train2", backwards);
  Failure failure;
  Examples examples;
  Examples others;
  ASSERT_TRUE(examples.read_list("train", failure));
  ASSERT_TRUE(others.read_list("train2", failure));
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
  for (const std::size_t i : {0, 1, 2})
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

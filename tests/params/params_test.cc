#include "params/params.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "run/options.h"

namespace vek {
namespace {

const char *const default_general =
    "[General]\n"
    "Analyser          \"analyse.pl\"\n"
    "DataDirectory     \"data\"\n"
    "InputDirectory    \"input\"\n"
    "FileDirectory     \"files\"\n"
    "FParameter        1\n"
    "MaxRanks          1\n"
    "MinRanks          1\n"
    "Algorithm         Winnow\n"
    "TermSelection     Uncertainty\n"
    "Incremental       off\n"
    "Save              off\n"
    "Scaling           on\n"
    "Selectivity       0.16\n"
    "Strength          freq\n"
    "Normalize         off\n";

const char *const default_winnow =
    "[Winnow]\n"
    "Alpha             1.1\n"
    "Beta              0.9\n"
    "ThetaPlus         1\n"
    "ThetaMin          1\n"
    "MaxIters          5\n"
    "NegativeWeights  on\n";

// The value in the settings text behind `label`, without the blanks.
std::string shown(const Params &settings, const std::string &label) {
  const std::string text = settings.settings_text();
  const std::size_t line = text.find("\n" + label + " ") + 1;
  const std::size_t value = text.find_first_not_of(' ', line + label.size());
  return text.substr(value, text.find('\n', value) - value);
}

TEST(Params, StartsWithDefaultsThatTheReportShows) {
  EXPECT_EQ(Params().settings_text(),
            std::string(default_general) + "\n" + default_winnow);
  EXPECT_EQ(params.settings_text(), Params().settings_text());
}

TEST(Params, ReportsOnlyTheSelectedAlgorithm) {
  Params settings;
  settings.rocchio().set_gamma(2.0 / 3.0);
  settings.rocchio().set_pivoted(true);
  settings.set_algorithm(Algorithm::rocchio);
  const std::string text = settings.settings_text();
  EXPECT_EQ(text.substr(text.find("\n\n")),
            "\n\n[Rocchio]\n"
            "Beta              16\n"
            "Gamma             0.666667\n"
            "NegativeWeights   off\n");
  settings.set_algorithm(Algorithm::sbc);
  const std::string sbc_text = settings.settings_text();
  EXPECT_EQ(sbc_text.substr(sbc_text.find("\n\n")),
            "\n\n[SBC]\n"
            "Laplace           on\n"
            "MaxSignif         10000\n");
}

TEST(Params, ShowsSelectivityOnlyWhereItSelects) {
  struct Case {
    double selectivity;
    TermSelection selection;
    std::string shown;
  };
  const std::vector<Case> cases = {
      {0.5, TermSelection::infogain, "0.5"},
      {0.5, TermSelection::none, "off"},
      {0.0, TermSelection::tfidf, "off"},
      {1e-9, TermSelection::tfidf, "1e-09"},
  };
  for (const Case &one : cases) {
    Params settings;
    settings.set_selectivity(one.selectivity);
    settings.set_term_selection(one.selection);
    EXPECT_EQ(shown(settings, "Selectivity"), one.shown);
    EXPECT_EQ(settings.selectivity(), one.selectivity);
  }
}

TEST(Params, ShowsLargeNumbersAndQuotesAsTheyAre) {
  Params settings;
  settings.set_analyser("a \"b\" c\\");
  settings.set_max_ranks(4294967295);
  settings.set_f_parameter(1234567.0);
  EXPECT_EQ(shown(settings, "Analyser"), "\"a \"b\" c\\\"");
  EXPECT_EQ(shown(settings, "MaxRanks"), "4294967295");
  EXPECT_EQ(shown(settings, "FParameter"), "1.23457e+06");
}

TEST(Params, ShowsTheReportFromItsLevelOn) {
  std::string program = "vek";
  std::string verbose = "-vv";
  std::string examples = "examples";
  std::vector<char *> arguments = {program.data(), verbose.data(),
                                   examples.data(), nullptr};
  testing::internal::CaptureStderr();
  options.parse_options(3, arguments.data());
  testing::internal::GetCapturedStderr();
  testing::internal::CaptureStderr();
  params.print_parameters(3);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  testing::internal::CaptureStderr();
  params.print_parameters(2);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            params.settings_text() + "\n");
}

}  // namespace
}  // namespace vek

#include "params/params.h"

#include <gtest/gtest.h>

#include <string>

namespace vek {
namespace {

TEST(Params, ShowsSelectivityOnlyWhereItSelects) {
  const struct {
    double selectivity;
    TermSelection selection;
    const char *shown;
  } cases[] = {
      {0.5, TermSelection::infogain, "0.5"},
      {0.5, TermSelection::none, "off"},
      {0.0, TermSelection::tfidf, "off"},
      {1e-9, TermSelection::tfidf, "1e-09"},
  };
  for (const auto &one : cases) {
    Params settings;
    settings.set_selectivity(one.selectivity);
    settings.set_term_selection(one.selection);
    EXPECT_NE(settings.settings_text().find("\nSelectivity       " +
                                            std::string(one.shown) + "\n"),
              std::string::npos);
    EXPECT_EQ(settings.selectivity(), one.selectivity);
  }
}

}  // namespace
}  // namespace vek

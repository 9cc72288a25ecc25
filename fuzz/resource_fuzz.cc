// Any bytes as a resource file: the parser ends, and what it has set can be
// printed. Without an error, the same bytes set the same again.
#include <cmath>
#include <sstream>
#include <string>

#include "learning/classifiers.h"
#include "params/params.h"
#include "params/rcparser.h"
#include "target.h"

using vek::fuzzing::require;

namespace {

std::string settings_text(const vek::Params &settings) {
  std::ostringstream text;
  text << settings.general_text("");
  for (const vek::Classifier &classifier : vek::classifiers())
    classifier.write_settings(text, settings);
  return text.str();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  const std::string_view text = vek::fuzzing::text_of(data, size);
  vek::Params settings;
  vek::Messages messages;
  vek::RcParser parser(&settings, text, "resource", messages);
  parser.parse();
  vek::RcParser again(&settings, text, "resource", messages);
  const std::string before = settings_text(settings);
  again.parse();
  require(again.nr_errors() == parser.nr_errors());
  require(settings_text(settings) == before);
  for (const double number :
       {settings.f_parameter, settings.selectivity, settings.winnow.alpha,
        settings.winnow.beta, settings.winnow.theta_plus,
        settings.winnow.theta_min, settings.rocchio.beta,
        settings.rocchio.gamma, settings.linear.cost}) {
    require(std::isfinite(number));
  }
  return 0;
}

#include "learning/bounds.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>

namespace vek {
namespace {

bool is_boundless(const ClassProfileEntry &entry) {
  return !std::isfinite(entry.pos_weight) || !std::isfinite(entry.neg_weight);
}

// A weight that at most doubles with each update has had a thousand of them, so
// the factors are fit, but no weight was ever good enough for a theta: the
// upper one if the positive weight has grown, which is what promotions do.
std::string winnow_blame(const WinnowParams &settings,
                         const ClassProfileEntry &entry) {
  if (std::max(settings.alpha, settings.beta) > 2.0)
    return settings.alpha >= settings.beta ? "alpha is too large"
                                           : "beta is too large";
  if (settings.beta > 1.0)
    return "beta is too large, as it is above 1";
  return std::isfinite(entry.pos_weight) ? "thetamin is too small"
                                         : "thetaplus is too large";
}

std::string blame(const Params &params, const ClassProfileEntry &entry) {
  switch (params.algorithm) {
    case Algorithm::winnow:
      return winnow_blame(params.winnow, entry);
    case Algorithm::rocchio:
      return params.rocchio.beta >= params.rocchio.gamma ? "beta is too large"
                                                         : "gamma is too large";
    case Algorithm::sbc:
    case Algorithm::linear:
      break;
  }
  return "the documents' weights are too large";
}

}  // namespace

void warn_of_boundless_weights(const Training &training) {
  std::size_t nr_classes = 0;
  std::string first;
  for (const auto &[key, data] : training.classes) {
    const auto place = std::find_if(data.profile.begin(), data.profile.end(),
                                    [](const ClassProfile::Slot &slot) {
                                      return is_boundless(slot.entry);
                                    });
    if (place == data.profile.end())
      continue;
    if (nr_classes++ == 0) {
      first = "those of `" + training.classes.full_name(data.id) +
              "' first: " + blame(training.params, place->entry);
    }
  }
  if (nr_classes > 0) {
    training.messages.warning("weights of " + std::to_string(nr_classes) +
                              " classes have grown past all bounds, " + first);
  }
}

}  // namespace vek

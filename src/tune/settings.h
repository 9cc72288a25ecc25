// The settings among which a search chooses.
//
// What is tried was chosen by trials on collections of several kinds: short and
// long texts, one class or several to a document, flat and deep. The classifier
// sbc is not among it: its scores are no probabilities that compare across
// classes, and on none of them was it near the others.
#ifndef VEK_TUNE_SETTINGS_H_
#define VEK_TUNE_SETTINGS_H_

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "params/params.h"

namespace vek::tuning {

// Which terms of the documents count.
enum class Terms { all, words };  // words: those without a modifier

struct Settings {
  Params params;
  Terms terms = Terms::all;
};

// What a search begins with, best first as far as is known: the settings at
// hand, and those that did well elsewhere. `common` has all that is not to be
// changed, and how to judge.
std::vector<Settings> first_settings(const Params &common, bool with_words);

// A step away from some settings; steps along the same axis exclude each other.
struct Step {
  int axis = 0;
  std::function<void(Settings &settings)> take;
};
std::vector<Step> steps_from(const Settings &settings, bool with_words);

// All that can differ between two trials, for people: names and values,
// separated by tabs, of which the last is a list. Equal for equal settings.
std::string description(const Settings &settings);
inline constexpr std::string_view description_head =
    "training\tterms\ttermselection\tselectivity\tstrength\tnormalize\twalk\t"
    "maxranks\tinsignificant\tparameters";

// A resource file, without its first comment.
std::string resource_text(const Params &params);

}  // namespace vek::tuning

#endif  // VEK_TUNE_SETTINGS_H_

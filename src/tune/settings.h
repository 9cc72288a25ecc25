// The settings among which a search chooses: a resource file in the making.
//
// What is tried was chosen by trials on collections of several kinds: short and
// long texts, one class or several to a document, flat and deep. The classifier
// sbc is not among it: its scores do not compare across classes, and on none of
// them was it near the others.
#ifndef VEK_TUNE_SETTINGS_H_
#define VEK_TUNE_SETTINGS_H_

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "params/params.h"

namespace vek::tuning {

// Values by key, both as a resource file has them; a key of a classifier is
// `winnow.alpha`. Beside those keys there is `terms`: `all`, or `words` for
// terms without a modifier.
class Settings {
 public:
  // Those of `params`, with numbers of six digits.
  explicit Settings(const Params &params);

  // The same with other values for some keys: "strength ltc maxranks 5".
  Settings with(std::string_view changes) const;
  // Of a key that there is.
  const std::string &value(const std::string &key) const {
    return values_.at(key);
  }

  // The values, with tabs between them; of the classifiers' own keys those of
  // the one that is chosen, as one list. Equal for equal settings.
  std::string description() const;
  static std::string description_head();

  // The sections of a resource file, with the analyser, the directories and
  // the number f of `place`.
  std::string resource_text(const Params &place) const;
  // What that file says.
  Params params() const;

 private:
  std::vector<std::string> own_keys() const;

  std::map<std::string, std::string> values_;
};

// What a search begins with, best first as far as is known: what did well
// elsewhere, and the settings at hand.
std::vector<Settings> first_settings(const Settings &own, bool with_words);

// Changes of some settings; those along one axis exclude each other.
struct Step {
  int axis = 0;
  std::string_view changes;
};
std::vector<Step> steps_from(const Settings &settings, bool with_words);

}  // namespace vek::tuning

#endif  // VEK_TUNE_SETTINGS_H_

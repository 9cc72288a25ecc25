#include "tune/settings.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <cstdlib>
#include <locale>
#include <sstream>

#include "base/messages.h"
#include "learning/classifiers.h"
#include "params/rcparser.h"

namespace vek::tuning {
namespace {

constexpr std::array described = {"training",    "terms",    "termselection",
                                  "selectivity", "strength", "normalize",
                                  "walk",        "maxranks", "insignificant"};

std::string in_small_letters(std::string text) {
  for (char &character : text)
    character = char(std::tolower(static_cast<unsigned char>(character)));
  return text;
}

// The report of the settings has some words that a resource file has not.
std::string as_written(const std::string &key, const std::string &shown) {
  const std::string value = in_small_letters(shown);
  if (key == "selectivity" && value == "off")
    return "0";
  if (value == "termfrequency")
    return "termfreq";
  if (value == "documentfrequency")
    return "docfreq";
  return value == "informationgain" ? "infogain" : value;
}

}  // namespace

Settings::Settings(const Params &params) {
  const Classifier &chosen = classifier_of(params.algorithm);
  std::ostringstream report;
  report.imbue(std::locale::classic());
  report << params.general_text(chosen.name);
  for (const Classifier &classifier : classifiers())
    classifier.write_settings(report, params);
  std::istringstream lines(report.str());
  std::string line;
  std::string section;
  while (std::getline(lines, line)) {
    if (line.starts_with('[')) {
      section = in_small_letters(line.substr(1, line.find(']') - 1)) + '.';
      continue;
    }
    std::istringstream words(line);
    std::string key;
    std::string value;
    words >> key >> value;
    key = in_small_letters(key);
    if (section != "general.")
      values_[section + key] = as_written(key, value);
    else
      values_[key] = as_written(key, value);
  }
  values_["training"] = in_small_letters(chosen.name);
  values_["heldout"] = std::to_string(params.held_out);
  values_["walk"] = params.walk == WalkKind::path ? "path" : "steps";
  values_["insignificant"] =
      params.insignificant == Insignificant::best ? "best" : "none";
  values_["terms"] = "all";
}

Settings Settings::with(std::string_view changes) const {
  Settings changed = *this;
  std::istringstream words{std::string(changes)};
  std::string key;
  std::string value;
  while (words >> key >> value)
    changed.values_[key] = value;
  return changed;
}

std::vector<std::string> Settings::own_keys() const {
  std::vector<std::string> keys;
  for (const auto &[key, text] : values_) {
    if (key.starts_with(value("training") + '.'))
      keys.push_back(key);
  }
  return keys;
}

std::string Settings::description_head() {
  std::string text;
  for (const char *key : described)
    text += key + std::string("\t");
  return text + "parameters";
}

std::string Settings::description() const {
  std::string text;
  for (const char *key : described) {
    // Without a bound it does not matter what for.
    const bool is_idle =
        key == std::string_view("termselection") && value("selectivity") == "0";
    text += (is_idle ? "none" : value(key)) + '\t';
  }
  std::string_view separator;
  for (const std::string &key : own_keys()) {
    text += separator;
    text += key.substr(key.find('.') + 1) + ' ' + value(key);
    separator = ", ";
  }
  return text;
}

std::string Settings::resource_text(const Params &place) const {
  std::string text =
      "[General]\n"
      "# What is there. Names are relative to the directory in which vek is "
      "called.\n";
  const auto line = [&](const std::string &key, const std::string &what) {
    text += key.substr(key.find('.') + 1) + ' ' + what + '\n';
  };
  const auto quoted_line = [&](const char *key, const std::string &what) {
    line(key, '"' + what + '"');
  };
  quoted_line("analyser", place.analyser);
  quoted_line("datadirectory", place.data_directory);
  quoted_line("filedirectory", place.file_directory);
  quoted_line("inputdirectory", place.input_directory);
  if (place.analyser_timeout != 0)
    line("analysertimeout", std::to_string(place.analyser_timeout));
  for (const char *key : {"fparameter", "save"})
    line(key, value(key));
  if (place.predictions)
    line("predictions", "on");
  text += "\n# How documents are weighed.\n";
  for (const char *key :
       {"termselection", "selectivity", "strength", "normalize"}) {
    line(key, value(key));
  }
  text +=
      "\n# How they are judged: thresholds and probabilities come from "
      "documents that are\n# held out in turn. maxranks is the largest number "
      "of classes of a document.\n";
  for (const char *key : {"heldout", "walk", "insignificant", "maxranks"})
    line(key, value(key));
  text += "\n# The classifier.\n";
  line("training", value("training"));
  text += "\n[" + value("training") + "]\n";
  for (const std::string &key : own_keys())
    line(key, value(key));
  return text;
}

Params Settings::params() const {
  Params params;
  const std::string text = resource_text(params);
  Messages messages;
  RcParser(&params, text, "settings", messages).parse();
  return params;
}

std::vector<Settings> first_settings(const Settings &own, bool with_words) {
  const Settings good = own.with(
      "termselection uncertainty selectivity 0 strength ltc normalize vector "
      "winnow.negativeweights on rocchio.negativeweights on");
  std::vector<Settings> starts;
  for (const char *changes :
       {"training linear linear.loss squared linear.cost 0.5",
        "training winnow winnow.thetaplus 3 winnow.thetamin 0.5 winnow.alpha "
        "1.1 winnow.beta 0.9 winnow.maxiters 5",
        "training linear linear.loss hinge linear.cost 0.5",
        "training winnow winnow.thetaplus 10 winnow.thetamin 0.3 winnow.alpha "
        "1.05 winnow.beta 0.95 winnow.maxiters 10",
        "training linear linear.loss logistic linear.cost 8",
        "training rocchio rocchio.beta 16 rocchio.gamma 16",
        "training rocchio rocchio.beta 16 rocchio.gamma 4"}) {
    starts.push_back(good.with(changes));
  }
  std::vector<Settings> all;
  for (const char *strength : {"strength ltc", "strength bool"}) {
    for (const Settings &start : starts) {
      all.push_back(start.with(strength));
      if (with_words)
        all.push_back(all.back().with("terms words"));
    }
  }
  for (const std::size_t number : {0U, 1U, 5U}) {
    all.push_back(starts[number].with("selectivity 0.1"));
    all.push_back(starts[number].with("strength sqrt normalize linear"));
  }
  if (own.value("training") != "sbc")
    all.push_back(own);
  return all;
}

namespace {

// Neighbours differ little; a step goes to the next one or two, or anywhere.
struct Axis {
  const char *training = nullptr;  // null: any
  int furthest = 0;
  std::vector<std::string_view> values = {};
};

const std::vector<Axis> &axes() {
  static const std::vector<Axis> all = {
      {"winnow",
       1,
       {"winnow.thetaplus 1 winnow.thetamin 1",
        "winnow.thetaplus 1.5 winnow.thetamin 0.7",
        "winnow.thetaplus 3 winnow.thetamin 0.5",
        "winnow.thetaplus 5 winnow.thetamin 0.4",
        "winnow.thetaplus 10 winnow.thetamin 0.3",
        "winnow.thetaplus 20 winnow.thetamin 0.2"}},
      {"winnow",
       1,
       {"winnow.alpha 1.02 winnow.beta 0.98",
        "winnow.alpha 1.05 winnow.beta 0.95",
        "winnow.alpha 1.1 winnow.beta 0.9", "winnow.alpha 1.2 winnow.beta 0.8",
        "winnow.alpha 1.4 winnow.beta 0.7"}},
      {"winnow",
       1,
       {"winnow.maxiters 3", "winnow.maxiters 5", "winnow.maxiters 10",
        "winnow.maxiters 20", "winnow.maxiters 40"}},
      {"rocchio",
       1,
       {"rocchio.beta 16 rocchio.gamma 0", "rocchio.beta 16 rocchio.gamma 2",
        "rocchio.beta 16 rocchio.gamma 4", "rocchio.beta 16 rocchio.gamma 8",
        "rocchio.beta 16 rocchio.gamma 16",
        "rocchio.beta 16 rocchio.gamma 32"}},
      {"linear",
       2,
       {"linear.cost 0.0625", "linear.cost 0.125", "linear.cost 0.25",
        "linear.cost 0.5", "linear.cost 1", "linear.cost 2", "linear.cost 4",
        "linear.cost 8", "linear.cost 16", "linear.cost 32"}},
      // Logistic regression wants higher costs.
      {"linear",
       9,
       {"linear.loss hinge linear.cost 0.5",
        "linear.loss squared linear.cost 0.5",
        "linear.loss logistic linear.cost 8"}},
      {nullptr,
       9,
       {"strength ltc", "strength sqrt", "strength bool", "strength freq"}},
      {nullptr, 9, {"normalize vector", "normalize linear", "normalize off"}},
      {nullptr,
       9,
       {"selectivity 0", "termselection uncertainty selectivity 0.05",
        "termselection uncertainty selectivity 0.1",
        "termselection uncertainty selectivity 0.2",
        "termselection infogain selectivity 0.0001",
        "termselection infogain selectivity 0.0005"}},
      {nullptr, 9, {"terms all", "terms words"}}};
  return all;
}

}  // namespace

std::vector<Step> steps_from(const Settings &settings, bool with_words) {
  std::vector<Step> steps;
  for (std::size_t i = 0; i < axes().size(); ++i) {
    const Axis &axis = axes()[i];
    const bool is_theirs =
        axis.training == nullptr || axis.training == settings.value("training");
    if (!is_theirs || (!with_words && axis.values[0] == "terms all"))
      continue;
    const auto here = std::ranges::find(
        axis.values, settings.description(), [&](std::string_view changes) {
          return settings.with(changes).description();
        });
    for (auto there = axis.values.begin(); there != axis.values.end();
         ++there) {
      // From a value that is not there all are near.
      if (there != here && (here == axis.values.end() ||
                            std::abs(there - here) <= axis.furthest)) {
        steps.push_back({int(i), *there});
      }
    }
  }
  return steps;
}

}  // namespace vek::tuning

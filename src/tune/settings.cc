#include "tune/settings.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <span>

namespace vek::tuning {
namespace {

// Each in an order in which neighbours differ little.
struct Gap {
  double theta_plus;
  double theta_min;
};
constexpr std::array gaps = {Gap{1.0, 1.0}, Gap{1.5, 0.7},  Gap{3.0, 0.5},
                             Gap{5.0, 0.4}, Gap{10.0, 0.3}, Gap{20.0, 0.2}};
struct Rates {
  double alpha;
  double beta;
};
constexpr std::array rates = {Rates{1.02, 0.98}, Rates{1.05, 0.95},
                              Rates{1.1, 0.9}, Rates{1.2, 0.8},
                              Rates{1.4, 0.7}};
constexpr std::array<std::uint32_t, 5> pass_numbers = {3, 5, 10, 20, 40};
// The weight of other documents beside 16 for a class's own.
constexpr std::array gammas = {0.0, 2.0, 4.0, 8.0, 16.0, 32.0};
constexpr std::array costs = {0.0625, 0.125, 0.25, 0.5,  1.0,
                              2.0,    4.0,   8.0,  16.0, 32.0};
constexpr std::array losses = {LinearLoss::hinge, LinearLoss::squared,
                               LinearLoss::logistic};
constexpr std::array strengths = {Strength::ltc, Strength::sqrt,
                                  Strength::boolean, Strength::freq};
constexpr std::array normalisations = {Normalize::vector, Normalize::linear,
                                       Normalize::off};
struct Choice {
  TermSelection term_selection;
  double selectivity;
};
constexpr std::array choices = {Choice{TermSelection::uncertainty, 0.0},
                                Choice{TermSelection::uncertainty, 0.05},
                                Choice{TermSelection::uncertainty, 0.1},
                                Choice{TermSelection::uncertainty, 0.2},
                                Choice{TermSelection::infogain, 0.0001},
                                Choice{TermSelection::infogain, 0.0005}};

const char *name_of(Algorithm algorithm) {
  constexpr std::array names = {"winnow", "rocchio", "sbc", "linear"};
  return names.at(std::size_t(algorithm));
}
const char *name_of(TermSelection selection) {
  constexpr std::array names = {"none",    "uncertainty", "termfreq",
                                "docfreq", "tfidf",       "infogain"};
  return names.at(std::size_t(selection));
}
const char *name_of(Strength strength) {
  constexpr std::array names = {"freq", "bool", "sqrt", "ltc"};
  return names.at(std::size_t(strength) - std::size_t(Strength::freq));
}
const char *name_of(Normalize normalize) {
  constexpr std::array names = {"off", "linear", "vector"};
  return names.at(std::size_t(normalize) - std::size_t(Normalize::off));
}
const char *name_of(LinearLoss loss) {
  constexpr std::array names = {"hinge", "squared", "logistic"};
  return names.at(std::size_t(loss));
}
const char *name_of(WalkKind walk) {
  return walk == WalkKind::path ? "path" : "steps";
}
const char *name_of(Insignificant insignificant) {
  return insignificant == Insignificant::best ? "best" : "none";
}

// As a resource file has it, which knows no exponents.
std::string number(double value) {
  char digits[400];
  const auto end = std::to_chars(digits, digits + sizeof digits, value,
                                 std::chars_format::fixed);
  return {digits, end.ptr};
}

// "key value" of the classifier's own settings.
std::vector<std::string> own_settings(const Params &params) {
  switch (params.algorithm) {
    case Algorithm::winnow:
      return {"thetaplus " + number(params.winnow.theta_plus),
              "thetamin " + number(params.winnow.theta_min),
              "alpha " + number(params.winnow.alpha),
              "beta " + number(params.winnow.beta),
              "maxiters " + std::to_string(params.winnow.max_iters),
              std::string("negativeweights ") +
                  on_off(params.winnow.negative_weights)};
    case Algorithm::rocchio:
      return {"beta " + number(params.rocchio.beta),
              "gamma " + number(params.rocchio.gamma),
              std::string("negativeweights ") +
                  on_off(params.rocchio.negative_weights)};
    case Algorithm::linear:
      return {"cost " + number(params.linear.cost),
              std::string("loss ") + name_of(params.linear.loss)};
    case Algorithm::sbc:
      break;
  }
  return {std::string("laplace ") + on_off(params.sbc.laplace),
          "maxsignif " + std::to_string(params.sbc.max_signif)};
}

Params rocchio(Params params, double gamma) {
  params.algorithm = Algorithm::rocchio;
  params.rocchio.beta = 16.0;
  params.rocchio.gamma = gamma;
  params.rocchio.negative_weights = true;
  return params;
}

Params winnow(Params params, Gap gap, Rates factors, std::uint32_t nr_passes) {
  params.algorithm = Algorithm::winnow;
  params.winnow = {nr_passes,      factors.alpha, factors.beta,
                   gap.theta_plus, gap.theta_min, true};
  return params;
}

Params linear(Params params, LinearLoss loss, double cost) {
  params.algorithm = Algorithm::linear;
  params.linear = {cost, loss};
  return params;
}

}  // namespace

std::vector<Settings> first_settings(const Params &common, bool with_words) {
  Params good = common;
  good.term_selection = TermSelection::uncertainty;
  good.selectivity = 0.0;
  good.strength = Strength::ltc;
  good.normalize = Normalize::vector;
  const std::array starts = {linear(good, LinearLoss::squared, 0.5),
                             winnow(good, {3.0, 0.5}, {1.1, 0.9}, 5),
                             linear(good, LinearLoss::hinge, 0.5),
                             winnow(good, {10.0, 0.3}, {1.05, 0.95}, 10),
                             linear(good, LinearLoss::logistic, 8.0),
                             rocchio(good, 16.0),
                             rocchio(good, 4.0)};
  std::vector<Settings> all;
  const auto add = [&](const Params &params) {
    all.push_back({params, Terms::all});
    if (with_words)
      all.push_back({params, Terms::words});
  };
  for (const Params &start : starts)
    add(start);
  for (const Params &start : starts) {
    Params other = start;
    other.strength = Strength::boolean;
    add(other);
  }
  for (const Params &start : {starts[0], starts[1], starts[5]}) {
    Params other = start;
    other.selectivity = 0.1;
    all.push_back({other, Terms::all});
    other = start;
    other.strength = Strength::sqrt;
    other.normalize = Normalize::linear;
    all.push_back({other, Terms::all});
  }
  if (common.algorithm != Algorithm::sbc)
    all.push_back({common, Terms::all});
  return all;
}

namespace {

// The steps along one axis, of which the settings have some value.
template <class Value, class Is, class Set>
void add_steps(std::vector<Step> &steps, int axis, const Settings &settings,
               std::span<const Value> values, std::ptrdiff_t furthest, Is is,
               Set set) {
  std::ptrdiff_t here = -1;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (is(settings.params, values[i]))
      here = std::ptrdiff_t(i);
  }
  for (std::size_t i = 0; i < values.size(); ++i) {
    const std::ptrdiff_t distance = std::abs(std::ptrdiff_t(i) - here);
    // From a value of somebody else's every one is near.
    if (distance == 0 || (here >= 0 && distance > furthest))
      continue;
    steps.push_back({axis, [set, value = values[i]](Settings &changed) {
                       set(changed.params, value);
                     }});
  }
}

constexpr std::ptrdiff_t any = 100;

// Logistic regression wants costs that are that much higher.
void set_loss(Params &params, LinearLoss loss) {
  constexpr double factor = 8.0;
  LinearParams &own = params.linear;
  if (loss == LinearLoss::logistic)
    own.cost = std::min(own.cost * factor, costs.back());
  else if (own.loss == LinearLoss::logistic)
    own.cost = std::max(own.cost / factor, costs.front());
  own.loss = loss;
}

}  // namespace

std::vector<Step> steps_from(const Settings &settings, bool with_words) {
  std::vector<Step> steps;
  int axis = 0;
  const auto add = [&]<class Value, std::size_t size>(
                       const std::array<Value, size> &values,
                       std::ptrdiff_t furthest, auto is, auto set) {
    add_steps<Value>(steps, axis++, settings, values, furthest, is, set);
  };
  switch (settings.params.algorithm) {
    case Algorithm::winnow:
      add(
          gaps, 1,
          [](const Params &p, Gap gap) {
            return p.winnow.theta_plus == gap.theta_plus &&
                   p.winnow.theta_min == gap.theta_min;
          },
          [](Params &p, Gap gap) {
            p.winnow.theta_plus = gap.theta_plus;
            p.winnow.theta_min = gap.theta_min;
          });
      add(
          rates, 1,
          [](const Params &p, Rates factors) {
            return p.winnow.alpha == factors.alpha &&
                   p.winnow.beta == factors.beta;
          },
          [](Params &p, Rates factors) {
            p.winnow.alpha = factors.alpha;
            p.winnow.beta = factors.beta;
          });
      add(
          pass_numbers, 1,
          [](const Params &p, std::uint32_t number) {
            return p.winnow.max_iters == number;
          },
          [](Params &p, std::uint32_t number) { p.winnow.max_iters = number; });
      break;
    case Algorithm::rocchio:
      add(
          gammas, 1,
          [](const Params &p, double gamma) {
            return p.rocchio.beta == 16.0 && p.rocchio.gamma == gamma;
          },
          [](Params &p, double gamma) {
            p.rocchio.beta = 16.0;
            p.rocchio.gamma = gamma;
          });
      break;
    case Algorithm::linear:
      add(
          costs, 2,
          [](const Params &p, double cost) { return p.linear.cost == cost; },
          [](Params &p, double cost) { p.linear.cost = cost; });
      add(
          losses, any,
          [](const Params &p, LinearLoss loss) {
            return p.linear.loss == loss;
          },
          set_loss);
      break;
    case Algorithm::sbc:
      break;
  }
  add(
      strengths, any,
      [](const Params &p, Strength strength) { return p.strength == strength; },
      [](Params &p, Strength strength) { p.strength = strength; });
  add(
      normalisations, any,
      [](const Params &p, Normalize kind) { return p.normalize == kind; },
      [](Params &p, Normalize kind) { p.normalize = kind; });
  add(
      choices, any,
      [](const Params &p, Choice choice) {
        return p.selectivity == choice.selectivity &&
               (p.selectivity == 0.0 ||
                p.term_selection == choice.term_selection);
      },
      [](Params &p, Choice choice) {
        p.term_selection = choice.term_selection;
        p.selectivity = choice.selectivity;
      });
  if (with_words) {
    steps.push_back({axis, [](Settings &changed) {
                       changed.terms = changed.terms == Terms::all
                                           ? Terms::words
                                           : Terms::all;
                     }});
  }
  return steps;
}

std::string description(const Settings &settings) {
  const Params &params = settings.params;
  const bool selects =
      params.selectivity > 0.0 && params.term_selection != TermSelection::none;
  std::string text = name_of(params.algorithm);
  text += settings.terms == Terms::all ? "\tall\t" : "\twords\t";
  text += selects ? name_of(params.term_selection) : "none";
  text += '\t' + number(selects ? params.selectivity : 0.0) + '\t';
  text += name_of(params.strength) + std::string("\t");
  text += name_of(params.normalize) + std::string("\t");
  text += name_of(params.walk) + std::string("\t");
  text += std::to_string(params.max_ranks) + '\t';
  text += name_of(params.insignificant) + std::string("\t");
  for (const std::string &own : own_settings(params))
    text += own + ", ";
  text.resize(text.size() - 2);
  return text;
}

std::string resource_text(const Params &params) {
  std::string text =
      "[General]\n# What is there. Names are relative to the "
      "directory in which vek is called.\n";
  const auto line = [&](const char *key, const std::string &value) {
    text += key + (' ' + value) + '\n';
  };
  line("analyser", '"' + params.analyser + '"');
  line("datadirectory", '"' + params.data_directory + '"');
  line("filedirectory", '"' + params.file_directory + '"');
  line("inputdirectory", '"' + params.input_directory + '"');
  if (params.analyser_timeout != 0)
    line("analysertimeout", std::to_string(params.analyser_timeout));
  if (params.f_parameter != 1.0)
    line("fparameter", number(params.f_parameter));
  if (params.save)
    line("save", "on");
  text += "\n# How documents are weighed.\n";
  if (params.selectivity > 0.0 &&
      params.term_selection != TermSelection::none) {
    line("termselection", name_of(params.term_selection));
  }
  line("selectivity", number(params.selectivity));
  line("strength", name_of(params.strength));
  line("normalize", name_of(params.normalize));
  text +=
      "\n# How they are judged: thresholds and probabilities come from "
      "documents that are\n# held out in turn. maxranks is the largest "
      "number of classes of a document.\n";
  line("heldout", std::to_string(params.held_out));
  line("walk", name_of(params.walk));
  line("insignificant", name_of(params.insignificant));
  line("maxranks", std::to_string(params.max_ranks));
  text += "\n# The classifier.\n";
  line("training", name_of(params.algorithm));
  text += std::string("\n[") + name_of(params.algorithm) + "]\n";
  for (const std::string &own : own_settings(params))
    text += own + '\n';
  return text;
}

}  // namespace vek::tuning

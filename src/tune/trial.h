// One trial of settings: how well documents are judged by classes that have not
// learnt them.
#ifndef VEK_TUNE_TRIAL_H_
#define VEK_TUNE_TRIAL_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tune/examples.h"
#include "tune/settings.h"

namespace vek::tuning {

struct Trial {
  Settings settings;
  std::size_t nr_docs = 0;  // the first ones
  std::uint32_t nr_parts = 0;
  // Further ways to judge by the same scores: changes of the settings in walk,
  // insignificant and maxranks alone.
  std::vector<std::string> other_judging = {};
};

// The classes of a document that were found, not found, and wrongly assigned.
struct Decision {
  std::uint16_t found = 0;
  std::uint16_t missed = 0;
  std::uint16_t wrong = 0;
};

// For each document of the trial, in the order of their names.
using Decisions = std::vector<Decision>;

// Decisions by the settings, and then by each of the other ways to judge.
std::vector<Decisions> try_out(const Examples &examples, const Trial &trial);

// How much work a trial is, about a million for a second of a processor. What
// the settings say and how large the sample is decide, never a clock.
double work_of(const Settings &settings, std::uint32_t nr_parts,
               const Examples::Size &size);

// Precision, recall and F-measure of summed decisions.
struct Quality {
  double precision = 0.0;
  double recall = 0.0;
  double f = 0.0;
};
Quality quality_of(const Decisions &decisions, double f_parameter);

// The standard error of the difference of two F-measures over the same
// documents: of the root of the summed squares of what each document
// contributes to it, to the first order.
double error_of_difference(const Decisions &a, const Decisions &b,
                           double f_parameter);

}  // namespace vek::tuning

#endif  // VEK_TUNE_TRIAL_H_

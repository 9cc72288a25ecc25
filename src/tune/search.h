// The search for the settings by which held-out training documents are judged
// best.
//
// Four stages, each on more documents or more parts than the one before, as far
// as the budget of work goes (successive halving; Jamieson and Talwalkar,
// Non-stochastic best arm identification and hyperparameter optimization,
// AISTATS 2016):
//   first   all first settings
//   second  the best of each classifier that is not hopeless by then
//   steps   from the best of one or two classifiers, one setting at a time, and
//           the steps that helped together, until none helps
//   last    the best few, each with several ways to judge
// What is chosen depends on the documents, the settings and the budget alone:
// not on time, the number of processors, or the order in which trials end.
#ifndef VEK_TUNE_SEARCH_H_
#define VEK_TUNE_SEARCH_H_

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "tune/examples.h"
#include "tune/settings.h"
#include "tune/trial.h"

namespace vek::tuning {

struct Finding {
  std::size_t number = 0;  // in the order in which a stage has tried
  Settings settings;
  std::size_t nr_docs = 0;
  std::uint32_t nr_parts = 0;
  Quality quality;
  Decisions decisions;
};

class Search {
 public:
  // `own` are the user's settings. `budget` is a multiple of the usual amount
  // of work. Writes a line for each trial to `table`. All must outlive the
  // search.
  Search(const Examples &examples, const Params &own, bool with_words,
         double budget, std::ostream &table);

  // Returns when the search is at its end, or a stop signal has come.
  void run();

  // False if no trial has found any class of a document.
  bool has_found() const { return best_.quality.f > 0.0; }
  const Finding &best() const { return best_; }
  std::size_t nr_trials() const { return nr_trials_; }

 private:
  struct Stage {
    const char *name = "";
    std::size_t nr_docs = 0;
    std::uint32_t nr_parts = 0;
    Examples::Size size;
    double work_left = 0.0;
    std::map<std::string, Finding> findings = {};  // by description
  };

  Stage make_stage(const char *name, double share, std::uint32_t nr_parts,
                   const std::vector<Settings> &typical,
                   double nr_trials) const;
  double work_in(const Stage &stage, const Settings &settings) const;
  // Tries what the stage has not tried yet.
  void try_all(Stage &stage, const std::vector<Settings> &all,
               const std::vector<std::string> &other_judging = {});
  void add(Stage &stage, const Settings &settings, Decisions decisions);
  void write_line(const Stage &stage, const Settings &settings,
                  const Finding *finding_P);
  // `more_work` is done of trials under way.
  void show_progress(double more_work) const;
  void erase_progress() const;

  static const Finding *find(const Stage &stage, const Settings &settings);
  // The findings, best first, and the best of each classifier in that order.
  std::vector<const Finding *> ranked(const Stage &stage) const;
  std::vector<const Finding *> classifiers_of(const Stage &stage) const;
  bool is_hopeless(const Finding &finding, const Finding &best) const;
  std::vector<Settings> not_hopeless(const Stage &stage) const;

  struct Climber {
    Settings place;
    std::set<int> idle;  // axes along which no step has helped
  };
  void climb(Stage &stage, const std::vector<const Finding *> &starts);
  bool unite_gains(const Stage &stage, Climber &climber,
                   std::vector<Settings> &all) const;

  std::vector<Settings> best_few(const Stage &stage) const;
  std::vector<std::string> ways_to_judge() const;
  const Finding &choose(const Stage &stage) const;

  const Examples &examples_;
  const bool with_words_;
  const double f_parameter_;
  const double work_;
  std::ostream &table_;
  const std::uint32_t most_ranks_;
  const Settings common_;
  Finding best_;
  std::size_t nr_trials_ = 0;
  double work_done_ = 0.0;
  const bool is_terminal_;
  const std::chrono::steady_clock::time_point begin_ =
      std::chrono::steady_clock::now();
};

}  // namespace vek::tuning

#endif  // VEK_TUNE_SEARCH_H_

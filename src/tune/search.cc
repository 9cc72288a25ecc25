#include "tune/search.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <numeric>
#include <set>
#include <utility>

#include "tune/stopping.h"
#include "tune/workers.h"

namespace vek::tuning {
namespace {

// The usual amount: a minute and a half of two processors that have nothing
// else to do.
constexpr double usual_work = 150e6;

// Bytes of a child's largest table.
constexpr double largest_matrix = 2.5e8;

// What a resource file gets for `heldout`, and the last stage works with.
constexpr std::uint32_t usual_parts = 5;

// Documents of which fewer than this share have several classes are first tried
// with one each.
constexpr double share_of_several = 0.02;

constexpr std::uint32_t largest_max_ranks = 10;

Settings common_settings(Params own, std::uint32_t max_ranks) {
  own.held_out = usual_parts;
  own.walk = WalkKind::path;
  own.insignificant = Insignificant::best;
  own.max_ranks = max_ranks;
  // Nothing is learnt from earlier runs.
  own.save = own.save || own.incremental;
  return Settings(own);
}

// Of a classifier, until none helps any more.
constexpr double usual_nr_steps = 22.0;

Settings after(const Settings &settings, const Step &step) {
  return settings.with(step.changes);
}

bool has_words_only(const Settings &settings) {
  return settings.value("terms") == "words";
}

}  // namespace

Search::Search(const Examples &examples, const Params &own, bool with_words,
               double budget, std::ostream &table)
    : examples_(examples),
      with_words_(with_words),
      f_parameter_(own.f_parameter),
      work_(budget * usual_work),
      table_(table),
      most_ranks_(std::uint32_t(std::clamp<std::size_t>(examples.most_classes(),
                                                        1, largest_max_ranks))),
      common_(common_settings(
          own,
          examples.share_of_several() < share_of_several ? 1 : most_ranks_)),
      best_{0, common_, 0, 0, {}, {}},
      is_terminal_(isatty(STDERR_FILENO) == 1) {}

void Search::run() {
  table_ << "stage\tdocuments\tparts\t" << Settings::description_head()
         << "\tprecision\trecall\tf\n";
  const std::vector<Settings> firsts = first_settings(common_, with_words_);
  Stage first = make_stage("first", 0.15, 2, firsts, double(firsts.size()));
  try_all(first, firsts);

  const std::vector<Settings> seconds = not_hopeless(first);
  if (seconds.empty() || stop_signal() != 0)
    return;
  Stage second = make_stage("second", 0.15, 3, seconds, double(seconds.size()));
  try_all(second, seconds);

  std::vector<const Finding *> starts = classifiers_of(second);
  if (starts.empty() || stop_signal() != 0)
    return;
  if (starts.size() > 1)
    starts.resize(is_hopeless(*starts[1], *starts[0]) ? 1 : 2);
  std::vector<Settings> typical;
  for (const Finding *finding_P : starts)
    typical.push_back(finding_P->settings);
  Stage steps = make_stage("steps", 0.4, 3, typical,
                           usual_nr_steps * double(typical.size()));
  climb(steps, starts);

  const std::vector<Settings> finalists = best_few(steps);
  if (finalists.empty() || stop_signal() != 0)
    return;
  Stage last =
      make_stage("last", 1.0, usual_parts, finalists, double(finalists.size()));
  try_all(last, finalists, ways_to_judge());
}

std::vector<Settings> Search::not_hopeless(const Stage &stage) const {
  constexpr int most_of_classifier = 3;
  std::vector<Settings> all;
  std::map<std::string, int> numbers;
  const std::vector<const Finding *> order = ranked(stage);
  for (const Finding *finding_P : order) {
    if (!is_hopeless(*finding_P, *order.front()) &&
        numbers[finding_P->settings.value("training")]++ < most_of_classifier) {
      all.push_back(finding_P->settings);
    }
  }
  return all;
}

// The best of each classifier, and those behind them; and as words alone have
// to win clearly, their like with all terms.
std::vector<Settings> Search::best_few(const Stage &stage) const {
  constexpr std::size_t few = 4;
  std::vector<const Finding *> order = classifiers_of(stage);
  for (const Finding *finding_P : ranked(stage)) {
    if (order.size() < few &&
        std::ranges::find(order, finding_P) == order.end())
      order.push_back(finding_P);
  }
  std::vector<Settings> all;
  for (const Finding *finding_P : order)
    all.push_back(finding_P->settings);
  if (!all.empty() && has_words_only(all[0]))
    all.push_back(all[0].with("terms all"));
  return all;
}

std::vector<std::string> Search::ways_to_judge() const {
  std::vector<std::string> ways = {"walk steps", "insignificant none"};
  if (most_ranks_ > 1) {
    const bool is_one = common_.value("maxranks") == "1";
    ways.push_back("maxranks " + std::to_string(is_one ? most_ranks_ : 1));
  }
  return ways;
}

// With as many documents and parts as a share of the work that is left allows.
Search::Stage Search::make_stage(const char *name, double share,
                                 std::uint32_t nr_parts,
                                 const std::vector<Settings> &typical,
                                 double nr_trials) const {
  Stage stage;
  stage.name = name;
  stage.work_left =
      share == 1.0 ? std::max(work_ - work_done_, 0.1 * work_) : share * work_;
  const auto fits = [&] {
    double work = 0.0;
    for (const Settings &settings : typical)
      work += work_in(stage, settings);
    return work * nr_trials / double(typical.size()) <= stage.work_left &&
           double(stage.size.nr_docs) * double(stage.size.nr_classes) * 8.0 <=
               largest_matrix;
  };
  stage.nr_docs = examples_.size();
  stage.size = examples_.size_of(stage.nr_docs);
  for (const std::uint32_t more_parts : {usual_parts, 3U, nr_parts}) {
    stage.nr_parts = std::min(more_parts, std::uint32_t(stage.nr_docs));
    if (more_parts >= nr_parts && fits())
      return stage;
  }
  constexpr std::size_t fewest_docs = 100;
  while (stage.nr_docs > fewest_docs && !fits()) {
    stage.nr_docs -= stage.nr_docs / 8;
    stage.size = examples_.size_of(stage.nr_docs);
  }
  return stage;
}

double Search::work_in(const Stage &stage, const Settings &settings) const {
  return work_of(settings, stage.nr_parts, stage.size);
}

void Search::try_all(Stage &stage, const std::vector<Settings> &all,
                     const std::vector<std::string> &other_judging) {
  std::vector<Trial> trials;
  std::set<std::string> known;
  for (const Settings &settings : all) {
    const std::string text = settings.description();
    if (stage.findings.contains(text) || !known.insert(text).second)
      continue;
    trials.push_back({settings, stage.nr_docs, stage.nr_parts, other_judging});
  }
  double work_ended = 0.0;
  show_progress(work_ended);
  const auto results = run_trials(examples_, trials, [&](const Trial &trial) {
    ++nr_trials_;
    work_ended += work_in(stage, trial.settings);
    show_progress(work_ended);
  });
  erase_progress();
  // Not as they end: the order of a sum is part of it.
  for (const Trial &trial : trials) {
    work_done_ += work_in(stage, trial.settings);
    stage.work_left -= work_in(stage, trial.settings);
  }
  for (std::size_t i = 0; i < trials.size(); ++i) {
    if (results[i].empty()) {
      // One that was cut off has not failed.
      if (stop_signal() == 0)
        write_line(stage, trials[i].settings, nullptr);
      continue;
    }
    add(stage, trials[i].settings, results[i][0]);
    for (std::size_t way = 0; way < other_judging.size(); ++way) {
      add(stage, trials[i].settings.with(other_judging[way]),
          results[i][way + 1]);
    }
  }
  table_.flush();
  // Should the search be stopped in the next stage.
  if (!stage.findings.empty())
    best_ = choose(stage);
}

void Search::add(Stage &stage, const Settings &settings, Decisions decisions) {
  Finding finding = {stage.findings.size(),
                     settings,
                     stage.nr_docs,
                     stage.nr_parts,
                     quality_of(decisions, f_parameter_),
                     std::move(decisions)};
  write_line(stage, settings, &finding);
  stage.findings.emplace(settings.description(), std::move(finding));
}

void Search::write_line(const Stage &stage, const Settings &settings,
                        const Finding *finding_P) {
  table_ << stage.name << '\t' << stage.nr_docs << '\t' << stage.nr_parts
         << '\t' << settings.description();
  if (finding_P == nullptr) {
    table_ << "\tfailed\n";
    return;
  }
  const Quality &quality = finding_P->quality;
  char text[64];
  std::snprintf(text, sizeof text, "\t%.4f\t%.4f\t%.4f\n", quality.precision,
                quality.recall, quality.f);
  table_ << text;
}

void Search::erase_progress() const {
  if (is_terminal_)
    std::fputs("\r\x1B[K", stderr);
}

void Search::show_progress(double more_work) const {
  if (!is_terminal_)
    return;
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - begin_)
          .count();
  const double share = std::min((work_done_ + more_work) / work_, 1.0);
  std::string text = "\rvek-tune: " + std::to_string(nr_trials_) + " trials, " +
                     std::to_string(int(100.0 * share)) + " % of the work";
  if (share > 0.0) {
    const auto left = unsigned(seconds / share * (1.0 - share));
    char time[40];
    std::snprintf(time, sizeof time, ", at most %u:%02u:%02u left", left / 3600,
                  left / 60 % 60, left % 60);
    text += time;
  }
  std::fputs((text + "\x1B[K").c_str(), stderr);
}

std::vector<const Finding *> Search::ranked(const Stage &stage) const {
  std::vector<const Finding *> order;
  for (const auto &[text, finding] : stage.findings)
    order.push_back(&finding);
  // What was tried first is what does well elsewhere.
  std::ranges::sort(order, {}, [](const Finding *finding_P) {
    return std::pair(-finding_P->quality.f, finding_P->number);
  });
  return order;
}

std::vector<const Finding *> Search::classifiers_of(const Stage &stage) const {
  std::vector<const Finding *> best;
  std::set<std::string> seen;
  for (const Finding *finding_P : ranked(stage)) {
    if (seen.insert(finding_P->settings.value("training")).second)
      best.push_back(finding_P);
  }
  return best;
}

// So far behind that neither chance nor better settings will make up for it.
bool Search::is_hopeless(const Finding &finding, const Finding &best) const {
  const double behind = best.quality.f - finding.quality.f;
  return behind > 0.03 &&
         behind > 3.0 * error_of_difference(finding.decisions, best.decisions,
                                            f_parameter_);
}

const Finding *Search::find(const Stage &stage, const Settings &settings) {
  const auto place = stage.findings.find(settings.description());
  return place == stage.findings.end() ? nullptr : &place->second;
}

// Walks uphill from several starts at once, so that all processors have work.
void Search::climb(Stage &stage, const std::vector<const Finding *> &starts) {
  std::vector<Climber> climbers;
  std::vector<Settings> all;
  for (const Finding *finding_P : starts) {
    climbers.push_back({finding_P->settings, {}});
    all.push_back(finding_P->settings);
  }
  try_all(stage, all);
  constexpr int most_rounds = 5;
  for (int round = 0; round < most_rounds && !climbers.empty() &&
                      stage.work_left > 0.0 && stop_signal() == 0;
       ++round) {
    all.clear();
    for (const Climber &climber : climbers) {
      for (const Step &step : steps_from(climber.place, with_words_)) {
        if (!climber.idle.contains(step.axis))
          all.push_back(after(climber.place, step));
      }
    }
    try_all(stage, all);
    all.clear();
    std::erase_if(climbers, [&](Climber &climber) {
      return !unite_gains(stage, climber, all);
    });
    try_all(stage, all);
    for (Climber &climber : climbers) {
      for (const Finding *finding_P : classifiers_of(stage)) {
        const Settings &best = finding_P->settings;
        if (best.value("training") == climber.place.value("training"))
          climber.place = best;
      }
    }
  }
}

// Adds the climber's place after the best steps of all axes that have one that
// helps, and after the best two of these; all other axes are idle from then on.
// False if no step helps.
bool Search::unite_gains(const Stage &stage, Climber &climber,
                         std::vector<Settings> &all) const {
  const Finding *const here_P = find(stage, climber.place);
  if (here_P == nullptr)
    return false;
  struct Gain {
    double f = 0.0;
    Step step;
  };
  std::map<int, Gain> gains;  // by axis
  for (const Step &step : steps_from(climber.place, with_words_)) {
    const Finding *const there_P = find(stage, after(climber.place, step));
    climber.idle.insert(step.axis);
    if (there_P == nullptr || there_P->quality.f <= here_P->quality.f)
      continue;
    Gain &gain = gains[step.axis];
    if (there_P->quality.f > gain.f)
      gain = {there_P->quality.f, step};
  }
  std::vector<Gain> order;
  Settings united = climber.place;
  for (const auto &[axis, gain] : gains) {
    climber.idle.erase(axis);
    united = after(united, gain.step);
    order.push_back(gain);
  }
  all.push_back(united);
  std::ranges::stable_sort(order, std::ranges::greater(), &Gain::f);
  if (order.size() > 2) {
    all.push_back(after(after(climber.place, order[0].step), order[1].step));
  }
  return !gains.empty();
}

// The best; but what takes less work is chosen where the difference is within
// half its standard error, and all terms where words alone are not better by
// more than that error.
const Finding &Search::choose(const Stage &stage) const {
  std::vector<const Finding *> order = ranked(stage);
  const auto error_to = [&](const Finding &a, const Finding &b) {
    return error_of_difference(a.decisions, b.decisions, f_parameter_);
  };
  const auto all_terms =
      std::ranges::find_if(order, [](const Finding *finding_P) {
        return !has_words_only(finding_P->settings);
      });
  if (all_terms != order.begin() && all_terms != order.end() &&
      order.front()->quality.f - (*all_terms)->quality.f <=
          error_to(*order.front(), **all_terms)) {
    std::erase_if(order, [](const Finding *finding_P) {
      return has_words_only(finding_P->settings);
    });
  }
  const Finding &best = *order.front();
  const Finding *chosen_P = &best;
  for (const Finding *finding_P : order) {
    if (has_words_only(finding_P->settings) == has_words_only(best.settings) &&
        work_in(stage, finding_P->settings) <
            work_in(stage, chosen_P->settings) &&
        best.quality.f - finding_P->quality.f <=
            0.5 * error_to(best, *finding_P)) {
      chosen_P = finding_P;
    }
  }
  return *chosen_P;
}

}  // namespace vek::tuning

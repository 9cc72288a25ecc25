#include "run/driver.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <ctime>
#include <locale>
#include <optional>
#include <sstream>
#include <string>
#include <thread>

#include "base/helpers.h"
#include "evaluation/judge.h"
#include "evaluation/predictions.h"
#include "evaluation/testing.h"
#include "intake/collection.h"
#include "learning/bounds.h"
#include "learning/calibrate.h"
#include "learning/classifiers.h"
#include "learning/heldout.h"
#include "log/stop.h"
#include "params/rcparser.h"
#include "run/globals.h"
#include "run/polling.h"
#include "run/profiling.h"
#include "run/rankfile.h"
#include "store/datafiles.h"

namespace vek {
namespace {

constexpr char log_name[] = "vek.log";
constexpr char scores_name[] = "scores.dat";
constexpr char resource_name[] = "vek";
constexpr char resource_suffix[] = ".rc";

// Without an examples directory there is nothing to learn from, and the model
// of an earlier run classifies what is polled.
bool has_examples() {
  return !options.examples_directory().empty();
}

const Classifier &classifier() {
  return classifier_of(params.algorithm);
}

bool learns() {
  return has_examples() && !options.xlearning();
}

void begin_progress() {
  std::size_t nr_new = 0;
  for (const std::string &name : listed_documents(options.examples_directory()))
    nr_new += data_base.exists(name) ? 0 : 1;
  analysis_report.begin_progress(nr_new);
}

void collect_examples() {
  log_always(1, "collecting documents...");
  if (AnalysisReport::shows_progress())
    begin_progress();
  collect_documents(options.examples_directory(), class_table,
                    profile_document);
  analysis_report.end_progress();
  data_base.sync();
  report_statistics();
}

void merge_classes() {
  log_always(1, "analyzing the documents...");
  class_table.gather_documents();
  report_statistics();
}

// Trains with all documents, and with the scores of held-out ones learns how to
// judge.
void learn_with_held_out(const Training &training) {
  const TrainingSet set(class_table, data_base);
  const auto nr_parts = static_cast<std::uint32_t>(
      std::min<std::size_t>(params.held_out, set.documents().size()));
  train_for_judging(training, classifier());
  if (nr_parts < 2)
    return;
  logf_always(1, "training %s on %u parts of the documents...",
              classifier().name, nr_parts);
  const ScoreMatrix matrix = held_out_scores(
      class_table, set, deal_to_parts(class_table, set, nr_parts), nr_parts,
      classifier(), params, term_table.size(),
      std::max(1U, std::thread::hardware_concurrency()));
  if (classifier().has_thresholds)
    set_held_out_thresholds(class_table, set, matrix, scores);
  judging = learn_judging(class_table, set, matrix, nr_parts, params);
  const ConfusionMatrix counts =
      judge_held_out(class_table, set, matrix, judging, params);
  std::ostringstream text;
  counts.print(text, params.f_parameter);
  logf_always(1, "judged %zu held-out documents", set.documents().size());
  log_always(3, text.str());
}

void learn() {
  log_if_verbose(3, "updating class profiles...");
  LogMessages messages;
  const Training training = {class_table, data_base, active_terms,
                             params,      scores,    messages};
  update_profiles(training, term_table.size());
  report_statistics();
  scores.open(scores_name, OutputFile::Mode::truncate);
  scores << "****TRAIN\n";
  if (params.held_out < 2) {
    train_classes(training, classifier());
  } else {
    learn_with_held_out(training);
  }
  warn_of_boundless_weights(training);
  report_statistics();
}

// Nothing depends on the scores, so a full disk costs them and a word.
void close_scores() {
  const bool was_open = scores.is_open();
  scores.close();
  if (was_open && !scores)
    warning("error writing file `%s'", scores_name);
}

// Nothing learnt and nothing kept is no model: written, it would pass for one,
// and take the place of a good one.
void write_classes() {
  if (class_table.size() < 2) {
    warning("no documents and no model: class files are not written");
    return;
  }
  data_base.write(classifier().files,
                  judging.classes.empty() ? std::string() : judging.text());
}

void test_and_poll() {
  Judge judge(class_table, classifier().scoring, params, judging);
  if (params.predictions)
    judge.keep_leaves();
  test_classes(judge);
  close_scores();
  report_statistics();
  if (class_table.has_training_documents() &&
      (params.incremental || params.save)) {
    write_classes();
  }
  data_base.sync();
  stop_if_requested();
  poll_input(judge);
  data_base.save_vocabulary();
}

// To be called before the model is read. Where words for it follow anyhow, only
// with -v.
void tell_missing_model() {
  if (data_base.has_classes())
    return;
  const std::string text = "no model in data directory `" +
                           params.data_directory +
                           "': it takes a run with `save on' or -xt";
  const bool is_told =
      data_base.has_data() ? !learns() || params.incremental : !has_examples();
  if (is_told)
    log_if_verbose(1, text);
  else if (!learns())
    warning("%s", text.c_str());
}

bool asks_for_words(int argument_count, char **argument_vector) {
  return std::any_of(argument_vector, argument_vector + argument_count,
                     [](std::string_view argument) {
                       return argument.starts_with("-v") ||
                              argument == "--verbose";
                     });
}

void close_log() {
  const std::time_t now = std::time(nullptr);
  data_base.release_profiles();
  const KeepErrno keep;
  analysis_report.tell_empty(params.data_directory);
  log_always(3, std::ctime(&now));
}

}  // namespace

int run(int argument_count, char **argument_vector) {
  // Whatever a library left behind before the run is no part of its result.
  errno = 0;
  // The options are not read yet, as errors in them belong into the log.
  set_verbosity(asks_for_words(argument_count, argument_vector) ? 1 : 0);
  log_file.open(log_name);
  set_verbosity(0);
  process_command_line(argument_count, argument_vector);
  start_statistics();
  start_analyser();
  report_statistics();
  open_data_base();
  report_statistics();
  if (has_examples()) {
    collect_examples();
    merge_classes();
  }
  stop_if_requested();
  data_base.write_vocabulary();
  stop_if_requested();
  if (learns())
    learn();
  scores << "****TEST\n";
  if (options.xtesting()) {
    write_classes();
    close_scores();
  } else {
    test_and_poll();
  }
  close_log();
  return 0;
}

void process_command_line(int argument_count, char **argument_vector) {
  options.parse_options(argument_count, argument_vector);
  options.report_polling(2);
  read_resources();
  merge_options();
  report_parameters();
}

void read_resources() {
  std::string path;
  if (options.rc_file().empty()) {
    path = Path("", resource_name, resource_suffix);
    if (!file_is_there(path)) {
      log_if_verbose(2, "no resource file available, using default parameters");
      return;
    }
  } else {
    path = Path("", options.rc_file(), resource_suffix);
  }
  if (read_parameters(path) != 0)
    abort_run(no_cause);
}

unsigned read_parameters(const std::string &path) {
  std::string content;
  std::string reason;
  const ReadResult result = read_resource_file(path, content, reason);
  if (result == ReadResult::cannot_open) {
    report_file_error(path, FileError::open_for_reading, reason);
    abort_run();
  }
  logf_if_verbose(2, "reading parameters from file `%s'", path.c_str());
  if (result == ReadResult::read_error) {
    report_file_error(path, FileError::read, reason);
    abort_run();
  }
  LogMessages messages;
  RcParser parser(&params, content, path.c_str(), messages);
  parser.parse();
  return parser.nr_errors();
}

void merge_options() {
  if (options.algorithm() != Algorithm::winnow)
    params.algorithm = options.algorithm();
  if (!options.data_directory().empty())
    params.data_directory = options.data_directory();
  if (!options.input_directory().empty())
    params.input_directory = options.input_directory();
}

void report_parameters() {
  log_always(3, "parameter settings are:");
  std::ostringstream section;
  section.imbue(std::locale::classic());
  classifier().write_settings(section, params);
  // The log's own line end makes a blank line close the report.
  log_always(3, params.general_text(classifier().name) + '\n' + section.str());
}

void start_analyser() {
  analyser.open(params.analyser, params.file_directory,
                std::chrono::seconds(params.analyser_timeout));
}

void open_data_base() {
  data_base.open(params.data_directory, options.patience());
  tell_missing_model();
  const ClassFileFormat &format = classifier().files;
  if (learns()) {
    data_base.read(params.incremental, format);
    return;
  }
  // A directory without a model is told so where the model is needed.
  data_base.read(has_examples() || data_base.has_classes(), format);
  data_base.read_weights(format);
  if (classifier().restore_weights != nullptr)
    classifier().restore_weights(class_table);
  read_judging();
}

void read_judging() {
  std::string text;
  if (!data_base.read_judging(text) || text.empty())
    return;
  const Path path(params.data_directory, judging_name, "");
  if (!judging.parse(text, class_table)) {
    report_file_error(path, FileError::read);
    abort_run();
  }
  if (judging.is_of_another(params.algorithm)) {
    warning("%s is about the scores of %s and is not used", path.c_str(),
            classifier_of(*judging.algorithm).name);
    judging = {};
  }
}

void test_classes(Judge &judge) {
  if (class_table.size() == 0)
    return;
  const ClassData &top = class_table.get_data(0);
  if (top.sons.empty() || top.test_docs.empty())
    return;
  RankFile file(options.examples_directory(), RankFile::Announce::no);
  logf_always(1, "testing %s on `%s' with %zu documents...", classifier().name,
              class_table.get_name(0).c_str(), top.test_docs.size());
  LogMessages messages;
  std::optional<RankFile> predictions;
  if (params.predictions) {
    predictions.emplace(options.examples_directory(), RankFile::Announce::no,
                        RankFile::Kind::predictions);
    predictions->stream() << predictions_header;
  }
  if (!test_top_class({class_table, data_base, judge, params, messages,
                       predictions ? &predictions->stream() : nullptr},
                      file.stream())) {
    explain(file.path(), std::strerror(errno));
    abort_run();
  }
  file.finish();
  if (predictions)
    predictions->finish();
}

void poll_input(Judge &judge) {
  if (!options.poll())
    return;
  if (class_table.size() < 2) {
    error("no class profiles available");
    abort_run(no_cause);
  }
  poll_directory(params.input_directory, judge);
}

}  // namespace vek

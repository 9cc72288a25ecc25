#include "run/driver.h"

#include <cerrno>
#include <ctime>

#include "classes/classtab.h"
#include "evaluation/scoretable.h"
#include "evaluation/testing.h"
#include "intake/analyser.h"
#include "intake/collection.h"
#include "learning/rocchio.h"
#include "learning/sbc.h"
#include "learning/winnow.h"
#include "params/params.h"
#include "params/rcparser.h"
#include "run/helpers.h"
#include "run/log.h"
#include "run/options.h"
#include "run/polling.h"
#include "run/statistics.h"
#include "store/database.h"

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

bool learns() {
  return has_examples() && !options.xlearning();
}

void collect_examples() {
  log_always(1, "collecting documents...");
  collect_documents(options.examples_directory().c_str());
  data_base.sync();
  report_statistics();
}

void merge_classes() {
  log_always(1, "analyzing the documents...");
  class_table.gather_documents();
  report_statistics();
}

void learn() {
  log_if_verbose(3, "updating class profiles...");
  class_table.update_profiles();
  report_statistics();
  scores.open(scores_name, OutputFile::Mode::truncate);
  scores << "****TRAIN\n";
  train_classes();
}

// Nothing depends on the scores, so a full disk costs them and a word.
void close_scores() {
  const bool was_open = scores.is_open();
  scores.close();
  if (was_open && !scores)
    warning("error writing file `%s'", scores_name);
}

void test_and_poll() {
  test_classes();
  close_scores();
  report_statistics();
  if (class_table.has_training_documents()) {
    data_base.write(params.incremental() || params.save());
  }
  data_base.sync();
  poll_input();
  data_base.save_vocabulary();
}

void close_log() {
  const std::time_t now = std::time(nullptr);
  data_base.release_profiles();
  const KeepErrno keep;
  log_always(3, std::ctime(&now));
}

}  // namespace

int run(int argument_count, char **argument_vector) {
  // Whatever a library left behind before the run is no part of its result.
  errno = 0;
  log_file.open(log_name);
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
  data_base.write_vocabulary();
  if (learns())
    learn();
  scores << "****TEST\n";
  if (options.xtesting()) {
    data_base.write(true);
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
    abort_run();
}

void merge_options() {
  if (options.algorithm() != 0) {
    params.set_algorithm(static_cast<Algorithm>(options.algorithm()));
  }
  if (!options.data_directory().empty()) {
    params.set_data_directory(options.data_directory());
  }
  if (!options.input_directory().empty()) {
    params.set_input_directory(options.input_directory());
  }
}

void report_parameters() {
  log_always(3, "parameter settings are:");
  params.print_parameters(3);
}

void start_analyser() {
  analyser.open(params.analyser());
}

void open_data_base() {
  data_base.open(params.data_directory());
  if (learns()) {
    data_base.read(params.incremental());
    return;
  }
  // A directory without a model is told so where the model is needed.
  data_base.read(has_examples() || data_base.has_classes());
  data_base.read_weights();
  if (params.algorithm() == Algorithm::sbc)
    restore_sbc_weights();
}

void train_classes() {
  switch (params.algorithm()) {
    case Algorithm::winnow:
      train_winnow();
      break;
    case Algorithm::rocchio:
      train_rocchio();
      break;
    case Algorithm::sbc:
      train_sbc();
      break;
  }
  report_statistics();
}

void poll_input() {
  if (!options.poll())
    return;
  if (class_table.size() < 2) {
    error("no class profiles available");
    abort_run();
  }
  poll_directory(params.input_directory().c_str());
}

}  // namespace vek

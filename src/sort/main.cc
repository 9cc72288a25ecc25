#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <new>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "answering/manifest.h"
#include "base/command_line.h"
#include "base/helpers.h"
#include "data/names.h"
#include "params/resources.h"
#include "sort/answers.h"
#include "sort/arrivals.h"
#include "sort/folders.h"
#include "sort/learn.h"
#include "sort/locking.h"
#include "sort/signals.h"
#include "sort/sorter.h"
#include "sort/stream.h"
#include "sort/target.h"
#include "sort/text_reader.h"
#include "sort/watch.h"

namespace {

using namespace vek::sorting;
using vek::DirectoryLock;
using vek::Failure;
using vek::ProgressLine;
using vek::keeping::escaped;

constexpr char program[] = "vek-sort";

constexpr int exit_good = 0;
constexpr int exit_rejected = 1;  // some texts
constexpr int exit_failed = 2;
constexpr int exit_in_use = 11;

struct Arguments {
  std::string model;
  std::string incoming;
  std::string target;
  std::string log;
  Mode mode = Mode::move;
  double settling = 2;
  std::uint32_t patience = 0;
  bool is_watching = false;
  bool is_quiet = false;
  bool is_stream = false;
  std::string lesson;  // directory to learn from
  StreamFields fields;

  std::chrono::seconds wait() const { return std::chrono::seconds(patience); }
};

void add_options(CLI::App &app, Arguments &arguments) {
  app.add_option("model", arguments.model,
                 "directory of the model: where vek is called, or packed");
  app.add_option("incoming", arguments.incoming,
                 "directory into which texts come");
  app.add_option("--to", arguments.target,
                 "directory with a folder for each class");
  const auto add_mode = [&](const char *name, Mode mode, const char *text) {
    app.add_flag_callback(
        name, [&arguments, mode] { arguments.mode = mode; }, text);
  };
  add_mode("--move", Mode::move, "move the texts there (default)");
  add_mode("--copy", Mode::copy, "copy them, and leave them where they are");
  add_mode("--link", Mode::link, "link them, and leave them where they are");
  app.add_option("--log", arguments.log,
                 "file for a line about each text; by default sorted.tsv in "
                 "the directory of --to");
  app.add_option("--settle", arguments.settling,
                 "seconds after which a text that is found is complete (2)")
      ->check(vek::check_number)
      ->check(CLI::Range(0.0, 86400.0));
  app.add_option("--wait", arguments.patience,
                 "seconds to wait for what another process is using (0)");
  app.add_flag("--watch", arguments.is_watching,
               "sort texts as they come in, until a signal ends it");
  app.add_flag("--stream", arguments.is_stream,
               "answer JSON lines on standard input with JSON lines");
  app.add_option("-t,--text", arguments.fields.text,
                 "fields of such a line with the text")
      ->delimiter(',')
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->allow_extra_args(false);
  app.add_option("-i,--id", arguments.fields.id,
                 "field that the answer repeats (id)");
  app.add_option("--learn", arguments.lesson,
                 "add what people have put right in this directory to the "
                 "training list");
  app.add_flag("-q,--quiet", arguments.is_quiet, "no progress, no summary");
}

int fail(const Failure &failure, int status = exit_failed) {
  vek::report(program, escaped(failure.text()));
  return status;
}

int fail(Locked locked, const Failure &failure) {
  return fail(failure, locked == Locked::in_use ? exit_in_use : exit_failed);
}

// The whole path, also of what is not there yet.
bool make_whole(std::string &path, Failure &failure) {
  std::error_code error;
  std::string whole = std::filesystem::weakly_canonical(
      std::filesystem::absolute(path, error), error);
  while (whole.size() > 1 && whole.back() == '/')
    whole.pop_back();
  failure = {path, "", error.message()};
  path = whole;
  return !error;
}

// Which arguments there have to be.
std::string fault_of(const Arguments &arguments) {
  if (arguments.model.empty())
    return "the directory of a model is needed";
  if (arguments.is_stream || !arguments.lesson.empty()) {
    if (arguments.is_stream && !arguments.lesson.empty())
      return "--stream and --learn exclude each other";
    return arguments.incoming.empty()
               ? ""
               : "one directory is enough for --stream and --learn";
  }
  if (arguments.incoming.empty())
    return "a directory into which texts come is needed";
  return arguments.target.empty() ? "--to is needed: a directory to sort into"
                                  : "";
}

bool check_directories(Arguments &arguments, Failure &failure) {
  if (!vek::is_directory(arguments.incoming)) {
    failure = {arguments.incoming, "", std::strerror(errno)};
    return false;
  }
  if (arguments.log.empty())
    arguments.log = arguments.target + '/' + log_name;
  if (!make_whole(arguments.incoming, failure) ||
      !make_whole(arguments.target, failure) ||
      !make_whole(arguments.log, failure))
    return false;
  std::string model = arguments.model;
  if (!make_whole(model, failure))
    return false;
  const auto lies_in = [](const std::string &path, const std::string &top) {
    return (path + '/').starts_with(top + '/');
  };
  failure = {arguments.incoming, "", ""};
  for (const std::string &path : {arguments.log, arguments.target, model}) {
    if (lies_in(path, arguments.incoming))
      failure.reason = path + " lies in it, and would be sorted";
  }
  if (lies_in(arguments.incoming, arguments.target))
    failure.reason = "it lies in the directory into which it would be sorted";
  if (model == arguments.target)
    failure = {arguments.target, "", "its folders would be among the model's"};
  return failure.reason.empty();
}

// A pass over all that is there. What has just been written is waited for, but
// not what is being written for longer.
bool sort_all(const Arrivals &arrivals, Sorter &sorter, int signals,
              bool is_quiet, bool &is_whole, bool &has_failed,
              Failure &failure) {
  const Arrivals::Scan found = arrivals.scan();
  for (const Failure &one : found.failures)
    fail(one);
  for (const std::string &other : found.others)
    fail({arrivals.path_of(other), "", "no regular file"});
  is_whole = found.others.empty();
  has_failed = !found.failures.empty();
  const auto shown =
      is_quiet ? ProgressLine::Shown::never : ProgressLine::Shown::on_terminal;
  ProgressLine progress(program, shown,
                        found.texts.size() + found.unsettled.size());
  if (!sorter.sort(found.texts, progress, failure))
    return false;
  if (!found.unsettled.empty() && stop_signal() == 0) {
    pollfd signal = {signals, POLLIN, 0};
    poll(&signal, 1, static_cast<int>(arrivals.settling().count()));
    std::vector<Arrival> settled;
    Arrival now;
    for (const Arrival &text : found.unsettled) {
      if (arrivals.look_at(text.name, now) && now.identity == text.identity &&
          !arrivals.is_being_written(text.name))
        settled.push_back(text);
    }
    if (!sorter.sort(settled, progress, failure))
      return false;
  }
  progress.finish();
  return true;
}

int sort(Arguments &arguments) {
  Failure failure;
  if (!check_directories(arguments, failure))
    return fail(failure);
  const int signals = watch_signals(arguments.is_watching);
  if (signals < 0)
    return fail({"pipe", "", std::strerror(errno)});
  Target target(arguments.target, arguments.log, arguments.mode);
  if (!target.make(failure))
    return fail(failure);
  DirectoryLock locks[2];
  // Others may take texts away only if nobody copies them, and the other way.
  const auto mode = arguments.mode == Mode::move
                        ? DirectoryLock::Mode::exclusive
                        : DirectoryLock::Mode::shared;
  Locked locked =
      take_lock(locks[0], target.state_path(), DirectoryLock::Mode::exclusive,
                arguments.wait(), failure);
  if (locked == Locked::yes)
    locked = take_lock(locks[1], arguments.incoming, mode, arguments.wait(),
                       failure);
  Answers answers(arguments.model);
  if (locked == Locked::yes)
    locked = answers.open(arguments.wait(), failure);
  if (locked != Locked::yes)
    return fail(locked, failure);
  if (!target.open(failure))
    return fail(failure);
  const auto settling = std::chrono::duration_cast<std::chrono::milliseconds>(
      std::chrono::duration<double>(arguments.settling));
  const Arrivals arrivals(arguments.incoming, settling);
  Sorter sorter(answers, target, arrivals, arguments.mode,
                [](const Failure &one) { fail(one); });
  const auto find_lost = [&] {
    return !locks[0].has_name(target.state_path())  ? target.state_path()
           : !locks[1].has_name(arguments.incoming) ? arguments.incoming
                                                    : std::string();
  };
  bool is_whole = true;
  bool has_failed = false;
  const bool is_done =
      arguments.is_watching
          ? watch({answers, target, arrivals, sorter,
                   [](const std::string &message) {
                     vek::report(program, escaped(message));
                   },
                   find_lost},
                  signals, failure)
          : sort_all(arrivals, sorter, signals, arguments.is_quiet, is_whole,
                     has_failed, failure);
  if (!is_done)
    return fail(failure);
  const Counts &counts = sorter.counts();
  if (!arguments.is_quiet) {
    std::cout << counts.nr_sorted << " sorted, " << counts.nr_unsure
              << " unsure, " << counts.nr_rejected << " rejected, "
              << counts.nr_failed << " left\n";
  }
  if (arguments.is_watching)
    return exit_good;
  if (stop_signal() != 0) {
    std::cout.flush();
    end_by(stop_signal());
  }
  return counts.nr_failed > 0 || has_failed    ? exit_failed
         : counts.nr_rejected > 0 || !is_whole ? exit_rejected
                                               : exit_good;
}

int stream(const Arguments &arguments) {
  std::ios::sync_with_stdio(false);
  Failure failure;
  Answers answers(arguments.model);
  const Locked locked = answers.open(arguments.wait(), failure);
  if (locked != Locked::yes)
    return fail(locked, failure);
  std::size_t nr_rejected = 0;
  if (!answer_stream(answers, arguments.fields, std::cout, nr_rejected,
                     failure))
    return fail(failure);
  return nr_rejected > 0 ? exit_rejected : exit_good;
}

// What the lists of a model that can learn are made for.
bool check_model(const std::string &directory, Failure &failure) {
  vek::Params params;
  if (!vek::read_resources(directory, "", params, failure))
    return false;
  failure = {directory, "", ""};
  if (vek::presence_of(directory + "/" + vek::manifest_name) ==
      vek::Presence::there) {
    failure.reason = "a packed model has no training list to add to";
  } else if (params.file_directory != "files") {
    failure.reason = "its texts are not in `files`, where they would be added";
  }
  return failure.reason.empty();
}

int learn_corrections(Arguments &arguments) {
  Failure failure;
  if (!vek::is_directory(arguments.lesson))
    return fail({arguments.lesson, "", std::strerror(errno)});
  vek::convert::Settings conversion;
  if (!make_whole(arguments.lesson, failure) ||
      !check_model(arguments.model, failure) ||
      !read_conversion(arguments.model, conversion, failure))
    return fail(failure);
  DirectoryLock lock;
  const Locked locked =
      take_lock(lock, arguments.model, DirectoryLock::Mode::exclusive,
                arguments.wait(), failure);
  if (locked != Locked::yes)
    return fail(locked, failure);
  lock.release();  // whoever opens it takes one
  Learnt learnt;
  if (!learn(
          arguments.lesson, arguments.model, conversion,
          [](const Failure &one) { fail(one); }, learnt, failure))
    return fail(failure);
  if (!arguments.is_quiet) {
    std::cout << learnt.nr_new << " new training documents, "
              << learnt.nr_changed << " in other classes, " << learnt.nr_left
              << " left out\n";
  }
  return learnt.nr_left > 0 ? exit_rejected : exit_good;
}

// One that is closed must not become that of the journal. What is opened here
// can neither be read nor written.
void fill_standard_streams() {
  int descriptor = 0;
  do {
    descriptor = open("/", O_PATH);
  } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
  if (descriptor >= 0)
    close(descriptor);
}

}  // namespace

int main(int nr_arguments, char **arguments) {
  fill_standard_streams();
  vek::CommandLine line(program,
                        "Sorts texts with a model that vek has learnt.");
  Arguments values;
  add_options(line.app(), values);
  line.app().footer(
      "Exit status: 0 done, 1 some texts were rejected, 2 failure, 11 another "
      "process is using a directory");
  if (const std::optional<int> status = line.parse(nr_arguments, arguments))
    return *status;
  if (const std::string fault = fault_of(values); !fault.empty()) {
    vek::report(program, fault);
    return vek::exit_usage;
  }
  // A file that may not grow shall show as a failed write, like a full disk.
  std::signal(SIGXFSZ, SIG_IGN);
  std::signal(SIGPIPE, SIG_IGN);
  // Comes when a text is opened while it is found out whether it is written to.
  std::signal(SIGIO, SIG_IGN);
  try {
    if (!values.lesson.empty())
      return learn_corrections(values);
    return values.is_stream ? stream(values) : sort(values);
  } catch (const std::bad_alloc &) {
    vek::report(program, "out of memory");
    return exit_failed;
  }
}

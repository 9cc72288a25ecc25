#include <unistd.h>
#include <CLI/CLI.hpp>

#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/command_line.h"
#include "base/helpers.h"
#include "base/input_file.h"
#include "base/output_file.h"
#include "data/directory_lock.h"
#include "data/names.h"
#include "model/model.h"
#include "params/resources.h"
#include "tune/analysis.h"
#include "tune/examples.h"
#include "tune/search.h"
#include "tune/stopping.h"

namespace {

using namespace vek;
using namespace vek::tuning;
using keeping::escaped;

constexpr char program[] = "vek-tune";
constexpr char resource_suffix[] = ".rc";
constexpr int exit_failed = 2;

// More than these say little more about settings, and would take their time and
// memory.
constexpr double most_documents = 60000.0;

struct Arguments {
  std::string examples;
  std::string resources;
  std::string output;
  double budget = 1.0;
  bool force = false;
};

// Whether the result can be written, before a long search for it.
bool check_output(const std::string &path, bool force, Failure &failure) {
  if (!force && file_exists(path)) {
    failure = {path, "", "it is there already; --force replaces it"};
    return false;
  }
  if (is_directory(path)) {
    failure = {path, "", std::strerror(EISDIR)};
    return false;
  }
  const auto parent = std::filesystem::path(path).parent_path().string();
  if (access(parent.empty() ? "." : parent.c_str(), W_OK) != 0) {
    failure = {path, "", std::strerror(errno)};
    return false;
  }
  return true;
}

bool write_output(const std::string &path, const std::string &text,
                  Failure &failure) {
  const std::string temporary = path + ".part";
  OutputFile file;
  file.open(temporary, OutputFile::Mode::truncate);
  file << text;
  const bool is_written = file && file.sync_to_disk();
  file.close();
  if (is_written && file && std::rename(temporary.c_str(), path.c_str()) == 0) {
    return true;
  }
  failure = {path, "", std::strerror(errno)};
  std::remove(temporary.c_str());
  return false;
}

// Opens the data directory under a shared lock, if it is there.
class OpenData {
 public:
  bool open(const std::string &directory, Failure &failure) {
    if (!is_directory(directory))
      return true;
    std::string warning;
    if (!keeping::take_lock(lock_, directory, DirectoryLock::Mode::shared,
                            warning, failure)) {
      return false;
    }
    if (!warning.empty())
      report(program, "warning: " + escaped(warning));
    return model_.open(directory, failure);
  }
  const Model &model() const { return model_; }
  // In the order of the list, as vek would have analysed them.
  std::vector<std::string> missing(const Examples &examples) const {
    std::map<std::size_t, std::string> names;
    for (const Examples::Example &example : examples.examples()) {
      if (!model_.documents().contains(example.name))
        names.emplace(example.place, example.name);
    }
    std::vector<std::string> in_order;
    for (auto &[place, name] : names)
      in_order.push_back(std::move(name));
    return in_order;
  }

 private:
  DirectoryLock lock_;
  Model model_;
};

bool read_profiles(Examples &examples, const Params &params, Failure &failure) {
  auto data_P = std::make_unique<OpenData>();
  if (!data_P->open(params.data_directory, failure))
    return false;
  const std::vector<std::string> missing = data_P->missing(examples);
  if (!missing.empty()) {
    // vek needs the directory for itself.
    data_P.reset();
    if (!analyse_documents(missing, params, failure))
      return false;
    data_P = std::make_unique<OpenData>();
    if (!data_P->open(params.data_directory, failure))
      return false;
  }
  return examples.read_profiles(data_P->model(), failure);
}

// vek's own analyser, and it writes words and pairs; then it can be told to
// write words alone.
bool can_leave_out_pairs(const std::string &analyser) {
  std::vector<std::string> words;
  std::string rest = analyser;
  std::string word;
  while (!rest.empty()) {
    split_word(rest, ' ', word, rest);
    words.push_back(word);
  }
  std::error_code error;
  if (words.empty() ||
      std::filesystem::canonical(words[0], error).filename() != "vek-analyse") {
    return false;
  }
  std::string terms = "both";
  for (std::size_t i = 1; i < words.size(); ++i) {
    if (words[i] == "-t" && i + 1 < words.size())
      terms = words[i + 1];
    else if (words[i].starts_with("-t") && words[i].size() > 2)
      terms = words[i].substr(2);
  }
  return terms == "both";
}

std::string without_slash(std::string path) {
  while (path.size() > 1 && path.back() == '/')
    path.pop_back();
  return path;
}

std::string result_text(const Arguments &arguments, const Search &search,
                        std::size_t nr_classes, Params place) {
  char figures[200];
  const Finding &finding = search.best();
  const Quality &quality = finding.quality;
  std::snprintf(figures, sizeof figures,
                "# %zu documents, %zu classes, %u parts: precision %.2f %%, "
                "recall %.2f %%,\n# F %.2f %%.\n",
                finding.nr_docs, nr_classes, unsigned(finding.nr_parts),
                100.0 * quality.precision, 100.0 * quality.recall,
                100.0 * quality.f);
  std::string text =
      "# Settings that vek-tune has found for the training list of " +
      escaped(arguments.examples) +
      ".\n# How documents of the list were judged that were held out, by the "
      "best of " +
      std::to_string(search.nr_trials()) + " trials:\n" + figures;
  if (finding.settings.value("terms") == "words") {
    place.analyser += " -t words";
    place.data_directory = without_slash(place.data_directory) + "-words";
    text +=
        "# Words alone did better than words and pairs. They need a data "
        "directory of\n# their own, which the next run fills.\n";
  }
  return text + '\n' + finding.settings.resource_text(place);
}

bool tune(const Arguments &arguments, Failure &failure) {
  Params params;
  const std::string output = Path("", arguments.output, resource_suffix);
  Examples examples;
  if (!read_resources("", arguments.resources, params, failure) ||
      !check_output(output, arguments.force, failure) ||
      !examples.read_list(arguments.examples, failure)) {
    return false;
  }
  examples.choose(
      std::size_t(std::max(most_documents * arguments.budget, 1000.0)));
  const std::size_t nr_classes = examples.nr_classes();
  if (nr_classes < 2) {
    failure = {arguments.examples, "",
               "the training list names fewer than two classes"};
    return false;
  }
  if (!read_profiles(examples, params, failure))
    return false;
  Search search(examples, params,
                examples.has_pairs() && can_leave_out_pairs(params.analyser),
                arguments.budget, std::cout);
  search.run();
  if (!search.has_found()) {
    failure = {arguments.examples, "",
               stop_signal() != 0 ? "stopped before anything was found"
                                  : "no settings find a class of any document"};
    return false;
  }
  if (!write_output(output, result_text(arguments, search, nr_classes, params),
                    failure)) {
    return false;
  }
  if (stop_signal() != 0) {
    report(program, "stopped by signal " + std::to_string(stop_signal()) +
                        ", the best so far is in " + escaped(output));
  }
  return true;
}

}  // namespace

int main(int nr_arguments, char **arguments) {
  vek::CommandLine line(
      program,
      "Finds settings for a collection from its training list alone, and\n"
      "writes a resource file for vek. The test list is never opened.");
  Arguments values;
  CLI::App &app = line.app();
  app.add_option("examples-directory", values.examples,
                 "directory with the training list");
  app.add_option("-o,--output", values.output, "resource file to write")
      ->type_name("FILE");
  app.add_option("-r,--resource", values.resources,
                 "resource file to begin with, as vek's -r (vek.rc)")
      ->type_name("FILE");
  app.add_option("-b,--budget", values.budget,
                 "so many times the usual work, 0.01 to 1000 (1)")
      ->type_name("NUMBER")
      ->check(vek::check_number)
      ->check(CLI::Range(0.01, 1000.0).description(""));
  app.add_flag("-f,--force", values.force, "replace the file if it is there");
  app.footer("Exit status: 0 done, 2 failure");
  if (const std::optional<int> status = line.parse(nr_arguments, arguments))
    return *status;
  if (values.examples.empty() || values.output.empty()) {
    report(program, values.examples.empty()
                        ? "an examples directory is needed"
                        : "a file to write is needed, with --output");
    return exit_usage;
  }
  // Whoever reads the table may go before the search ends.
  std::signal(SIGPIPE, SIG_IGN);
  watch_stop_signals();
  Failure failure;
  bool is_done = false;
  try {
    is_done = tune(values, failure);
  } catch (const std::bad_alloc &) {
    failure = {values.examples, "", "out of memory"};
  }
  if (!is_done)
    report(program, escaped(failure.text()));
  std::cout.flush();
  if (stop_signal() != 0)
    end_by(stop_signal());
  if (!std::cout) {
    std::perror(program);
    return exit_failed;
  }
  return is_done ? 0 : exit_failed;
}

#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "base/command_line.h"
#include "convert/encoding.h"
#include "convert/settings.h"
#include "convert/source.h"
#include "data/names.h"
#include "import/importer.h"

namespace {

using namespace vek::importing;
using vek::Failure;
using vek::convert::Form;
using vek::convert::Settings;
using vek::keeping::escaped;

constexpr char program[] = "vek-import";

constexpr int exit_good = 0;
constexpr int exit_nothing = 1;  // no document came of it
constexpr int exit_failed = 2;

struct Arguments {
  std::vector<std::string> sources;
  std::string examples;
  std::string form;
  std::string test;
  Settings settings;
  bool has_no_header = false;
  bool has_no_quotes = false;
  bool is_quiet = false;
};

void add_options(CLI::App &app, Arguments &arguments) {
  Settings &settings = arguments.settings;
  app.add_option("paths", arguments.sources,
                 "files or directories of texts, - for standard input; the "
                 "last one is the examples directory");
  app.add_option("-f,--form", arguments.form,
                 "text, html, mail, mbox, csv, tsv, jsonl or fasttext");
  app.add_option("-t,--text", settings.text, "fields with the text")
      ->delimiter(',')
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->allow_extra_args(false);
  app.add_option("-c,--class", settings.classes,
                 "field, or header of mail, with the class");
  app.add_option("-i,--id", settings.id, "field that tells documents apart");
  app.add_option("-g,--group", settings.group,
                 "field or header; what has the same value there stays in one "
                 "list");
  app.add_option("-s,--separator", settings.separator,
                 "divides a field into several classes");
  app.add_option("-p,--path", settings.path,
                 "divides a class into fathers and sons");
  app.add_option("-e,--encoding", settings.encoding, "encoding of the texts");
  app.add_option("-F,--filter", settings.filters,
                 "program that makes text of files: 'EXT=COMMAND', or "
                 "'COMMAND' for all")
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->allow_extra_args(false);
  app.add_flag("--no-header", arguments.has_no_header,
               "rows: the first one is a document as well");
  app.add_flag("--no-quotes", arguments.has_no_quotes,
               "rows: a quote is a character like others");
  app.add_option("-T,--test", arguments.test,
                 "share or number of documents for the test list");
  app.add_flag("-q,--quiet", arguments.is_quiet, "no progress, no summary");
}

bool check(Arguments &arguments, Failure &failure) {
  const auto fail = [&failure](const char *what, const std::string &reason) {
    failure = {what, "", reason};
    return false;
  };
  if (arguments.sources.size() < 2)
    return fail("arguments", "a source and an examples directory are needed");
  arguments.examples = arguments.sources.back();
  arguments.sources.pop_back();
  arguments.settings.form = vek::convert::find_form(arguments.form);
  if (!arguments.form.empty() && arguments.settings.form == Form::unknown)
    return fail("--form", "unknown form `" + arguments.form + "'");
  const std::string &encoding = arguments.settings.encoding;
  if (!encoding.empty() && !vek::convert::Transcoder(encoding).is_good())
    return fail("--encoding", "unknown encoding `" + encoding + "'");
  arguments.settings.has_header = !arguments.has_no_header;
  arguments.settings.has_quotes = !arguments.has_no_quotes;
  return true;
}

// Sources are known by their whole paths, wherever the program is called.
bool find_sources(Arguments &arguments, Failure &failure) {
  std::error_code error;
  const std::string examples =
      std::filesystem::weakly_canonical(arguments.examples, error);
  for (std::string &source : arguments.sources) {
    if (source == vek::convert::standard_input)
      continue;
    const std::string path = std::filesystem::canonical(source, error);
    if (error) {
      failure = {source, "", error.message()};
      return false;
    }
    if ((examples + '/').starts_with(path + '/')) {
      failure = {arguments.examples, "", "it lies in the source " + source};
      return false;
    }
    source = path;
  }
  return true;
}

void print(const Summary &summary, const std::string &examples) {
  std::cout << summary.nr_new << " new documents, " << summary.nr_known
            << " known ones, " << summary.nr_rejects << " left out\n";
  for (const auto &[reason, count] : summary.rejects)
    std::cout << "  " << count << ": " << reason << '\n';
  if (summary.nr_rejects > 0)
    std::cout << "  each is in " << examples << '/' << rejects_file << '\n';
  if (summary.nr_changed > 0) {
    std::cout << summary.nr_changed
              << " known documents have another text now; they stay as they "
                 "were\n";
  }
  std::cout << examples << ": " << summary.nr_train << " training documents, "
            << summary.nr_test << " test documents, " << summary.nr_classes
            << (summary.nr_classes == 1 ? " class\n" : " classes\n");
  if (summary.nr_classes == 1) {
    std::cout << "there is nothing to tell one class from: give folders for "
                 "classes, or say with --class where they are\n";
  }
  if (summary.nr_inner > 0) {
    std::cout << summary.nr_inner
              << " documents are in classes that have sons, and vek assigns "
                 "only classes without\n";
  }
  if (summary.nr_near > 0) {
    std::cout << summary.nr_near
              << " test documents are nearly the same as a training document: "
              << examples << '/' << near_file << '\n';
  }
  if (summary.has_new_resource_file)
    std::cout << "next: cd " << examples << " && vek -v .\n";
}

int run(Arguments &arguments) {
  Failure failure;
  Importer importer(program, arguments.is_quiet);
  bool is_done = find_sources(arguments, failure) &&
                 importer.open(arguments.examples, failure) &&
                 importer.set_test(arguments.test, failure);
  for (const std::string &source : arguments.sources) {
    is_done =
        is_done && importer.read_source(source, arguments.settings, failure);
  }
  if (!is_done || !importer.finish(failure)) {
    vek::report(program, escaped(failure.text()));
    return exit_failed;
  }
  const Summary &summary = importer.summary();
  if (!arguments.is_quiet)
    print(summary, arguments.examples);
  std::cout.flush();
  if (!std::cout) {
    std::perror(program);
    return exit_failed;
  }
  return summary.nr_new + summary.nr_known > 0 ? exit_good : exit_nothing;
}

}  // namespace

int main(int nr_arguments, char **arguments) {
  vek::CommandLine line(program,
                        "Makes an examples directory from texts in whatever "
                        "form: folders, tables, mail.");
  Arguments values;
  add_options(line.app(), values);
  line.app().footer("Exit status: 0 done, 1 no document was found, 2 failure");
  if (const std::optional<int> status = line.parse(nr_arguments, arguments))
    return *status;
  try {
    Failure failure;
    if (!check(values, failure)) {
      vek::report(program, failure.text());
      return vek::exit_usage;
    }
    return run(values);
  } catch (const std::bad_alloc &) {
    vek::report(program, "out of memory");
    return exit_failed;
  }
}

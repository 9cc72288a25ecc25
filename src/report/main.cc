#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <iostream>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "base/command_line.h"
#include "base/helpers.h"
#include "report/comparison.h"
#include "report/page.h"
#include "report/page_frame.h"
#include "report/predictions.h"
#include "report/table.h"
#include "report/tables.h"

namespace {

using namespace vek::reporting;
using vek::Failure;

constexpr char program[] = "vek-report";

constexpr int exit_good = 0;
constexpr int exit_failed = 2;

const std::vector<std::string> table_names = {"summary", "classes", "pairs",
                                              "documents", "test"};

struct Arguments {
  std::string run;
  std::string other;     // empty: no comparison
  std::string table;     // empty: the usual ones
  std::string document;  // empty: all
  std::string sort = "f1";
  std::string html;   // empty: no page
  std::string files;  // empty: beside the predictions
  bool reverse = false;
  bool csv = false;
  bool json = false;
  std::optional<std::size_t> nr_lines;  // 0: all
};

// Cuts tables for a reader: of what goes on and on there are the first lines,
// unless it was asked for by its name.
void cut(std::vector<Table> &tables, const Arguments &arguments) {
  for (Table &table : tables) {
    std::size_t nr_lines = 0;
    if (arguments.table.empty() && table.name == "pairs")
      nr_lines = 10;
    if (arguments.table.empty() && table.name == "documents")
      nr_lines = 20;
    nr_lines = arguments.nr_lines.value_or(nr_lines);
    if (nr_lines > 0 && table.name != "summary" && !table.is_record)
      table.nr_shown = nr_lines;
  }
}

bool wants(const Arguments &arguments, const char *table) {
  return arguments.table.empty() || arguments.table == table;
}

std::vector<Table> tables_of_run(const Judged &run,
                                 const Arguments &arguments) {
  std::vector<Table> tables;
  if (wants(arguments, "summary"))
    tables.push_back(summary_table(run));
  // New documents alone have no figures.
  const bool has_figures =
      run.figures.nr_documents > 0 || !arguments.table.empty();
  if (has_figures && wants(arguments, "classes")) {
    tables.push_back(
        class_table(run, arguments.sort,
                    arguments.reverse ? Order::reverse : Order::usual));
  }
  if (has_figures && wants(arguments, "pairs"))
    tables.push_back(pair_table(run));
  if (!has_figures || arguments.table == "documents")
    tables.push_back(document_table(run));
  return tables;
}

std::vector<Table> tables_of_comparison(const Judged &run,
                                        const Predictions &other,
                                        const Comparison &comparison,
                                        const Arguments &arguments) {
  std::vector<Table> tables;
  if (wants(arguments, "summary"))
    tables.push_back(compared_summary(comparison));
  if (wants(arguments, "classes"))
    tables.push_back(compared_classes(comparison, run.names));
  if (wants(arguments, "documents"))
    tables.push_back(
        changed_documents(comparison, run.predictions, other, run.names));
  if (wants(arguments, "test"))
    tables.push_back(test_table(comparison));
  return tables;
}

// The texts' directory: as given, or else `files` beside the predictions, if it
// is there.
std::string find_files(const Arguments &arguments, const std::string &file) {
  if (!arguments.files.empty())
    return arguments.files;
  const std::size_t slash = file.rfind('/');
  const std::string beside =
      (slash == std::string::npos ? "" : file.substr(0, slash + 1)) + "files";
  return vek::is_directory(beside) ? beside : "";
}

// Whatever was read and counted.
struct Session {
  ClassNames names;
  Judged run{names, {}, {}, {}};
  Predictions other;
  std::optional<Comparison> comparison;

  bool read(const Arguments &arguments, Failure &failure) {
    if (!find_predictions(arguments.run, names, run.predictions, failure))
      return false;
    if (!arguments.other.empty() &&
        !find_predictions(arguments.other, names, other, failure))
      return false;
    run.judge();
    if (!arguments.other.empty())
      comparison = compare(run.predictions, other, names.size());
    return true;
  }
};

bool write_html(const Session &session, const Arguments &arguments,
                Failure &failure) {
  const std::string files = find_files(arguments, session.run.predictions.file);
  if (!files.empty() && !vek::is_directory(files)) {
    failure = {files, "", "it is no directory"};
    return false;
  }
  PageInput input{session.run, nullptr, nullptr, files};
  if (session.comparison) {
    input.other_P = &session.other;
    input.comparison_P = &*session.comparison;
  }
  return write_page(arguments.html, make_page(input), failure);
}

bool make_tables(const Session &session, const Arguments &arguments,
                 std::vector<Table> &tables, Failure &failure) {
  const Predictions &predictions = session.run.predictions;
  if (!arguments.document.empty()) {
    const auto doc_P = std::ranges::find(predictions.documents,
                                         arguments.document, &Prediction::name);
    if (doc_P == predictions.documents.end()) {
      failure = {predictions.file, "",
                 "there is no document `" + arguments.document + "'"};
      return false;
    }
    tables = {candidate_table(session.run, *doc_P)};
    return true;
  }
  tables = session.comparison
               ? tables_of_comparison(session.run, session.other,
                                      *session.comparison, arguments)
               : tables_of_run(session.run, arguments);
  if (tables.empty()) {
    failure = {"--table=" + arguments.table, "",
               session.comparison ? "a comparison has no such table"
                                  : "only a comparison has that table"};
  }
  return !tables.empty();
}

void print(std::vector<Table> &tables, const Arguments &arguments) {
  if (arguments.json) {
    print_json(tables, std::cout);
  } else if (arguments.csv) {
    for (const Table &table : tables)
      print_csv(table, std::cout);
  } else {
    cut(tables, arguments);
    print_aligned(tables, std::cout);
  }
  std::cout.flush();
}

int run(Arguments arguments) {
  std::ios::sync_with_stdio(false);
  if (arguments.csv && arguments.table.empty())
    arguments.table = "classes";
  Session session;
  std::vector<Table> tables;
  Failure failure;
  bool is_good = session.read(arguments, failure);
  if (is_good && !arguments.html.empty())
    is_good = write_html(session, arguments, failure);
  else if (is_good)
    is_good = make_tables(session, arguments, tables, failure);
  if (!is_good) {
    vek::report(program, shown_name(failure.text()));
    return exit_failed;
  }
  if (arguments.html.empty())
    print(tables, arguments);
  if (!std::cout) {
    std::perror(program);
    return exit_failed;
  }
  return exit_good;
}

// The help tells the names in its own words.
CLI::Validator one_of(const std::vector<std::string> &names) {
  return CLI::IsMember(names).description("");
}

void add_options(CLI::App &app, Arguments &arguments) {
  app.add_option("run", arguments.run,
                 "a predictions file, or the examples directory that has one");
  app.add_option("-c,--compare", arguments.other, "compare with another run")
      ->type_name("OTHER");
  app.add_option("-d,--document", arguments.document,
                 "show the scores of one document")
      ->type_name("NAME");
  app.add_option("-t,--table", arguments.table,
                 "show one table: summary, classes, pairs, documents, test")
      ->check(one_of(table_names))
      ->type_name("NAME");
  app.add_option("-s,--sort", arguments.sort,
                 "sort classes by that column of theirs")
      ->check(one_of(class_columns))
      ->type_name("COLUMN");
  app.add_flag("-r,--reverse", arguments.reverse, "sort the other way round");
  app.add_option("-n,--lines", arguments.nr_lines,
                 "show that many lines of a table, 0: all")
      ->check(vek::check_number)
      ->type_name("NUMBER");
  app.add_option("--html", arguments.html, "write a page instead")
      ->type_name("FILE");
  app.add_option("--files", arguments.files,
                 "directory of the texts for the page")
      ->type_name("DIRECTORY");
  app.add_flag("--csv", arguments.csv, "write CSV");
  app.add_flag("-j,--json", arguments.json, "write JSON");
}

}  // namespace

int main(int nr_arguments, char **arguments) {
  vek::CommandLine line(
      program, "Shows how a run of vek went: figures, confusions, documents.");
  Arguments values;
  add_options(line.app(), values);
  line.app().footer("Exit status: 0 done, 2 failure");
  if (const std::optional<int> status = line.parse(nr_arguments, arguments))
    return *status;
  if (values.run.empty()) {
    vek::report(program, "a predictions file or a directory is needed");
    return vek::exit_usage;
  }
  if (values.csv + values.json + !values.html.empty() > 1) {
    vek::report(program, "only one of --csv, --json and --html");
    return vek::exit_usage;
  }
  try {
    return run(values);
  } catch (const std::bad_alloc &) {
    vek::report(program, "out of memory");
    return exit_failed;
  }
}

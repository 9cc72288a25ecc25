#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <iostream>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "answering/kept_model.h"
#include "answering/place_options.h"
#include "base/command_line.h"
#include "data/names.h"
#include "report/table.h"
#include "show/confusions.h"
#include "show/tables.h"

namespace {

using namespace vek;
using namespace vek::showing;
using keeping::escaped;
using reporting::Table;

constexpr char program[] = "vek-show";

constexpr int exit_good = 0;
constexpr int exit_failed = 2;

constexpr std::size_t nr_lines_for_reader = 15;

struct Arguments {
  std::string name;  // of the class or document
  std::vector<std::string> words;
  KeptModel::Place place;
  std::string predictions;              // empty: of the place
  std::string table;                    // empty: the usual ones
  std::optional<std::size_t> nr_lines;  // 0: all
  bool json = false;
  bool tsv = false;
};

using Add = bool (*)(KeptModel &model, const Arguments &arguments,
                     std::vector<Table> &tables, Failure &failure);

struct Command {
  const char *name;
  const char *description;
  const char *main_table;  // for --tsv
  Add add;
};

const std::vector<Command> commands = {
    {"class", "a class: threshold, calibration, heaviest terms, confusions",
     "terms",
     [](KeptModel &model, const Arguments &arguments,
        std::vector<Table> &tables, Failure &failure) {
       const std::string &directory = arguments.place.directory;
       std::string place = arguments.predictions;
       if (place.empty())
         place = directory.empty() ? "." : directory;
       if (arguments.predictions.empty() && !has_predictions(place))
         place.clear();
       return add_class_tables(model, arguments.name, place, tables, failure);
     }},
    {"term", "a term: the classes in which it counts, the pairs with it",
     "classes",
     [](KeptModel &model, const Arguments &arguments,
        std::vector<Table> &tables, Failure &failure) {
       return add_term_tables(model, arguments.words, tables, failure);
     }},
    {"document", "a stored document: its terms", "terms",
     [](KeptModel &model, const Arguments &arguments,
        std::vector<Table> &tables, Failure &failure) {
       return add_document_tables(model, arguments.name, tables, failure);
     }},
    {"tree", "the hierarchy: documents and thresholds", "tree",
     [](KeptModel &model, const Arguments &arguments,
        std::vector<Table> &tables, Failure & /*failure*/) {
       add_tree_table(
           model,
           arguments.json || arguments.tsv ? Reader::program : Reader::person,
           tables);
       return true;
     }},
};

const char *title_of(const Table &table, bool is_of_class) {
  if (table.name == "terms")
    return is_of_class ? "Heaviest terms" : "Terms";
  if (table.name == "against")
    return "Heaviest terms against";
  if (table.name == "confusions")
    return "Confused with";
  if (table.name == "classes")
    return "Classes";
  return table.name == "pairs" ? "Pairs" : "";
}

// For a reader; what has no lines is left out.
void print_tables(std::vector<Table> &tables, const Arguments &arguments,
                  const Command &command) {
  bool is_first = true;
  for (Table &table : tables) {
    if (table.rows.empty() && arguments.table.empty())
      continue;
    if (!is_first)
      std::cout << '\n';
    is_first = false;
    const std::string title =
        title_of(table, command.name == std::string("class"));
    if (!title.empty())
      std::cout << title << ":\n";
    const std::size_t nr_lines = arguments.nr_lines.value_or(
        command.name == std::string("tree") ? 0 : nr_lines_for_reader);
    if (nr_lines > 0 && !table.is_record)
      table.nr_shown = nr_lines;
    reporting::escape_names(table, escaped);
    reporting::print_aligned({table}, std::cout);
  }
}

void print(std::vector<Table> &tables, const Arguments &arguments,
           const Command &command) {
  if (!arguments.json && !arguments.tsv) {
    print_tables(tables, arguments, command);
    return;
  }
  for (Table &table : tables) {
    const std::size_t nr_lines = arguments.nr_lines.value_or(0);
    if (nr_lines > 0 && !table.is_record && table.rows.size() > nr_lines)
      table.rows.resize(nr_lines);
  }
  if (arguments.json) {
    reporting::print_json(tables, std::cout);
  } else {
    for (const Table &table : tables)
      reporting::print_tsv(table, escaped, std::cout);
  }
}

// Leaves the table that was asked for, or the one that stands in TSV.
bool choose_table(const Arguments &arguments, const Command &command,
                  std::vector<Table> &tables, Failure &failure) {
  const std::string name = !arguments.table.empty() ? arguments.table
                           : arguments.tsv          ? command.main_table
                                                    : "";
  if (name.empty())
    return true;
  std::erase_if(tables, [&](const Table &table) { return table.name != name; });
  if (tables.empty()) {
    failure = {"--table=" + name, "",
               "`" + std::string(command.name) + "' has no such table"};
  }
  return !tables.empty();
}

int run(const Arguments &arguments, const Command &command) {
  std::ios::sync_with_stdio(false);
  Failure failure;
  KeptModel model;
  std::vector<Table> tables;
  if (!model.open(arguments.place, failure) ||
      !command.add(model, arguments, tables, failure) ||
      !choose_table(arguments, command, tables, failure)) {
    report(program, escaped(failure.text()));
    return exit_failed;
  }
  print(tables, arguments, command);
  std::cout.flush();
  if (!std::cout) {
    std::perror(program);
    return exit_failed;
  }
  return exit_good;
}

void add_options(CLI::App &app, Arguments &arguments) {
  app.add_option("-C,--directory", arguments.place.directory,
                 "where vek is called (.)")
      ->type_name("DIRECTORY");
  add_place_options(app, arguments.place);
  app.add_option("-p,--predictions", arguments.predictions,
                 "file or directory for what is confused")
      ->type_name("PLACE");
  app.add_option("-n,--lines", arguments.nr_lines,
                 "show that many lines of a table, 0: all")
      ->check(vek::check_number)
      ->type_name("NUMBER");
  app.add_option("-t,--table", arguments.table, "show one table")
      ->type_name("NAME");
  app.add_flag("-j,--json", arguments.json, "write JSON");
  app.add_flag("--tsv", arguments.tsv, "write tab-separated lines");
}

// Sets `chosen` when the command is on the command line.
void add_command(CLI::App &app, const Command &command, Arguments &arguments,
                 const Command *&chosen_P) {
  CLI::App &sub = *app.add_subcommand(command.name, command.description);
  sub.callback([&command, &chosen_P] { chosen_P = &command; });
  // The options are the same for all, and may stand behind the command.
  sub.fallthrough();
  const std::string name = command.name;
  if (name == "class")
    sub.add_option("path", arguments.name, "its path")->required();
  if (name == "document")
    sub.add_option("name", arguments.name, "its name")->required();
  if (name == "term") {
    sub.add_option("word", arguments.words, "a word, or modifier and word")
        ->required();
  }
}

}  // namespace

int main(int nr_arguments, char **arguments) {
  CommandLine line(program, "Shows what a kept model has learnt.");
  Arguments values;
  const Command *chosen_P = nullptr;
  add_options(line.app(), values);
  for (const Command &command : commands)
    add_command(line.app(), command, values, chosen_P);
  line.app().require_subcommand(0, 1);
  line.app().footer("Exit status: 0 done, 2 failure");
  if (const std::optional<int> status = line.parse(nr_arguments, arguments))
    return *status;
  const auto refuse = [](const char *reason) {
    report(program, reason);
    return exit_usage;
  };
  if (chosen_P == nullptr)
    return refuse("a command is needed; -h shows them");
  if (values.json && values.tsv)
    return refuse("only one of --json and --tsv");
  try {
    return run(values, *chosen_P);
  } catch (const std::bad_alloc &) {
    report(program, "out of memory");
    return exit_failed;
  }
}

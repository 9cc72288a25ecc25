#include <CLI/CLI.hpp>
#include <cstdio>
#include <functional>
#include <iostream>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "base/command_line.h"
#include "data/contents.h"
#include "data/copies.h"
#include "data/directory_lock.h"
#include "data/files.h"
#include "data/forget.h"
#include "data/names.h"
#include "data/verify.h"

namespace {

using vek::DirectoryLock;
using vek::Failure;
using namespace vek::keeping;

constexpr char program[] = "vek-data";

constexpr int exit_good = 0;
constexpr int exit_damaged = 1;  // or a name that is not known
constexpr int exit_failed = 2;

struct Arguments {
  std::string directory;
  std::string destination;
  std::vector<std::string> names;
  bool json = false;
  bool empty = false;

  Format format() const { return json ? Format::json : Format::lines; }
};

// What a command does; returns the exit status. With exit_failed `failure` says
// why.
using Action = std::function<int(const Arguments &arguments, Failure &failure)>;

int status_of(bool is_done) {
  return is_done ? exit_good : exit_failed;
}

int verify(const Arguments &arguments, Failure &failure) {
  Verification verification(
      arguments.directory, Verification::Depth::full,
      [](const Finding &finding) {
        std::cout << (finding.is_damage() ? "damage: " : "note: ")
                  << escaped(finding.failure.text())
                  << (finding.is_damage() ? "; " : "") << finding.remedy
                  << '\n';
      });
  if (!verification.run(failure))
    return exit_failed;
  return verification.has_damage() ? exit_damaged : exit_good;
}

// A name for each line, escaped as `list` writes it.
bool read_names(std::vector<std::string> &names, Failure &failure) {
  std::string line;
  std::string name;
  for (std::size_t number = 1; std::getline(std::cin, line); ++number) {
    if (!unescape(line, name)) {
      failure = {"standard input", "line " + std::to_string(number),
                 "a backslash that escapes nothing"};
      return false;
    }
    names.push_back(name);
  }
  if (std::cin.bad())
    failure = {"standard input", "", "it cannot be read"};
  return !std::cin.bad();
}

// Puts the names on standard input in the place of "-". To be done before the
// directory is locked: what writes them may have it locked to its end.
bool expand_names(std::vector<std::string> &names, Failure &failure) {
  std::vector<std::string> given;
  given.swap(names);
  for (const std::string &name : given) {
    if (name != "-")
      names.push_back(name);
    else if (!read_names(names, failure))
      return false;
  }
  return true;
}

int forget(const Arguments &arguments, Failure &failure) {
  std::vector<std::string> unknown;
  if (!forget_documents(arguments.directory, arguments.names, unknown, failure))
    return exit_failed;
  for (const std::string &name : unknown) {
    vek::report(program, escaped(arguments.directory) +
                             ": there is no document `" + escaped(name) + "'");
  }
  return unknown.empty() ? exit_good : exit_damaged;
}

int run(const Action &action, DirectoryLock::Mode kind, Arguments &arguments) {
  std::ios::sync_with_stdio(false);
  DirectoryLock lock;
  Failure failure;
  std::string warning;
  int status = exit_failed;
  if (expand_names(arguments.names, failure) &&
      take_lock(lock, arguments.directory, kind, warning, failure)) {
    if (!warning.empty())
      vek::report(program, "warning: " + escaped(warning));
    if (is_data_directory(arguments.directory, failure))
      status = action(arguments, failure);
  }
  std::cout.flush();
  if (!std::cout) {
    std::perror(program);
    return exit_failed;
  }
  if (status == exit_failed)
    vek::report(program, escaped(failure.text()));
  return status;
}

struct Command {
  const char *name;
  const char *description;
  DirectoryLock::Mode lock;
  Action action;
  bool has_json = false;
};

const std::vector<Command> commands = {
    {"info", "tell what a data directory holds", DirectoryLock::Mode::shared,
     [](const Arguments &arguments, Failure &failure) {
       return status_of(print_info(arguments.directory, arguments.format(),
                                   std::cout, failure));
     },
     true},
    {"list", "list the stored documents", DirectoryLock::Mode::shared,
     [](const Arguments &arguments, Failure &failure) {
       return status_of(print_list(arguments.directory,
                                   arguments.empty ? Which::empty : Which::all,
                                   arguments.format(), std::cout, failure));
     },
     true},
    {"verify", "look for damage in all files", DirectoryLock::Mode::shared,
     verify},
    {"forget", "drop documents, so that the next run analyses them anew",
     DirectoryLock::Mode::exclusive, forget},
    {"compact", "give back the space that nothing uses any more",
     DirectoryLock::Mode::exclusive,
     [](const Arguments &arguments, Failure &failure) {
       return status_of(compact_directory(arguments.directory, failure));
     }},
    {"copy", "copy the directory to a new one", DirectoryLock::Mode::shared,
     [](const Arguments &arguments, Failure &failure) {
       return status_of(
           copy_directory(arguments.directory, arguments.destination, failure));
     }},
    {"export", "write out all profiles", DirectoryLock::Mode::shared,
     [](const Arguments &arguments, Failure &failure) {
       return status_of(print_profiles(arguments.directory, arguments.format(),
                                       std::cout, failure));
     },
     true},
};

// Sets `chosen` when the command is on the command line.
void add_command(CLI::App &app, const Command &command, Arguments &arguments,
                 const Command *&chosen) {
  CLI::App &sub = *app.add_subcommand(command.name, command.description);
  sub.callback([&command, &chosen] { chosen = &command; });
  const std::string name = command.name;
  sub.add_option("directory", arguments.directory, "the data directory")
      ->required();
  if (name == "forget") {
    sub.add_option("names", arguments.names,
                   "documents; - for names on standard input, one on a line")
        ->required();
  }
  if (name == "copy") {
    sub.add_option("destination", arguments.destination,
                   "directory that is not there yet")
        ->required();
  }
  if (name == "list")
    sub.add_flag("-e,--empty", arguments.empty, "only documents without terms");
  if (command.has_json)
    sub.add_flag("-j,--json", arguments.json, "write JSON");
}

}  // namespace

int main(int nr_arguments, char **arguments) {
  vek::CommandLine line(program,
                        "Looks after a data directory of vek. `vek-data "
                        "COMMAND -h' tells more.");
  Arguments values;
  const Command *chosen_P = nullptr;
  for (const Command &command : commands)
    add_command(line.app(), command, values, chosen_P);
  line.app().require_subcommand(0, 1);
  line.app().footer(
      "Exit status: 0 done, 1 damaged or a name that is not known, 2 failure");
  if (const std::optional<int> status = line.parse(nr_arguments, arguments))
    return *status;
  if (chosen_P == nullptr) {
    vek::report(program, "a command is needed; -h shows them");
    return vek::exit_usage;
  }
  try {
    return run(chosen_P->action, chosen_P->lock, values);
  } catch (const std::bad_alloc &) {
    vek::report(program, "out of memory");
    return exit_failed;
  }
}

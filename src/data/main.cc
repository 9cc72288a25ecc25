#include <CLI/CLI.hpp>
#include <cstdio>
#include <functional>
#include <iostream>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "answering/manifest.h"
#include "answering/place_options.h"
#include "base/command_line.h"
#include "base/helpers.h"
#include "data/contents.h"
#include "data/copies.h"
#include "data/directory_lock.h"
#include "data/files.h"
#include "data/forget.h"
#include "data/names.h"
#include "data/pack.h"
#include "data/verify.h"

namespace {

using vek::check_packed_model;
using vek::DirectoryLock;
using vek::Failure;
using vek::is_packed_model;
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
  Packing packing;

  Format format() const { return json ? Format::json : Format::lines; }
};

// Of a packed model, or the directory itself.
std::string data_of(const std::string &directory) {
  return is_packed_model(directory) ? vek::Path(directory, vek::packed_data, "")
                                    : directory;
}

// What a command does; returns the exit status. With exit_failed `failure` says
// why.
using Action = std::function<int(const Arguments &arguments, Failure &failure)>;

int status_of(bool is_done) {
  return is_done ? exit_good : exit_failed;
}

void print_finding(const Finding &finding) {
  std::cout << (finding.is_damage() ? "damage: " : "note: ")
            << escaped(finding.failure.text())
            << (finding.is_damage() ? "; " : "") << finding.remedy << '\n';
}

int verify(const Arguments &arguments, Failure &failure) {
  const bool is_packed = is_packed_model(arguments.directory);
  if (is_packed && !check_packed_model(arguments.directory, failure)) {
    print_finding({failure, "take the model from where it was packed"});
    return exit_damaged;
  }
  const std::string data = data_of(arguments.directory);
  Verification verification(data, Verification::Depth::full, print_finding);
  if (!verification.run(failure))
    return exit_failed;
  return verification.has_damage() ? exit_damaged : exit_good;
}

// It locks what it reads, which is not the directory of the command line.
int pack(const Packing &packing) {
  Failure failure;
  std::string warning;
  const bool is_done = pack_model(packing, warning, failure);
  if (!warning.empty())
    vek::report(program, "warning: " + escaped(warning));
  if (!is_done)
    vek::report(program, escaped(failure.text()));
  return status_of(is_done);
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

struct Command {
  const char *name;
  const char *description;
  DirectoryLock::Mode lock;
  Action action;
  bool has_json = false;
  bool takes_packed = false;  // the directory may be a packed model
};

const std::vector<Command> commands = {
    {"info", "tell what a data directory holds", DirectoryLock::Mode::shared,
     [](const Arguments &arguments, Failure &failure) {
       return status_of(print_info(arguments.directory, arguments.format(),
                                   std::cout, failure));
     },
     true, true},
    {"list", "list the stored documents", DirectoryLock::Mode::shared,
     [](const Arguments &arguments, Failure &failure) {
       return status_of(print_list(arguments.directory,
                                   arguments.empty ? Which::empty : Which::all,
                                   arguments.format(), std::cout, failure));
     },
     true},
    {"verify", "look for damage in all files", DirectoryLock::Mode::shared,
     verify, false, true},
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

int run(const Command &command, Arguments &arguments) {
  std::ios::sync_with_stdio(false);
  DirectoryLock lock;
  Failure failure;
  std::string warning;
  int status = exit_failed;
  const std::string data =
      command.takes_packed ? data_of(arguments.directory) : arguments.directory;
  if (expand_names(arguments.names, failure) &&
      take_lock(lock, data, command.lock, warning, failure)) {
    if (!warning.empty())
      vek::report(program, "warning: " + escaped(warning));
    if (is_data_directory(data, failure))
      status = command.action(arguments, failure);
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

void add_pack(CLI::App &app, Packing &packing) {
  CLI::App &sub = *app.add_subcommand(
      "pack", "put what judging needs into one directory, to hand on");
  sub.add_option("directory", packing.place.directory,
                 "where vek is called, or a packed model")
      ->required();
  sub.add_option("model", packing.destination, "directory not there yet")
      ->required();
  vek::add_place_options(sub, packing.place);
  sub.add_option_function<std::string>(
      "-c,--analyser",
      [&packing](const std::string &text) { packing.analyser = text; },
      "command line of the analyser where the model will be used");
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
  add_pack(line.app(), values.packing);
  line.app().require_subcommand(0, 1);
  line.app().footer(
      "Exit status: 0 done, 1 damaged or a name that is not known, 2 failure");
  if (const std::optional<int> status = line.parse(nr_arguments, arguments))
    return *status;
  const bool packs = line.app().got_subcommand("pack");
  if (chosen_P == nullptr && !packs) {
    vek::report(program, "a command is needed; -h shows them");
    return vek::exit_usage;
  }
  try {
    return packs ? pack(values.packing) : run(*chosen_P, values);
  } catch (const std::bad_alloc &) {
    vek::report(program, "out of memory");
    return exit_failed;
  }
}

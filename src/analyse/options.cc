#include "analyse/options.h"

#include <CLI/CLI.hpp>
#include <map>

#include "base/command_line.h"

namespace vek::analysis {
namespace {

constexpr auto description =
    "Reads paths of text files, one a line, and answers each with the "
    "analysis\n"
    "of its text and the byte 0x01.";

// An option whose value is one of a few words.
template <typename Value>
CLI::Option *add_choice(CLI::App &app, const std::string &name, Value &value,
                        const std::map<std::string, Value> &choices,
                        const std::string &help) {
  return app
      .add_option_function<std::string>(
          name,
          [&value, choices](const std::string &choice) {
            value = choices.at(choice);
          },
          help)
      ->check(CLI::IsMember(choices).description(""));
}

CLI::Option *add_name(CLI::App &app, const std::string &option,
                      std::string &name, const std::string &help) {
  const auto check = [](const std::string &value) {
    return std::string(value.empty() ? "empty name" : "");
  };
  return app.add_option(option, name, help)->check(check);
}

void set_language(const std::string &name, Options &options) {
  options.language_P = find_language(name);
  if (options.language_P == nullptr) {
    throw CLI::ValidationError("unknown language '" + name + "'; there are:\n" +
                               list_of_languages());
  }
}

}  // namespace

std::optional<int> read_options(int nr_arguments, const char *const *arguments,
                                Options &options) {
  CommandLine line(program_name, description);
  CLI::App &app = line.app();
  app.add_option_function<std::string>(
         "-l",
         [&options](const std::string &name) { set_language(name, options); },
         "language, by name or code; none for no stemming (english)")
      ->type_name("LANG");
  add_choice(
      app, "-t", options.terms,
      {{"words", Terms::words}, {"pairs", Terms::pairs}, {"both", Terms::both}},
      "words, pairs or both (both)")
      ->type_name("TERMS");
  add_name(app, "-s", options.stop_file, "further words to leave out")
      ->type_name("STOPFILE");
  add_choice(app, "-n", options.numbers,
             {{"drop", Numbers::drop},
              {"class", Numbers::as_class},
              {"keep", Numbers::keep}},
             "drop, class or keep (drop)")
      ->type_name("NUMBERS");
  CLI::Option *const to_P = add_name(app, "--to", options.to_directory,
                                     "write each answer to a file in DIR")
                                ->type_name("DIR");
  add_name(app, "--from", options.from_directory,
           "name it by all of the path behind DIR")
      ->type_name("DIR")
      ->needs(to_P);
  app.add_flag("--progress", options.has_progress,
               "tell on standard error how far it is");
  return line.parse(nr_arguments, arguments);
}

}  // namespace vek::analysis

#include "analyse/options.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace vek::analysis {
namespace {

struct Option {
  std::string_view name;
  std::string_view argument;  // empty if it takes none
  std::string_view help;
  // Puts the argument into the options. Returns what is wrong with it.
  std::string (*effect)(std::string_view argument, Options &options);
};

template <typename Value>
struct Choice {
  std::string_view name;
  Value value;
};

// Sets `value` to the one that is named `name`. False if none is.
template <typename Value, std::size_t nr_choices>
bool choose(const std::array<Choice<Value>, nr_choices> &choices,
            std::string_view name, Value &value) {
  for (const Choice<Value> &choice : choices) {
    if (choice.name != name)
      continue;
    value = choice.value;
    return true;
  }
  return false;
}

std::string quoted(std::string_view text) {
  return "'" + std::string(text) + "'";
}

std::string set_language(std::string_view name, Options &options) {
  options.language_P = find_language(name);
  if (options.language_P != nullptr)
    return {};
  return "unknown language " + quoted(name) + "; there are:\n" +
         list_of_languages();
}

std::string set_terms(std::string_view name, Options &options) {
  static constexpr std::array<Choice<Terms>, 3> choices = {
      {{"words", Terms::words},
       {"pairs", Terms::pairs},
       {"both", Terms::both}}};
  if (choose(choices, name, options.terms))
    return {};
  return "unknown terms " + quoted(name) + "; words, pairs or both";
}

std::string set_numbers(std::string_view name, Options &options) {
  static constexpr std::array<Choice<Numbers>, 3> choices = {
      {{"drop", Numbers::drop},
       {"class", Numbers::as_class},
       {"keep", Numbers::keep}}};
  if (choose(choices, name, options.numbers))
    return {};
  return "unknown treatment of numbers " + quoted(name) +
         "; drop, class or keep";
}

std::string set_stop_file(std::string_view name, Options &options) {
  options.stop_file = name;
  return name.empty() ? "empty name for '-s'" : "";
}

std::string set_to(std::string_view name, Options &options) {
  options.to_directory = name;
  return name.empty() ? "empty name for '--to'" : "";
}

std::string set_from(std::string_view name, Options &options) {
  options.from_directory = name;
  return name.empty() ? "empty name for '--from'" : "";
}

std::string set_progress(std::string_view, Options &options) {
  options.has_progress = true;
  return {};
}

std::string set_help(std::string_view, Options &options) {
  options.wants_help = true;
  return {};
}

std::string set_version(std::string_view, Options &options) {
  options.wants_version = true;
  return {};
}

constexpr std::array<Option, 10> all_options = {{
    {"-l", "LANG", "language, by name or code; none for no stemming (english)",
     set_language},
    {"-t", "TERMS", "words, pairs or both (both)", set_terms},
    {"-s", "STOPFILE", "further words to leave out", set_stop_file},
    {"-n", "NUMBERS", "drop, class or keep (drop)", set_numbers},
    {"--to", "DIR", "write each answer to a file in DIR", set_to},
    {"--from", "DIR", "name it by all of the path behind DIR", set_from},
    {"--progress", "", "tell on standard error how far it is", set_progress},
    {"-h", "", "print this and end", set_help},
    {"--help", "", "the same", set_help},
    {"--version", "", "print the version and end", set_version},
}};

// An option as it stands on the command line: `-lde`, `-l de`, `--to=DIR` or
// `--to DIR`.
struct Written {
  std::string_view name;
  std::string_view argument;
  bool has_argument;
};

Written split_option(std::string_view text) {
  if (!text.starts_with("--")) {
    return {text.substr(0, 2),
            text.substr(std::min<std::size_t>(2, text.size())),
            text.size() > 2};
  }
  const std::size_t end = text.find('=');
  if (end == text.npos)
    return {text, {}, false};
  return {text.substr(0, end), text.substr(end + 1), true};
}

const Option *find_option(std::string_view name) {
  for (const Option &option : all_options) {
    if (option.name == name)
      return &option;
  }
  return nullptr;
}

}  // namespace

std::string read_options(std::span<char *const> arguments, Options &options) {
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    Written written = split_option(arguments[i]);
    const Option *option_P = find_option(written.name);
    if (option_P == nullptr)
      return "unknown option " + quoted(arguments[i]);
    const bool takes_argument = !option_P->argument.empty();
    if (!takes_argument && written.has_argument) {
      return quoted(option_P->name) + " takes no argument";
    }
    if (takes_argument && !written.has_argument) {
      if (++i == arguments.size()) {
        return quoted(option_P->name) + " needs an argument";
      }
      written.argument = arguments[i];
    }
    std::string problem = option_P->effect(written.argument, options);
    if (!problem.empty())
      return problem;
  }
  if (!options.from_directory.empty() && options.to_directory.empty()) {
    return "'--from' goes with '--to' only";
  }
  return {};
}

std::string usage() {
  std::string text =
      "usage: vek-analyse [option]...\n"
      "Reads paths of text files, one a line, and answers each with the\n"
      "analysis of its text and the byte 0x01.\n";
  for (const Option &option : all_options) {
    std::string line =
        "  " + std::string(option.name) + ' ' + std::string(option.argument);
    line.resize(16, ' ');
    text += line + std::string(option.help) + '\n';
  }
  return text;
}

}  // namespace vek::analysis

#include "base/command_line.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <vector>

#include "base/progress_line.h"

namespace vek {
namespace {

class HelpFormatter : public CLI::Formatter {
 public:
  HelpFormatter() { column_width(20); }

  // "-h --help" for the library's "-h,--help".
  std::string make_option_name(const CLI::Option *option_P,
                               bool is_positional) const override {
    return CLI::detail::find_and_replace(
        CLI::Formatter::make_option_name(option_P, is_positional), ",", " ");
  }
};

// The library would take the argument behind `--to=` as its value, and an empty
// variable of a script would make an option of the next one.
void refuse_empty_values(const std::vector<std::string> &arguments) {
  for (const std::string &argument : arguments) {
    if (argument.starts_with("--") && argument.find('=') + 1 == argument.size())
      throw CLI::ValidationError("'" + argument + "' lacks its value");
  }
}

}  // namespace

CommandLine::CommandLine(const std::string &name,
                         const std::string &description)
    : app_P_(std::make_unique<CLI::App>(description, name)) {
  app_P_->formatter(std::make_shared<HelpFormatter>());
  app_P_->set_help_flag("-h,--help", "show help and end");
  app_P_->set_version_flag("-V,--version", name + " " VEK_VERSION,
                           "show the version and end");
  app_P_->option_defaults()->multi_option_policy(
      CLI::MultiOptionPolicy::TakeLast);
}

CommandLine::~CommandLine() = default;

std::optional<int> CommandLine::parse(int nr_arguments,
                                      const char *const *arguments) {
  // The library takes arguments from the back of the list.
  std::vector<std::string> reversed;
  for (int i = nr_arguments - 1; i > 0; --i)
    reversed.emplace_back(arguments[i]);
  try {
    refuse_empty_values(reversed);
    app_P_->parse(reversed);
    return std::nullopt;
  } catch (const CLI::CallForHelp &) {
    std::cout << app_P_->help() << std::flush;
    return 0;
  } catch (const CLI::CallForVersion &version) {
    std::cout << version.what() << std::endl;
    return 0;
  } catch (const CLI::ExtrasError &) {
    const std::string first = app_P_->remaining(true).front();
    report(app_P_->get_name(),
           (first.starts_with('-') ? "unknown option '"
                                   : "unexpected argument '") +
               first + "'");
  } catch (const CLI::ParseError &error) {
    report(app_P_->get_name(), error.what());
  }
  return exit_usage;
}

std::string check_number(const std::string &text) {
  const double value = std::strtod(text.c_str(), nullptr);
  const bool is_bad = std::isnan(value) || std::signbit(value);
  return is_bad ? text + " is no number from 0 up" : "";
}

void report(std::string_view program, std::string_view message) {
  const std::string line =
      std::string(program) + ": " + std::string(message) + '\n';
  erase_progress_line();
  // One call, and stderr has no buffer: one write() of the system.
  std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace vek

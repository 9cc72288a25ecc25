// The command line of a companion: what all of them have in common. Each has
// -h, --help and -V, --version, takes the last of several values for an option,
// and answers bad usage with one line on standard error.
//
// The options themselves are made with the library's own calls on app(). Only
// the source that does so includes <CLI/CLI.hpp>, which is slow to compile:
//
//   CommandLine line("vek-example", "Does what an example does.");
//   line.app().add_option("-o,--output", file, "where to write");
//   if (const std::optional<int> status = line.parse(argc, argv))
//     return *status;
#ifndef VEK_BASE_COMMAND_LINE_H_
#define VEK_BASE_COMMAND_LINE_H_

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace CLI {
class App;
}

namespace vek {

// Of a companion whose command line is wrong.
inline constexpr int exit_usage = 2;

class CommandLine {
 public:
  // `name` is the program's, `description` what the help begins with.
  CommandLine(const std::string &name, const std::string &description);
  ~CommandLine();

  CLI::App &app() { return *app_P_; }

  // Reads the arguments into the variables that the options of app() name.
  // Returns the status to exit with if the program is to end now: 0 if help or
  // version was wanted, which then is on standard output, and exit_usage if
  // something is wrong, which then was reported. A CLI::ValidationError that an
  // option's function throws is reported with its text as it stands.
  std::optional<int> parse(int nr_arguments, const char *const *arguments);

 private:
  const std::unique_ptr<CLI::App> app_P_;
};

// For an option's check(): what is wrong with a number, or nothing. The library
// itself makes a huge count of -1, and takes nan to be within any range.
std::string check_number(const std::string &text);

// Writes "program: message" and a line end to standard error, in one piece, so
// that the lines of several processes do not mix.
void report(std::string_view program, std::string_view message);

}  // namespace vek

#endif  // VEK_BASE_COMMAND_LINE_H_

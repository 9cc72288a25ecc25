// The command line of vek-check.
#ifndef VEK_CHECK_OPTIONS_H_
#define VEK_CHECK_OPTIONS_H_

#include <span>
#include <string>

namespace vek::checking {

struct CheckOptions {
  std::string examples;  // not empty, unless help or version is wanted
  std::string rc_file;   // empty: the default one
  bool wants_help = false;
  bool wants_version = false;
};

// Fills the record from the arguments behind the program's name. Returns what
// is wrong with them, or an empty string.
std::string read_options(std::span<char *const> arguments,
                         CheckOptions &options);

// What -h prints.
const char *help_text();

}  // namespace vek::checking

#endif  // VEK_CHECK_OPTIONS_H_

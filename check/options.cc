#include "check/options.h"

#include <cstddef>
#include <string_view>

namespace vek::checking {

std::string read_options(std::span<char *const> arguments,
                         CheckOptions &options) {
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string_view argument(arguments[i]);
    if (argument == "-h" || argument == "--help") {
      options.wants_help = true;
    } else if (argument == "-V" || argument == "--Version") {
      options.wants_version = true;
    } else if (argument == "-r" || argument == "--resource") {
      if (++i == arguments.size() || arguments[i][0] == '-')
        return "option `-r' needs an argument";
      options.rc_file = arguments[i];
    } else if (argument.starts_with('-')) {
      return "unknown option `" + std::string(argument) + "'";
    } else if (options.examples.empty()) {
      options.examples = argument;
    } else {
      return "duplicate examples directory specified";
    }
  }
  if (options.examples.empty() && !options.wants_help && !options.wants_version)
    return "an examples directory is needed";
  return {};
}

const char *help_text() {
  return "Usage: vek-check [ -h ] [ -V ] [ -r <rc-file> ] "
         "<examples-directory>\n"
         "\n"
         "Looks at lists, documents and classes as vek would, and tells what\n"
         "would stop a run or spoil its results. Changes nothing.\n"
         "\n"
         "Options are:\n"
         "    -h    --help           show help\n"
         "    -r    --resource       specify resource file\n"
         "    -V    --Version        show version\n"
         "\n"
         "Exit status: 0 nothing found, 1 warnings, 2 the run would stop\n";
}

}  // namespace vek::checking

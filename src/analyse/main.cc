#include <cstdio>
#include <span>
#include <string>

#include "analyse/options.h"
#include "analyse/session.h"

int main(int nr_arguments, char **arguments) {
  using namespace vek::analysis;
  Options options;
  const auto all =
      std::span<char *const>(arguments, static_cast<std::size_t>(nr_arguments));
  const std::string problem =
      read_options(all.subspan(all.empty() ? 0 : 1), options);
  if (!problem.empty()) {
    report(problem);
    return exit_usage;
  }
  if (options.wants_help) {
    std::fputs(usage().c_str(), stdout);
    return exit_good;
  }
  if (options.wants_version) {
    std::puts("vek-analyse " VEK_ANALYSE_VERSION);
    return exit_good;
  }
  return run_session(options);
}

#include "analyse/options.h"
#include "analyse/session.h"

int main(int nr_arguments, char **arguments) {
  using namespace vek::analysis;
  Options options;
  const std::optional<int> status =
      read_options(nr_arguments, arguments, options);
  return status ? *status : run_session(options);
}

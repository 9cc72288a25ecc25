#include <cstdio>
#include <iostream>
#include <span>

#include "check/collection_check.h"
#include "check/findings.h"
#include "check/options.h"
#include "params/params.h"
#include "run/log.h"

namespace {

using namespace vek::checking;

constexpr int exit_usage = 2;

void print_summary(CollectionCheck &check, const Findings &findings) {
  vek::ClassTable &classes = check.collection().classes;
  const vek::ClassData &top = classes.get_data(0);
  std::cout << top.train_docs.size() << " training documents, "
            << top.test_docs.size() << " test documents, " << classes.size() - 1
            << " classes; warnings: " << findings.count(Severity::warning)
            << ", stops: " << findings.count(Severity::stop) << '\n';
}

int check_collection(const CheckOptions &options) {
  Findings findings;
  read_resource_file(options.rc_file, vek::params, findings);
  CollectionCheck check(options.examples, vek::params, findings);
  const bool was_read = check.run();
  findings.print(std::cout);
  if (was_read)
    print_summary(check, findings);
  std::cout.flush();
  if (!std::cout) {
    std::perror("vek-check");
    return 2;
  }
  return findings.exit_status();
}

}  // namespace

int main(int nr_arguments, char **arguments) {
  CheckOptions options;
  const auto all =
      std::span<char *const>(arguments, static_cast<std::size_t>(nr_arguments));
  const std::string problem =
      read_options(all.subspan(all.empty() ? 0 : 1), options);
  if (!problem.empty()) {
    std::cerr << "vek-check: " << problem << "\n\n" << help_text();
    return exit_usage;
  }
  if (options.wants_help) {
    std::cout << help_text();
    return 0;
  }
  if (options.wants_version) {
    std::cout << "vek-check " << vek::version << '\n';
    return 0;
  }
  return check_collection(options);
}

#include <CLI/CLI.hpp>
#include <cstdio>
#include <iostream>
#include <optional>
#include <string>

#include "base/command_line.h"
#include "check/collection_check.h"
#include "check/findings.h"
#include "params/params.h"

namespace {

using namespace vek::checking;

void print_summary(const Collection &collection, const Findings &findings) {
  const vek::ClassTable &classes = collection.classes;
  const vek::ClassData &top = classes.get_data(0);
  std::cout << top.train_docs.size() << " training documents, "
            << top.test_docs.size() << " test documents, " << classes.size() - 1
            << " classes; warnings: " << findings.count(Severity::warning)
            << ", stops: " << findings.count(Severity::stop) << '\n';
}

int check_collection(const std::string &examples, const std::string &rc_file) {
  Findings findings;
  vek::Params settings;
  read_resource_file(rc_file, settings, findings);
  CollectionCheck check(examples, settings, findings);
  const bool was_read = check.run();
  findings.print(std::cout);
  if (was_read)
    print_summary(check.collection(), findings);
  std::cout.flush();
  // A report that was not written must not look like a clean one.
  if (!std::cout) {
    std::perror("vek-check");
    return 2;
  }
  return findings.exit_status();
}

}  // namespace

int main(int nr_arguments, char **arguments) {
  vek::CommandLine line(
      "vek-check",
      "Looks at lists, documents and classes as vek would, and tells what\n"
      "would stop a run or spoil its results. Changes nothing.");
  std::string examples;
  std::string rc_file;
  line.app().add_option("examples-directory", examples,
                        "directory with the lists");
  line.app()
      .add_option("-r,--resource", rc_file, "resource file, as vek's -r")
      ->type_name("FILE");
  line.app().footer(
      "Exit status: 0 nothing found, 1 warnings, 2 the run would stop");
  if (const std::optional<int> status = line.parse(nr_arguments, arguments))
    return *status;
  if (examples.empty()) {
    vek::report("vek-check", "an examples directory is needed");
    return vek::exit_usage;
  }
  return check_collection(examples, rc_file);
}

#include "run/polling.h"

#include "evaluation/ranks.h"
#include "evaluation/testing.h"
#include "intake/analyser.h"
#include "learning/winnow.h"
#include "run/helpers.h"
#include "run/log.h"

namespace vek {
namespace {

constexpr char document_suffix[] = ".txt";

}  // namespace

void poll_directory(const char *input) {
  const Path path(input, "in", "");
  if (!is_directory(path)) {
    report_file_error(path, FileError::directory_missing);
    abort_run();
  }
  logf_always(1, "polling directory `%s'", path.c_str());
  std::vector<std::string> names;
  collect_input_documents(path, names);
  if (!names.empty())
    write_classifications(names);
}

bool is_input_document(const std::string &entry, std::string &name) {
  strip_suffix(name, entry, document_suffix);
  return !entry.starts_with('.') && ends_with(entry, document_suffix);
}

void collect_input_documents(const std::string &directory,
                             std::vector<std::string> &names) {
  Directory entries(directory);
  if (entries.failed()) {
    report_file_error(directory, FileError::open_directory);
    abort_run();
  }
  std::string entry;
  std::string name;
  while (entries.read(entry)) {
    if (!is_input_document(entry, name))
      continue;
    profile_document(name);
    names.push_back(name);
    logf_if_verbose(3, "collected input document `%s'", name.c_str());
  }
  // Nobody shall take a part of the documents for all of them.
  if (entries.read_failed()) {
    report_file_error(directory, FileError::read);
    abort_run();
  }
}

void write_classifications(const std::vector<std::string> &names) {
  RankFile file(RankFile::Announce::yes);
  for (const std::string &name : names) {
    Ranks ranks;
    classify_new_document(name, ranks);
    ranks.print(name, file.stream());
  }
  file.finish();
}

}  // namespace vek

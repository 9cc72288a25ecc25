#include "run/polling.h"

#include <cerrno>
#include <cstring>

#include "base/helpers.h"
#include "intake/lists.h"
#include "run/globals.h"
#include "run/profiling.h"
#include "run/rankfile.h"

namespace vek {
namespace {

// One odd name must not keep all others from being sorted. A document that is
// stored needs no request.
bool is_possible(const std::string &name) {
  const std::string fault =
      request_fault(name, Path(params.file_directory, name, document_suffix));
  if (fault.empty() || data_base.exists(name))
    return true;
  warning("polled document `%s' is left out: %s", printable(name).c_str(),
          fault.c_str());
  return false;
}

}  // namespace

void poll_directory(const std::string &input, Walk &walk) {
  const Path path(input, "in", "");
  if (!is_directory(path)) {
    report_file_error(path, FileError::directory_missing);
    abort_run();
  }
  logf_always(1, "polling directory `%s'", path.c_str());
  std::vector<std::string> names;
  collect_input_documents(path, names);
  if (names.empty())
    return;
  RankFile file(options.examples_directory(), RankFile::Announce::yes);
  for (const std::string &name : names) {
    Ranks ranks;
    classify_new_document(name, walk, ranks);
    file.stream() << ranks.line(name, class_table);
    if (!ranks.empty() && !file.stream()) {
      explain(file.path(), std::strerror(errno));
      abort_run();
    }
  }
  file.finish();
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
    if (!is_input_document(entry, name) || !is_possible(name))
      continue;
    profile_document(name);
    names.push_back(name);
    logf_if_verbose(3, "collected input document `%s'", name.c_str());
  }
  // A part of the documents must not pass for all of them.
  if (entries.read_failed()) {
    report_file_error(directory, FileError::read);
    abort_run();
  }
}

bool classify_new_document(const std::string &name, Walk &walk, Ranks &ranks) {
  const ClassData &top = class_table.get_data(0);
  DocProfile &doc = *document_profile(name);
  Ranks scores_of_sons;
  walk.score_sons(top, doc, scores_of_sons);
  const bool significant = walk.classify(top, doc, scores_of_sons, ranks);
  const char *verdict = significant ? "significant" : "not significant";
  if (ranks.empty()) {
    logf_if_verbose(4, "classified document `%s' in no class (%s)",
                    name.c_str(), verdict);
  } else {
    const std::uint32_t id = ranks.front().class_data_P->id;
    logf_if_verbose(4, "classified document `%s' in class `%s' (%s)",
                    name.c_str(), class_table.get_name(id).c_str(), verdict);
  }
  return significant;
}

}  // namespace vek

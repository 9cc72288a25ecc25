#include "run/polling.h"

#include <cerrno>
#include <cstddef>

#include "base/helpers.h"
#include "intake/lists.h"
#include "intake/textfile.h"
#include "run/globals.h"
#include "run/profiling.h"
#include "run/rankfile.h"

namespace vek {
namespace {

std::size_t nr_new_documents(const std::string &directory) {
  const KeepErrno keep;
  Directory entries(directory);
  std::size_t number = 0;
  std::string entry;
  std::string name;
  while (!entries.failed() && entries.read(entry)) {
    if (is_input_document(entry, name) && !data_base.exists(name))
      ++number;
  }
  return number;
}

// A text that cannot be read costs its own document and not those of the whole
// pass; one that is missing, or a system that fails, is no matter of one text.
bool has_unreadable_text(const std::string &name) {
  if (data_base.exists(name))
    return false;
  const KeepErrno keep;
  const std::string path = analyser.text_path(name);
  const TextFile file(path);
  if (file.problem().empty() || errno == ENOENT || is_system_failure())
    return false;
  warning("polled document `%s' is left out: %s: %s", name.c_str(),
          path.c_str(), file.problem().c_str());
  return true;
}

}  // namespace

void poll_directory(const std::string &input, Judge &judge) {
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
    classify_new_document(name, judge, ranks);
    file.stream() << ranks.line(name, class_table);
    if (!ranks.empty() && !file.stream())
      abort_run();
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
  if (AnalysisReport::shows_progress())
    analysis_report.begin_progress(nr_new_documents(directory));
  std::string entry;
  std::string name;
  while (entries.read(entry)) {
    if (!is_input_document(entry, name))
      continue;
    if (has_unreadable_text(name))
      continue;
    profile_document(name);
    names.push_back(name);
    logf_if_verbose(3, "collected input document `%s'", name.c_str());
  }
  analysis_report.end_progress();
  // A part of the documents must not pass for all of them.
  if (entries.read_failed()) {
    report_file_error(directory, FileError::read);
    abort_run();
  }
}

bool classify_new_document(const std::string &name, Judge &judge,
                           Ranks &ranks) {
  Answer answer;
  judge.judge(*document_profile(name), answer);
  ranks = std::move(answer.ranks);
  const bool significant = answer.significant;
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

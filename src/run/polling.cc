#include "run/polling.h"

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <optional>

#include "base/helpers.h"
#include "evaluation/predictions.h"
#include "intake/lists.h"
#include "intake/textfile.h"
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
  std::optional<RankFile> predictions;
  if (params.predictions) {
    predictions.emplace(options.examples_directory(), RankFile::Announce::yes,
                        RankFile::Kind::predictions);
    predictions->stream() << predictions_header;
  }
  for (const std::string &name : names) {
    Answer answer;
    classify_new_document(name, judge, answer);
    file.stream() << answer.ranks.line(name, class_table);
    if (!answer.ranks.empty() && !file.stream()) {
      explain(file.path(), std::strerror(errno));
      abort_run();
    }
    if (predictions) {
      predictions->stream()
          << prediction_line(name, {}, answer, judge, class_table);
    }
  }
  file.finish();
  if (predictions)
    predictions->finish();
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
    if (!is_input_document(entry, name) || !is_possible(name))
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
                           Answer &answer) {
  judge.judge(*document_profile(name), answer);
  const Ranks &ranks = answer.ranks;
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

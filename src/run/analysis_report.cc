#include "run/analysis_report.h"

#include <unistd.h>

#include "base/helpers.h"
#include "log/log.h"

namespace vek {

bool AnalysisReport::shows_progress() {
  const KeepErrno keep;
  return LogMessages().wants(1) && isatty(STDERR_FILENO) == 1;
}

void AnalysisReport::begin_progress(std::size_t nr_new) {
  const KeepErrno keep;
  line_.emplace("vek", ProgressLine::Shown::on_terminal, nr_new);
}

void AnalysisReport::end_progress() {
  const KeepErrno keep;
  erase_progress_line();
  line_.reset();
}

void AnalysisReport::count(const std::string &name, bool is_odd) {
  const KeepErrno keep;
  if (is_odd) {
    ++nr_empty_;
    logf_if_verbose(1, "document `%s': no terms in the analyser's answer",
                    name.c_str());
  }
  if (line_)
    line_->count();
}

void AnalysisReport::tell_empty(const std::string &data_directory) const {
  if (nr_empty_ == 0)
    return;
  logf_if_verbose(1,
                  "%zu document%s without terms: `vek-data forget %s NAME' and "
                  "run again",
                  nr_empty_, nr_empty_ == 1 ? "" : "s", data_directory.c_str());
}

}  // namespace vek

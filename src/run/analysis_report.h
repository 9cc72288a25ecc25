// What is told of the analysis of new documents, with -v: how far it is, in a
// line that moves on the terminal and goes into no file; and the documents that
// have a text and got no term, for which there may be a fault in the analyser.
// They are stored all the same, and so never analysed again by themselves.
#ifndef VEK_RUN_ANALYSIS_REPORT_H_
#define VEK_RUN_ANALYSIS_REPORT_H_

#include <cstddef>
#include <optional>
#include <string>

#include "base/progress_line.h"

namespace vek {

class AnalysisReport {
 public:
  // Only then is it worth knowing how many documents there are.
  static bool shows_progress();

  // `nr_new` documents will be analysed. To be called if shows_progress().
  void begin_progress(std::size_t nr_new);
  void end_progress();

  // A document is analysed. `is_odd`: no terms, though there is a text.
  void count(const std::string &name, bool is_odd);

  // How many of them had no terms, and the remedy; nothing if none had.
  void tell_empty(const std::string &data_directory) const;

 private:
  std::optional<ProgressLine> line_;
  std::size_t nr_empty_ = 0;
};

}  // namespace vek

#endif  // VEK_RUN_ANALYSIS_REPORT_H_

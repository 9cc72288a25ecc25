// The external program that does the linguistic analysis.
//
// The program is started once per run, before the data directory is opened,
// and works in strict turn with this process: a path and a line feed go out
// over a pipe, an analysis text ended by the byte 0x01 comes back. It is never
// restarted and, unless it fails, never waited for; it learns of the end of the
// run from the end of its input. Without a command no process runs, and the
// document files hold the analysis text themselves.
#ifndef VEK_INTAKE_ANALYSER_H_
#define VEK_INTAKE_ANALYSER_H_

#include <chrono>
#include <cstdint>
#include <string>

#include "intake/analyserprocess.h"

namespace vek {

class Analyser {
 public:
  // Remembers where the document files lie, creating that directory if need
  // be, and starts the process if `command` is not empty. Ends the run on
  // failure; but a program that cannot be executed is told of at once and ends
  // the run only when it is asked. A process that takes longer than
  // `time_limit` for an answer is killed; 0 is no limit.
  void open(const std::string &command, const std::string &file_directory,
            std::chrono::seconds time_limit = {});

  // The analysis text of a document. Ends the run if its file cannot be read,
  // or if the process has stopped answering. A NUL byte ends the text.
  std::string process(const std::string &name);

  // The size in bytes of the file of the document that was asked for last.
  std::int64_t text_size() const { return text_size_; }

  // Where the file of a document lies.
  std::string text_path(const std::string &name) const;

  // Closes both pipes. The child is not waited for.
  void close();

 private:
  void start_analyser_process();
  [[noreturn]] void refuse_text(const std::string &name,
                                const std::string &path,
                                const std::string &problem) const;
  [[noreturn]] void give_up(const std::string &name, const std::string &reason,
                            int status) const;
  [[noreturn]] void end_early(const std::string &name,
                              const std::string &reason, int status) const;

  std::string command_;
  std::string file_directory_;
  std::chrono::seconds time_limit_{};
  AnalyserProcess process_;
  int start_error_ = 0;  // errno of a program that cannot be executed
  std::int64_t text_size_ = 0;
};

}  // namespace vek

#endif  // VEK_INTAKE_ANALYSER_H_

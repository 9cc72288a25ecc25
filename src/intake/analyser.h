// The external program that does the linguistic analysis.
//
// The program is started once per run, before the data directory is opened,
// and works in strict turn with this process: a path and a line feed go out
// over a pipe, an analysis text ended by the byte 0x01 comes back. It is never
// restarted and never waited for; it learns of the end of the run from the end
// of its input. Without a command no process runs, and the document files hold
// the analysis text themselves.
#ifndef VEK_INTAKE_ANALYSER_H_
#define VEK_INTAKE_ANALYSER_H_

#include <sys/types.h>

#include <string>

namespace vek {

class Analyser {
 public:
  Analyser() = default;
  ~Analyser();
  Analyser(const Analyser &) = delete;
  Analyser &operator=(const Analyser &) = delete;

  // Remembers where the document files lie, creating that directory if need
  // be, and starts the process if `command` is not empty. Ends the run on
  // failure; but a program that cannot be executed shows only when it is
  // asked.
  void open(const std::string &command, const std::string &file_directory);

  // The analysis text of a document. Ends the run if there is no file for it
  // or if the process has stopped answering. A NUL byte ends the text.
  std::string process(const std::string &name);

  // Closes both pipes. The child is not waited for.
  void close();

 private:
  void start_analyser_process();
  void send_request(const std::string &name, const std::string &path);
  std::string receive_answer(const std::string &name);
  void drop_stray_bytes(const std::string &name);
  std::string read_analysis(const std::string &name, const std::string &path);
  [[noreturn]] void give_up(const std::string &name, const char *reason);

  std::string command_;
  std::string file_directory_;
  int to_analyser_ = -1;
  int from_analyser_ = -1;
  pid_t pid_ = 0;
};

}  // namespace vek

#endif  // VEK_INTAKE_ANALYSER_H_

// The process of the external program that does the linguistic analysis, and
// the conversation with it.
//
// A path and a line feed go out over a pipe, an analysis text ended by the byte
// 0x01 comes back; requests and answers are in strict turn. Nothing here logs
// or ends the process that asks: a failure is returned, and words and
// consequences are the caller's.
#ifndef VEK_INTAKE_ANALYSERPROCESS_H_
#define VEK_INTAKE_ANALYSERPROCESS_H_

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

#include "intake/textfile.h"

namespace vek {

// No analysis of a document is this long; an analyser that never ends its
// answer must not eat the machine.
inline constexpr std::size_t largest_analysis = std::size_t{1} << 30;

// A NUL byte ends an analysis. Returns whether there was one.
bool cut_at_nul(std::string &analysis);

// Reads a file that holds an analysis itself, its size at the most; what is
// less was cut meanwhile. False, with errno set, if that fails or the file is
// too large.
bool read_analysis(const TextFile &file, std::string &analysis);

class AnalyserProcess {
 public:
  struct Fault {
    enum class Kind {
      command,    // it has too many words
      pipe,       // no pipe could be made
      fork,       // no process could be made
      execution,  // there is no such program, or it cannot be executed
      ended,      // it ended before its answer was complete
      late,       // there was no answer in time
      conduct,    // it writes without being asked or without an end
      system,     // a call failed
    };
    Kind kind = Kind::system;
    int code = 0;        // as errno has them
    std::string reason;  // in words, without the name of the program
  };

  // Called in the new process if it cannot become the program, with errno
  // saying why; must not return. If null, that process just ends.
  using ChildFailed = void (*)();

  AnalyserProcess() = default;
  ~AnalyserProcess() { close(); }
  AnalyserProcess(const AnalyserProcess &) = delete;
  AnalyserProcess &operator=(const AnalyserProcess &) = delete;

  // Starts the program of a command, whose words are separated by single
  // blanks, in the working directory or in `directory` if that is not empty.
  // There must be no process yet, or it must be closed. The program is not
  // looked for on the PATH.
  bool start(const std::string &command, Fault &fault,
             const std::string &directory = {},
             ChildFailed child_failed = nullptr);
  bool is_running() const { return to_analyser_ >= 0; }

  // Sets `answer` to what it says about a path that has no line end, without
  // the end marker. A process that takes longer than `time_limit` is killed; 0
  // is no limit. After a failure the process is of no more use.
  bool ask(const std::string &path, std::chrono::seconds time_limit,
           std::string &answer, Fault &fault);

  // After Kind::ended: how, in words; waits a moment for the end. Empty if
  // nobody knows.
  std::string how_it_ended() const;

  // Closes both pipes, from which the process learns that it is to end. It is
  // not waited for.
  void close();
  // The same, but it has gone on return: what does not end by itself within a
  // second is killed.
  void end();

 private:
  using Clock = std::chrono::steady_clock;

  bool wait_in_time(int fd, short event, Fault &fault) const;
  bool is_in_time(int &milliseconds, Fault &fault) const;
  bool drop_stray_bytes(Fault &fault);
  bool send_request(const std::string &path, Fault &fault);
  bool receive_answer(std::string &answer, Fault &fault);
  void wait_for_end() const;

  std::chrono::seconds time_limit_{};
  Clock::time_point deadline_;  // of the answer in hand, if there is a limit
  int to_analyser_ = -1;
  int from_analyser_ = -1;
  pid_t pid_ = 0;
  // Kept from call to call: clearing it for each document would cost more than
  // reading a short answer.
  std::vector<char> buffer_;
};

}  // namespace vek

#endif  // VEK_INTAKE_ANALYSERPROCESS_H_

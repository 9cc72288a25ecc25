// Every message of the system, and the one way to stop a run.
//
// There are two destinations: the log file, rewritten by each run, and
// standard error, called the screen. A progress message has a level that is
// compared with the verbosity of the command line; warnings and errors reach
// both places always. None of these operations changes errno, because the exit
// status of abort_run() is taken from it.
#ifndef VEK_LOG_LOG_H_
#define VEK_LOG_LOG_H_

#include <cstdint>
#include <string>
#include <string_view>

#include "base/input_file.h"
#include "base/messages.h"
#include "base/output_file.h"

namespace vek {

// The version of the system, as the log's opening lines show it.
inline constexpr double version = 1.4;

class Log {
 public:
  Log() = default;
  ~Log();
  Log(const Log &) = delete;
  Log &operator=(const Log &) = delete;

  // How a text is marked in the file: as it is, or behind "WARNING: " or
  // "ERROR: ".
  enum class Kind { plain, warning, error };

  // Opens `file_name`, truncating it, and writes the date, the version and a
  // blank line. If that fails, says so on the screen, with -v behind the
  // reason, and exits with 1. While another run has the file, it is left alone:
  // messages are kept in memory, and come into it with the first one after that
  // run's end. If there is none, the screen is told.
  void open(const std::string &file_name);

  // Writes one message and its line end. Without effect if the log is not open
  // or has failed: a failing log does not stop a run. When it fails, a warning
  // on the screen says so.
  void write(Kind kind, std::string_view text);

 private:
  bool is_in_use();
  bool create();
  void flush();

  std::string name_;
  int lock_fd_ = -1;
  bool is_waiting_ = false;
  std::string waiting_text_;
  OutputFile file_;
};

// The one log of the program; run/globals.cc has it.
extern Log log_file;

// What the command line asks for: 0, and no progress message is shown.
void set_verbosity(unsigned verbosity);

// The file always, the screen if 1 <= level <= verbosity.
void log_always(unsigned level, std::string_view text);
// File and screen, both only if 1 <= level <= verbosity.
void log_if_verbose(unsigned level, std::string_view text);

// The same with the format and values of printf. A text of over 1023 bytes is
// cut.
[[gnu::format(printf, 2, 3)]] void logf_always(unsigned level,
                                               const char *format, ...);
[[gnu::format(printf, 2, 3)]] void logf_if_verbose(unsigned level,
                                                   const char *format, ...);
[[gnu::format(printf, 1, 2)]] void warning(const char *format, ...);
[[gnu::format(printf, 1, 2)]] void error(const char *format, ...);

// Ends the run by end_run(), with errno as the status, or 1 if errno is 0.
[[noreturn]] void abort_run();
// The same with `cause` for errno: where no call of the system has failed, what
// an earlier one left in errno is not the reason.
[[noreturn]] void abort_run(int cause);
inline constexpr int no_cause = 0;

// The only way by which a run that has opened a data directory ends. Does what
// at_end() was given, and then ends the process by exit(), so that the global
// objects are destroyed in order. If that work fails and comes here again, its
// status counts and exit() comes at once: exit() may not be called from what it
// calls itself.
[[noreturn]] void end_run(int status);
void at_end(void (*work)());

// What can be wrong with a file; each has its words in log.cc.
enum class FileError {
  open_for_reading = 0,
  open_for_writing = 1,
  read = 2,
  write = 3,
  make_directory = 4,
  directory_missing = 5,
  open_directory = 6,
  remove = 7,
  format = 8,
};

// Reports only; callers go on to abort_run(). A null name gives the words
// without a name. A code outside the enumeration reports nothing. With -v the
// reason stands in front, in a line of its own: without one, it is that of
// errno, but for a format error.
void report_file_error(const char *file_name, FileError code);
void report_file_error(const std::string &file_name, FileError code,
                       const std::string &reason = {});

// Why `file_name` is about to be reported, in words: with -v, on screen and in
// the file. For messages that say the same to scripts at any setting.
void explain(const std::string &file_name, const std::string &reason);

// read_file() of what a run cannot do without: ends the run with a report if
// that fails.
void must_read(const std::string &path, std::string &content,
               std::uint64_t largest = largest_input);

// As file_exists(), where a run must not take a file for missing that it only
// cannot look at: if stat() fails for any other reason, the run ends with a
// report.
bool file_is_there(const std::string &path);

// Creates the directory `path` (mode 0770, one level only) if there is none.
// Ends the run if that fails.
void ensure_directory(const std::string &path);

// The messages of what knows no log, on their way to the log and the screen.
// Long phases tell of their steps by notes, so a note is a safe point at which
// a run can be stopped (log/stop.h).
class LogMessages : public Messages {
 public:
  bool wants(unsigned level) const override;
  void note(unsigned level, std::string_view text) override;
  void detail(unsigned level, std::string_view text) override;
  void may_stop() override;
  void warning(std::string_view text) override;
  void error(std::string_view text) override;
};

}  // namespace vek

#endif  // VEK_LOG_LOG_H_

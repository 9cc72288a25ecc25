#include "log/log.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <sstream>
#include <utility>

#include "base/helpers.h"
#include "base/progress_line.h"
#include "log/stop.h"

namespace vek {
namespace {

bool is_control(char character) {
  const auto byte = static_cast<unsigned char>(character);
  return (byte < 0x20 && byte != '\n' && byte != '\t') || byte == 0x7F;
}

// Names come from lists and directories, and may hold what a terminal would
// take for a command.
std::string harmless(std::string_view text) {
  std::string out;
  for (const char character : text) {
    if (is_control(character)) {
      std::array<char, 5> code = {};
      std::snprintf(
          code.data(), code.size(), "\\x%02X",
          static_cast<unsigned>(static_cast<unsigned char>(character)));
      out += code.data();
    } else {
      out += character;
    }
  }
  return out;
}

void show(std::string_view prefix, std::string_view text) {
  const KeepErrno keep;
  static const bool to_terminal = isatty(STDERR_FILENO) == 1;
  std::string line(prefix);
  line += to_terminal ? harmless(text) : std::string(text);
  line += '\n';
  erase_progress_line();
  std::fwrite(line.data(), 1, line.size(), stderr);
}

unsigned verbosity = 0;
void (*work_at_end_P)() = nullptr;

bool within_verbosity(unsigned level) {
  return level >= 1 && level <= verbosity;
}

struct FileErrorText {
  const char *with_name;
  const char *without_name;
};

constexpr std::array<FileErrorText, 9> file_error_texts = {{
    {"cannot open file `%s' for reading", "open failure"},
    {"cannot open file `%s' for writing", "open failure"},
    {"error reading file `%s'", "read error"},
    {"error writing file `%s'", "write error"},
    {"could not create directory `%s'", "could not create directory"},
    {"cannot find directory `%s'", "directory not found"},
    {"cannot open directory `%s'", "cannot open directory"},
    {"error deleting file `%s'", "delete error"},
    {"format error in file `%s'", "format error"},
}};

}  // namespace

void set_verbosity(unsigned new_verbosity) {
  verbosity = new_verbosity;
}

Log::~Log() {
  if (is_waiting_)
    show("WARNING: ", "log file `" + name_ + "' is in use by another run");
  // The lock is left to the end of the process: a run that comes now may yet be
  // sent away from the data directory, and must not have cut this log by then.
}

void Log::open(const std::string &file_name) {
  name_ = file_name;
  is_waiting_ = is_in_use();
  if (!is_waiting_ && !create()) {
    explain(name_, std::strerror(errno));
    show("", "ERROR: cannot open log file " + name_ + "\naborting...");
    std::exit(1);
  }
  // ctime() may look for a time zone file that is not there.
  const KeepErrno keep;
  const std::time_t now = std::time(nullptr);
  std::ostringstream head;
  head << std::ctime(&now) << "this is VEK version: " << version << "\n\n";
  if (is_waiting_) {
    waiting_text_ = head.str();
    return;
  }
  file_ << head.view();
  flush();
}

// Where a lock cannot be had for any other reason, it is done without.
bool Log::is_in_use() {
  const KeepErrno keep;
  if (lock_fd_ < 0) {
    lock_fd_ = retry([&] {
      return ::open(name_.c_str(), O_WRONLY | O_CREAT | O_NONBLOCK | O_CLOEXEC,
                    0664);
    });
  }
  struct stat status = {};
  // A device is no run's own.
  return lock_fd_ >= 0 && fstat(lock_fd_, &status) == 0 &&
         S_ISREG(status.st_mode) &&
         retry([&] { return flock(lock_fd_, LOCK_EX | LOCK_NB); }) != 0 &&
         errno == EWOULDBLOCK;
}

bool Log::create() {
  file_.open(name_, OutputFile::Mode::truncate);
  return file_.is_open();
}

void Log::flush() {
  file_.flush();
  if (!file_.good())
    show("WARNING: ", "error writing file `" + name_ + "'");
}

void Log::write(Kind kind, std::string_view text) {
  const KeepErrno keep;
  const char *prefix = kind == Kind::warning ? "WARNING: "
                       : kind == Kind::error ? "ERROR: "
                                             : "";
  if (is_waiting_) {
    waiting_text_ += prefix;
    waiting_text_ += text;
    waiting_text_ += '\n';
    if (is_in_use())
      return;
    is_waiting_ = false;
    // Perhaps at the very end of the process, so a failure cannot end it.
    if (create())
      file_ << std::exchange(waiting_text_, {});
    flush();
    return;
  }
  if (!file_.is_open() || !file_.good())
    return;
  // Flushed line by line: nothing may be left for a forked child to repeat.
  file_ << prefix << text << '\n';
  flush();
}

void log_always(unsigned level, std::string_view text) {
  if (within_verbosity(level))
    show("", text);
  log_file.write(Log::Kind::plain, text);
}

void log_if_verbose(unsigned level, std::string_view text) {
  if (within_verbosity(level))
    log_always(level, text);
}

void logf_always(unsigned level, const char *format, ...) {
  std::va_list values;
  va_start(values, format);
  const std::string text = formatted_list(format, values);
  va_end(values);
  log_always(level, text);
}

void logf_if_verbose(unsigned level, const char *format, ...) {
  if (!within_verbosity(level))
    return;
  std::va_list values;
  va_start(values, format);
  const std::string text = formatted_list(format, values);
  va_end(values);
  log_always(level, text);
}

void warning(const char *format, ...) {
  std::va_list values;
  va_start(values, format);
  const std::string text = formatted_list(format, values);
  va_end(values);
  show("WARNING: ", text);
  log_file.write(Log::Kind::warning, text);
}

void error(const char *format, ...) {
  std::va_list values;
  va_start(values, format);
  const std::string text = formatted_list(format, values);
  va_end(values);
  show("ERROR: ", text);
  log_file.write(Log::Kind::error, text);
}

void abort_run() {
  abort_run(errno);
}

void abort_run(int cause) {
  std::string text = "aborting...";
  if (cause != 0)
    text += " (errno = " + std::to_string(cause) + ")";
  log_file.write(cause != 0 ? Log::Kind::error : Log::Kind::plain, text);
  show("", text);
  end_run(cause != 0 ? cause : 1);
}

void end_run(int status) {
  // Taken away first: the work may end up here.
  if (const auto work = std::exchange(work_at_end_P, nullptr))
    work();
  std::exit(status);
}

void at_end(void (*work)()) {
  work_at_end_P = work;
}

void report_file_error(const char *file_name, FileError code) {
  const auto number = static_cast<std::size_t>(code);
  if (number >= file_error_texts.size())
    return;
  const FileErrorText &text = file_error_texts[number];
  if (file_name == nullptr) {
    error("%s", text.without_name);
    return;
  }
  // The table's formats hold exactly one %s; built by hand, so that the
  // compiler can go on checking every other format.
  const std::string format(text.with_name);
  const std::size_t place = format.find("%s");
  error("%s%s%s", format.substr(0, place).c_str(), file_name,
        format.substr(place + 2).c_str());
}

void report_file_error(const std::string &file_name, FileError code,
                       const std::string &reason) {
  if (!reason.empty())
    explain(file_name, reason);
  else if (code != FileError::format && errno != 0)
    explain(file_name, std::strerror(errno));
  report_file_error(file_name.c_str(), code);
}

void explain(const std::string &file_name, const std::string &reason) {
  log_if_verbose(1, "file " + file_name + ": " + reason);
}

void must_read(const std::string &path, std::string &content,
               std::uint64_t largest) {
  std::string reason;
  const ReadResult result = read_file(path, content, reason, largest);
  if (result == ReadResult::ok)
    return;
  report_file_error(path,
                    result == ReadResult::cannot_open
                        ? FileError::open_for_reading
                        : FileError::read,
                    reason);
  abort_run();
}

bool file_is_there(const std::string &path) {
  if (file_exists(path))
    return true;
  if (errno == ENOENT || errno == ENOTDIR)
    return false;
  report_file_error(path, FileError::open_for_reading);
  abort_run();
}

void ensure_directory(const std::string &path) {
  if (is_directory(path))
    return;
  if (mkdir(path.c_str(), 0770) != 0) {
    report_file_error(path, FileError::make_directory);
    abort_run();
  }
}

bool LogMessages::wants(unsigned level) const {
  return within_verbosity(level);
}

void LogMessages::note(unsigned level, std::string_view text) {
  log_always(level, text);
  stop_if_requested();
}

void LogMessages::detail(unsigned level, std::string_view text) {
  log_if_verbose(level, text);
}

void LogMessages::may_stop() {
  stop_if_requested();
}

void LogMessages::warning(std::string_view text) {
  vek::warning("%s", std::string(text).c_str());
}

void LogMessages::error(std::string_view text) {
  vek::error("%s", std::string(text).c_str());
}

}  // namespace vek

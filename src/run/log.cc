#include "run/log.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "run/helpers.h"
#include "run/options.h"

namespace vek {
namespace {

constexpr std::size_t message_size = 1024;

// A message on its way, cut to the buffer.
class Message {
 public:
  Message(const char *format, std::va_list values) {
    const KeepErrno keep;
    std::vsnprintf(text_.data(), text_.size(), format, values);
  }
  const char *text() const { return text_.data(); }

 private:
  std::array<char, message_size> text_ = {};
};

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
  std::fwrite(line.data(), 1, line.size(), stderr);
}

bool within_verbosity(unsigned level) {
  return level >= 1 && level <= options.verbose();
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

void Log::open(const std::string &file_name) {
  file_.open(file_name, OutputFile::Mode::truncate);
  if (!file_.is_open()) {
    std::fprintf(stderr, "ERROR: cannot open log file %s\naborting...\n",
                 file_name.c_str());
    std::exit(1);
  }
  // ctime() may look for a time zone file that is not there.
  const KeepErrno keep;
  const std::time_t now = std::time(nullptr);
  file_ << std::ctime(&now) << "this is VEK version: " << version << "\n\n";
  name_ = file_name;
  flush();
}

void Log::flush() {
  file_.flush();
  if (!file_.good())
    show("WARNING: ", "error writing file `" + name_ + "'");
}

void Log::write(Kind kind, std::string_view text) {
  if (!file_.is_open() || !file_.good())
    return;
  const KeepErrno keep;
  if (kind == Kind::warning)
    file_ << "WARNING: ";
  if (kind == Kind::error)
    file_ << "ERROR: ";
  // Flushed line by line: nothing may be left for a forked child to repeat.
  file_ << text << '\n';
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
  const Message message(format, values);
  va_end(values);
  log_always(level, message.text());
}

void logf_if_verbose(unsigned level, const char *format, ...) {
  if (!within_verbosity(level))
    return;
  std::va_list values;
  va_start(values, format);
  const Message message(format, values);
  va_end(values);
  log_always(level, message.text());
}

void warning(const char *format, ...) {
  std::va_list values;
  va_start(values, format);
  const Message message(format, values);
  va_end(values);
  show("WARNING: ", message.text());
  log_file.write(Log::Kind::warning, message.text());
}

void error(const char *format, ...) {
  std::va_list values;
  va_start(values, format);
  const Message message(format, values);
  va_end(values);
  show("ERROR: ", message.text());
  log_file.write(Log::Kind::error, message.text());
}

void abort_run() {
  const int code = errno;
  std::string text = "aborting...";
  if (code != 0)
    text += " (errno = " + std::to_string(code) + ")";
  log_file.write(code != 0 ? Log::Kind::error : Log::Kind::plain, text);
  show("", text);
  std::exit(code != 0 ? code : 1);
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

void report_file_error(const std::string &file_name, FileError code) {
  report_file_error(file_name.c_str(), code);
}

}  // namespace vek

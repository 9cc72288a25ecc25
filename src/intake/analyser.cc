#include "intake/analyser.h"

#include <cerrno>
#include <csignal>
#include <cstring>

#include "base/helpers.h"
#include "intake/lists.h"
#include "intake/textfile.h"
#include "log/log.h"
#include "log/stop.h"

namespace vek {
namespace {

// In the process that could not become the analyser.
void report_execution() {
  error("analyser process execution failed: %s", std::strerror(errno));
  abort_run();
}

[[noreturn]] void fail_to_start(const AnalyserProcess::Fault &fault) {
  using Kind = AnalyserProcess::Fault::Kind;
  errno = fault.code;
  if (fault.kind == Kind::command) {
    error("analyser command %s", fault.reason.c_str());
  } else {
    error("%s: %s",
          fault.kind == Kind::pipe ? "start_analyser_process"
                                   : "cannot fork analyser",
          fault.reason.c_str());
  }
  abort_run();
}

[[noreturn]] void fail_to_read(const std::string &name) {
  error("%s: %s", name.c_str(), std::strerror(errno));
  abort_run();
}

// The document file holds the analysis text.
std::string analysis_in(const std::string &name, const TextFile &file) {
  std::string text;
  // Else a part of the text would stand for all of it in every later run.
  if (!read_analysis(file, text))
    fail_to_read(name);
  if (std::ssize(text) < file.size()) {
    warning("Analyser::process: read %ld bytes, file size is %ld bytes from %s",
            static_cast<long>(text.size()), static_cast<long>(file.size()),
            name.c_str());
  }
  if (cut_at_nul(text)) {
    logf_if_verbose(1, "analysis of document `%s' is cut at a NUL byte",
                    name.c_str());
  }
  return text;
}

}  // namespace

void Analyser::open(const std::string &command,
                    const std::string &file_directory,
                    std::chrono::seconds time_limit) {
  time_limit_ = time_limit;
  file_directory_ = file_directory;
  ensure_directory(file_directory_);
  command_ = command;
  if (!command_.empty())
    start_analyser_process();
}

void Analyser::start_analyser_process() {
  AnalyserProcess::Fault fault;
  const bool is_started = process_.start(command_, fault, "", report_execution);
  if (!is_started && fault.kind != AnalyserProcess::Fault::Kind::execution)
    fail_to_start(fault);
  // A reader of messages that has gone shall not end this process either.
  std::signal(SIGPIPE, SIG_IGN);
  start_error_ = is_started ? 0 : fault.code;
  if (start_error_ != 0) {
    error(
        "give its full path with `analyser' in vek.rc; it is not looked for on "
        "the PATH");
  }
}

void Analyser::close() {
  process_.close();
}

std::string Analyser::text_path(const std::string &name) const {
  return Path(file_directory_, name, document_suffix);
}

// With errno as the status.
void Analyser::refuse_text(const std::string &name, const std::string &path,
                           const std::string &problem) const {
  if (command_.empty() && file_exists(path)) {
    error("%s: %s", name.c_str(), problem.c_str());
  } else {
    log_always(1, path + ": " + problem);
    error("Cannot open file \"%s\" for analysing stage", path.c_str());
  }
  abort_run();
}

void Analyser::give_up(const std::string &name, const std::string &reason,
                       int status) const {
  // A signal from the terminal has ended it as well.
  stop_if_requested();
  error("analyser process `%s' failed on document `%s': %s", command_.c_str(),
        name.c_str(), reason.c_str());
  errno = status;
  abort_run();
}

// The same words and status whether this shows with the request or with the
// answer: that depends on who is faster.
void Analyser::end_early(const std::string &name, const std::string &reason,
                         int status) const {
  stop_if_requested();
  error("analyser process `%s' failed on document `%s': %s", command_.c_str(),
        name.c_str(), reason.c_str());
  const std::string end = process_.how_it_ended();
  if (!end.empty())
    error("%s", end.c_str());
  errno = status;
  abort_run();
}

std::string Analyser::process(const std::string &name) {
  const std::string path = text_path(name);
  const TextFile file(path);
  if (!file.problem().empty())
    refuse_text(name, path, file.problem());
  // A line end in the path would make two requests of it.
  if (name.find('\n') != std::string::npos) {
    errno = EINVAL;
    refuse_text(name, path, "a line end in its name");
  }
  text_size_ = file.size();
  if (command_.empty())
    return analysis_in(name, file);
  if (start_error_ != 0)
    give_up(name, "it could not be started", start_error_);
  std::string answer;
  AnalyserProcess::Fault fault;
  if (!process_.ask(path, time_limit_, answer, fault)) {
    if (fault.kind == AnalyserProcess::Fault::Kind::ended)
      end_early(name, fault.reason, fault.code);
    give_up(name, fault.reason, fault.code);
  }
  if (cut_at_nul(answer))
    warning("analysis of document `%s' is cut at a NUL byte", name.c_str());
  // It may be what an analyser that was interrupted had ready.
  if (is_stopped_by_terminal())
    stop_if_requested();
  return answer;
}

}  // namespace vek

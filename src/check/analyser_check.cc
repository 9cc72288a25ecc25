#include "check/analyser_check.h"

#include "intake/analyserprocess.h"

namespace vek::checking {
namespace {

using Kind = AnalyserProcess::Fault::Kind;

std::string words(const AnalyserProcess &process,
                  const AnalyserProcess::Fault &fault,
                  const std::string &path) {
  if (fault.kind == Kind::late)
    return "there is no answer in time to `" + path + "'";
  if (fault.kind != Kind::ended)
    return fault.reason + ", asked for `" + path + "'";
  const std::string end = process.how_it_ended();
  return "it ended before its answer to `" + path + "' was complete" +
         (end.empty() ? "" : ": ") + end;
}

}  // namespace

std::string analyser_fault(const std::string &command, const std::string &path,
                           std::chrono::seconds patience) {
  AnalyserProcess process;
  AnalyserProcess::Fault fault;
  std::string text;
  if (!process.start(command, fault)) {
    text = fault.kind == Kind::command
               ? "it " + fault.reason
               : "it cannot be started: " + fault.reason +
                     "; give its full path, it is not looked for on the PATH";
  } else if (!path.empty()) {
    std::string answer;
    if (!process.ask(path, patience, answer, fault))
      text = words(process, fault, path);
  }
  process.end();
  return text;
}

}  // namespace vek::checking

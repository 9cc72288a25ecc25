#include "check/findings.h"

#include <algorithm>
#include <tuple>

#include "base/helpers.h"

namespace vek::checking {

std::size_t Findings::number_of(const std::string &file) {
  // There are a few files only: no index is worth it.
  const auto place = std::find(files_.begin(), files_.end(), file);
  const auto number = static_cast<std::size_t>(place - files_.begin());
  if (place == files_.end())
    files_.push_back(file);
  return number;
}

void Findings::add(const std::string &file, std::size_t line, Severity severity,
                   const std::string &text) {
  findings_.push_back({number_of(file), line, severity, text});
}

void Findings::print(std::ostream &os) const {
  std::vector<Finding> sorted = findings_;
  // Stable, so that the findings of one line keep the order of adding.
  std::stable_sort(sorted.begin(), sorted.end(),
                   [](const Finding &a, const Finding &b) {
                     return std::tie(a.file, a.line) < std::tie(b.file, b.line);
                   });
  for (const Finding &finding : sorted) {
    os << printable(files_[finding.file]) << ':';
    if (finding.line != 0)
      os << finding.line << ':';
    os << (finding.severity == Severity::stop ? " stop: " : " warning: ")
       << printable(finding.text) << '\n';
  }
}

std::size_t Findings::count(Severity severity) const {
  return static_cast<std::size_t>(std::count_if(
      findings_.begin(), findings_.end(), [severity](const Finding &finding) {
        return finding.severity == severity;
      }));
}

int Findings::exit_status() const {
  if (findings_.empty())
    return 0;
  return count(Severity::stop) == 0 ? 1 : 2;
}

std::string quoted(std::string_view name) {
  return '`' + std::string(name) + '\'';
}

}  // namespace vek::checking

#include "check/findings.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <tuple>

namespace vek::checking {
namespace {

// Names come from lists and may hold what a terminal takes for a command.
std::string harmless(std::string_view text) {
  std::string out;
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte >= 0x20 && byte != 0x7F) {
      out += character;
      continue;
    }
    std::array<char, 5> code = {};
    std::snprintf(code.data(), code.size(), "\\x%02X", unsigned{byte});
    out += code.data();
  }
  return out;
}

}  // namespace

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
    os << harmless(files_[finding.file]) << ':';
    if (finding.line != 0)
      os << finding.line << ':';
    os << (finding.severity == Severity::stop ? " stop: " : " warning: ")
       << harmless(finding.text) << '\n';
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

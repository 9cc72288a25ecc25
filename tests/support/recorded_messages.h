// Messages that a test case reads afterwards.
#ifndef VEK_TESTS_SUPPORT_RECORDED_MESSAGES_H_
#define VEK_TESTS_SUPPORT_RECORDED_MESSAGES_H_

#include <sstream>
#include <string>
#include <string_view>

#include "base/messages.h"

namespace vek {

struct RecordedMessages : Messages {
  bool wants(unsigned level) const override { return level <= verbosity; }
  void note(unsigned /*level*/, std::string_view line) override { add(line); }
  void detail(unsigned level, std::string_view line) override {
    if (wants(level))
      add(line);
  }
  void warning(std::string_view line) override {
    add("WARNING: " + std::string(line));
  }
  void error(std::string_view line) override {
    add("ERROR: " + std::string(line));
  }

  // The lines that begin so, each with its end.
  std::string lines(const std::string &start) const {
    std::istringstream all(text);
    std::string found;
    for (std::string line; std::getline(all, line);) {
      if (line.starts_with(start))
        found += line + '\n';
    }
    return found;
  }

  unsigned verbosity = 0;
  std::string text;

 private:
  void add(std::string_view line) { text.append(line) += '\n'; }
};

}  // namespace vek

#endif  // VEK_TESTS_SUPPORT_RECORDED_MESSAGES_H_

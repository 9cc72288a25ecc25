// What a test case tells the program, and what it hears from it.
#ifndef VEK_TESTS_SUPPORT_MESSAGES_H_
#define VEK_TESTS_SUPPORT_MESSAGES_H_

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "run/options.h"
#include "support/temporary_directory.h"

namespace vek {

// Gives `record` a command line of these words.
inline void parse(Options &record, std::vector<std::string> words) {
  words.insert(words.begin(), "vek");
  std::vector<char *> arguments;
  for (std::string &word : words)
    arguments.push_back(word.data());
  arguments.push_back(nullptr);
  record.parse_options(static_cast<int>(words.size()), arguments.data());
}

// Starts the options anew, with this verbosity and an examples directory. Not
// to be called while standard error is captured.
inline void set_verbosity(unsigned verbosity) {
  options = Options();
  testing::internal::CaptureStderr();
  std::vector<std::string> words(verbosity, "-v");
  words.push_back("examples");
  parse(options, words);
  testing::internal::GetCapturedStderr();
}

// What `action` writes to standard error.
template <class Action>
std::string screen(Action action) {
  testing::internal::CaptureStderr();
  action();
  return testing::internal::GetCapturedStderr();
}

// The log file's text behind its opening lines.
inline std::string logged() {
  const std::string text = read_text("vek.log");
  const std::size_t opening = text.find("\n\n");
  return opening == std::string::npos ? text : text.substr(opening + 2);
}

}  // namespace vek

#endif  // VEK_TESTS_SUPPORT_MESSAGES_H_

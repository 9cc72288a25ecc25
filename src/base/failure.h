// Why something could not be done, for the place that reports it.
#ifndef VEK_BASE_FAILURE_H_
#define VEK_BASE_FAILURE_H_

#include <cstddef>
#include <string>

namespace vek {

// What is wrong with a text, and in which line, from 1; 0 is the text as a
// whole.
struct LineFault {
  std::size_t line = 0;
  std::string reason;

  // "line 7", or nothing.
  std::string place() const {
    return line == 0 ? "" : "line " + std::to_string(line);
  }
  std::string text() const {
    return line == 0 ? reason : place() + ": " + reason;
  }
};

struct Failure {
  std::string file;
  std::string place;  // in the file, as "line 7"; empty: the file as a whole
  std::string reason;

  // "FILE: PLACE: REASON", in one line.
  std::string text() const {
    return file + ": " + (place.empty() ? "" : place + ": ") + reason;
  }
};

}  // namespace vek

#endif  // VEK_BASE_FAILURE_H_

// Why something could not be done, for the place that reports it.
#ifndef VEK_BASE_FAILURE_H_
#define VEK_BASE_FAILURE_H_

#include <string>

namespace vek {

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

// Whether the analyser works, found out as vek would: by asking it.
#ifndef VEK_CHECK_ANALYSER_CHECK_H_
#define VEK_CHECK_ANALYSER_CHECK_H_

#include <chrono>
#include <string>

namespace vek::checking {

// Starts the analyser with that command line and asks it for the text in the
// file `path`; for an empty path it is only started. Returns what is wrong, in
// words; nothing if the answer came whole. The process is gone on return.
std::string analyser_fault(const std::string &command, const std::string &path,
                           std::chrono::seconds patience);

}  // namespace vek::checking

#endif  // VEK_CHECK_ANALYSER_CHECK_H_

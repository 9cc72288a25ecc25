// Programs that turn a file into text.
#ifndef VEK_CONVERT_FILTER_H_
#define VEK_CONVERT_FILTER_H_

#include <string>

namespace vek::convert {

// A reason that begins so says nothing about the file.
inline constexpr char not_started[] = "the filter cannot be started: ";

// Runs `command` with the shell on the file `path`, an absolute path: the file
// is its standard input, and {} in the command stands for its name as one word,
// whatever characters it has. Sets `text` to the standard output, in whatever
// encoding that is. The standard error is ours. Returns what went wrong, or an
// empty string: a status other than 0, more than longest_text bytes, or no end
// within five minutes.
std::string run_filter(const std::string &command, const std::string &path,
                       std::string &text);

}  // namespace vek::convert

#endif  // VEK_CONVERT_FILTER_H_

// Names as they stand in tab-separated lines.
#ifndef VEK_BASE_ESCAPES_H_
#define VEK_BASE_ESCAPES_H_

#include <string>
#include <string_view>

namespace vek {

// A backslash as two of them, a control character as \x and two hexadecimal
// digits: a name may hold tabs, line ends and what a terminal obeys.
std::string escaped(std::string_view text);

// The way back. False if a backslash begins nothing of that kind.
bool unescape(std::string_view text, std::string &name);

}  // namespace vek

#endif  // VEK_BASE_ESCAPES_H_

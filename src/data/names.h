// Names and dates as they stand in tab-separated lines.
#ifndef VEK_DATA_NAMES_H_
#define VEK_DATA_NAMES_H_

#include <cstdint>
#include <string>
#include <string_view>

namespace vek::keeping {

// A backslash as two of them, a control character as \x and two hexadecimal
// digits: a name may hold tabs, line ends and what a terminal obeys.
std::string escaped(std::string_view text);

// The way back. False if a backslash begins nothing of that kind.
bool unescape(std::string_view text, std::string &name);

// "2001-09-09T01:46:40Z", of seconds since the Epoch.
std::string date(std::uint32_t seconds);

}  // namespace vek::keeping

#endif  // VEK_DATA_NAMES_H_

// Names and dates as they stand in tab-separated lines.
#ifndef VEK_DATA_NAMES_H_
#define VEK_DATA_NAMES_H_

#include <cstdint>
#include <string>

#include "base/escapes.h"

namespace vek::keeping {

using vek::escaped;
using vek::unescape;

// "2001-09-09T01:46:40Z", of seconds since the Epoch.
std::string date(std::uint32_t seconds);

}  // namespace vek::keeping

#endif  // VEK_DATA_NAMES_H_

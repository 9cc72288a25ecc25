#include "data/names.h"

#include <ctime>

namespace vek::keeping {

std::string date(std::uint32_t seconds) {
  const std::time_t time = seconds;
  std::tm parts = {};
  char text[32] = "";
  if (gmtime_r(&time, &parts) != nullptr)
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
  return text;
}

}  // namespace vek::keeping

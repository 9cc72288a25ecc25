#include "report/json_writer.h"

#include <nlohmann/json.hpp>

namespace vek::reporting {

std::string JsonWriter::quoted(std::string_view value) {
  return nlohmann::json(value).dump(-1, ' ', false,
                                    nlohmann::json::error_handler_t::replace);
}

}  // namespace vek::reporting

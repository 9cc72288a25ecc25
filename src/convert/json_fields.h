// Some fields of a JSON object, without a tree of the whole of it in memory.
#ifndef VEK_CONVERT_JSON_FIELDS_H_
#define VEK_CONVERT_JSON_FIELDS_H_

#include <string>
#include <string_view>
#include <vector>

namespace vek::convert {

// For each name the values of that field, in their order: `a.b` is the member
// b of the member a, and an array has the values of its elements. Numbers and
// truth values are text, null is no value. Returns what is wrong with `text`,
// or an empty string.
std::string read_json_fields(std::string_view text,
                             const std::vector<std::string> &names,
                             std::vector<std::vector<std::string>> &values);

}  // namespace vek::convert

#endif  // VEK_CONVERT_JSON_FIELDS_H_

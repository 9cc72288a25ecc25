// How texts are read and converted: what the user told, and what was found out
// of the source. Kept as JSON, so that new texts are converted like the old.
#ifndef VEK_CONVERT_SETTINGS_H_
#define VEK_CONVERT_SETTINGS_H_

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace vek::convert {

enum class Form { unknown, text, html, mail, mbox, csv, tsv, jsonl, fasttext };

// Form::unknown for a name that is none.
Form find_form(std::string_view name);
const char *form_name(Form form);

struct Settings {
  Form form = Form::unknown;      // unknown: by each file's name
  std::vector<std::string> text;  // fields; empty: `text`
  std::string classes;            // field; empty: `class` or `label`; of mail:
                                  // a header; empty: folders
  std::string id;                 // field; empty: none
  std::string group;              // field; empty: none
  std::string separator;          // between classes of one field
  std::string path;               // between the parts of a class path
  std::string encoding;           // empty: to be found out
  bool has_header = true;         // rows: the first one names the columns
  bool has_quotes = true;         // rows: quotes have a meaning
  // "EXT=COMMAND", or "COMMAND" for all files.
  std::vector<std::string> filters;

  bool operator==(const Settings &) const = default;

  // Empty: no filter is for a file of this name. A later one goes first.
  std::string filter_for(std::string_view file) const;
};

// Members that are as by default are left out.
void to_json(nlohmann::json &json, const Settings &settings);
// Throws nlohmann::json::exception if a member is of the wrong kind.
void from_json(const nlohmann::json &json, Settings &settings);

// The ending of a path's last component, in small letters: "pdf"; or "".
std::string extension_of(std::string_view path);

}  // namespace vek::convert

#endif  // VEK_CONVERT_SETTINGS_H_

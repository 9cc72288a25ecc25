// Sources with a document in each row: CSV, TSV, JSON lines and fastText.
#ifndef VEK_CONVERT_ROWS_H_
#define VEK_CONVERT_ROWS_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/failure.h"
#include "convert/lines.h"
#include "convert/record.h"
#include "convert/settings.h"

namespace vek::convert {

// A file of a source.
struct FilePlace {
  std::string path;    // to open it, and for reports
  std::string name;    // within the source, "a/x.txt"; empty if it is all of it
  std::string folder;  // class by folder, "a/b"; empty: none
  std::string key;     // of a file that is one document; empty: its name

  // "a/x.csv:17", "17".
  std::string at_line(std::uint64_t line) const {
    return (name.empty() ? "" : name + ':') + std::to_string(line);
  }
};

// Appends the names in the value of a class field, trimmed. An empty separator
// divides nothing.
void split_classes(std::string_view value, const std::string &separator,
                   std::vector<std::string> &classes);

// Gives the sink a record for each row, in their order. False if the source
// cannot be used at all: a column is missing, or it cannot be read.
bool read_rows(Form form, Lines &lines, const Settings &settings,
               const FilePlace &file, Sink &sink, Failure &failure);

}  // namespace vek::convert

#endif  // VEK_CONVERT_ROWS_H_

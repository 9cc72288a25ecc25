#include "store/filesetformat.h"

#include "base/textio.h"
#include "store/datafiles.h"

namespace vek {

std::string file_set_line(std::string_view name, std::uint64_t size) {
  std::string line(name);
  line += ' ';
  append_number(line, size);
  line += '\n';
  return line;
}

bool parse_file_set(std::string_view text,
                    std::vector<FileSetMember> &members) {
  if (!text.starts_with(file_set_begin))
    return false;
  text.remove_prefix(file_set_begin.size());
  // By sizes, not by searching: a file's content may hold the last line too.
  while (text != file_set_end) {
    std::string_view line;
    std::uint64_t size = 0;
    if (!take_line(text, line))
      return false;
    const std::string_view name = line.substr(0, line.find(' '));
    FieldReader fields(line.substr(name.size()));
    if (!is_class_file(name) || !fields.read(size) || !fields.at_end() ||
        size > text.size()) {
      return false;
    }
    members.push_back({name, text.substr(0, size)});
    text.remove_prefix(size);
  }
  return true;
}

}  // namespace vek

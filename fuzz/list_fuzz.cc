// Any bytes as a list of documents: the lines are taken apart as the text says
// and their class paths are entered; a name that is said to be storable can be
// read back.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <string_view>

#include "classes/classtab.h"
#include "intake/collection.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  const std::string_view text(reinterpret_cast<const char *>(data), size);
  vek::ListReader reader(text);
  vek::ClassTable table;
  table.enter("top", 0);
  std::string line;
  vek::ListEntry entry;
  while (reader.next(line)) {
    if (line.size() > vek::longest_list_line)
      std::abort();
    if (!vek::parse_list_line(line, entry))
      continue;
    if (entry.classes.empty())
      std::abort();
    for (const std::string &path : entry.classes)
      table.enter_path(path, 0);
  }
  std::uint32_t bad_id = 0;
  if (!table.all_names_storable(bad_id))
    return 0;
  std::ostringstream output;
  if (!table.write(output))
    std::abort();
  vek::ClassTable again;
  std::istringstream input(output.str());
  if (!again.read(input) || again.size() != table.size())
    std::abort();
  return 0;
}

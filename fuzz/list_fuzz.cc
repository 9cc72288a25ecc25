// Any bytes as a list of documents: the lines are taken apart as the text says
// and their class paths are entered; a name that is said to be storable can be
// read back.
#include <sstream>
#include <string>

#include "classes/classtab.h"
#include "intake/lists.h"
#include "target.h"

using vek::fuzzing::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  vek::ListReader reader(vek::fuzzing::text_of(data, size));
  vek::ClassTable table;
  table.enter("top", 0);
  std::string line;
  vek::ListEntry entry;
  while (reader.next(line)) {
    require(line.size() <= vek::longest_list_line);
    if (!vek::parse_list_line(line, entry))
      continue;
    require(!entry.classes.empty());
    for (const std::string &path : entry.classes)
      table.enter_path(path, 0);
  }
  // The top class, and what lies between two of the bytes.
  require(table.size() <= size + 1);
  std::uint32_t bad_id = 0;
  if (!table.all_names_storable(bad_id))
    return 0;
  std::ostringstream output;
  require(table.write(output));
  vek::ClassTable again;
  require(again.parse(output.view()) == vek::ClassTable::Parsed::good &&
          again.size() == table.size());
  return 0;
}

// Any bytes as atoms.dat: what is read is written as the same bytes, read again
// and found again under the same ids.
#include <string>

#include "target.h"
#include "vocabulary/atomtab.h"

namespace {

using vek::fuzzing::require;

std::string written(const vek::AtomTable &table) {
  std::string out;
  for (std::uint32_t id = 0; id < table.size(); ++id)
    table.append_line(out, id);
  return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  std::string text(vek::fuzzing::text_of(data, size));
  vek::StringPool pool;
  vek::AtomTable table(pool);
  const bool good = table.parse(text);
  require(table.size() <= (size + 1) / 2);
  if (!good) {
    const vek::LineFault fault = table.fault(text);
    require(fault.line == table.size() + 1 &&
            fault.reason != "there are too many lines");
    return 0;
  }
  require(text.find('\0') == text.npos);
  if (!text.empty() && text.back() != '\n')
    text += '\n';
  require(written(table) == text);
  vek::AtomTable again(pool);
  require(again.parse(text));
  for (std::uint32_t id = 0; id < table.size(); ++id)
    require(again.enter(table.text(id)) == id);
  require(again.size() == table.size());
  return 0;
}

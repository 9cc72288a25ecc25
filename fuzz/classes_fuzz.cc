// Any bytes as a class table, as a class profile with each kind of columns, or
// as a file of weights (the first byte chooses): what is read is written, read
// again and written the same.
#include <set>
#include <sstream>
#include <string>
#include <utility>

#include "base/textio.h"
#include "classes/classtab.h"
#include "classes/weightfile.h"
#include "target.h"

namespace {

using vek::fuzzing::require;

std::string written(const vek::ClassTable &table) {
  std::ostringstream output;
  require(table.write(output));
  return output.str();
}

void check_table(const std::string &text) {
  vek::ClassTable table;
  const bool good = table.parse(text) == vek::ClassTable::Parsed::good;
  // Of a class there are at least five numbers and the quotation marks.
  require(table.size() <= text.size() / 12);
  if (!good)
    return;
  std::uint32_t bad_id = 0;
  require(table.all_names_storable(bad_id));
  const std::string output = written(table);
  vek::ClassTable again;
  require(again.parse(output) == vek::ClassTable::Parsed::good &&
          written(again) == output);
  for (std::uint32_t id = 0; id < table.size(); ++id)
    require(again.full_name(id) == table.full_name(id));
  again.gather_documents();
}

void check_profile(const std::string &text, vek::ProfileColumns columns) {
  vek::ClassProfile profile;
  std::uint32_t nr_terms = 0;
  vek::LineFault fault;
  const bool good =
      profile.parse(text, nr_terms, columns, std::uint64_t{1} << 32, fault);
  require(good == fault.reason.empty() &&
          fault.line <= vek::count_lines(text) + 1);
  // Of an entry there are at least three numbers.
  require(profile.size() <= text.size() / 6);
  if (!good)
    return;
  std::ostringstream output;
  require(profile.write(output, nr_terms, columns));
  vek::ClassProfile again;
  require(again.parse(output.view(), nr_terms, columns));
  std::ostringstream third;
  require(again.write(third, nr_terms, columns) && third.str() == output.str());
}

void check_weights(const std::string &text) {
  vek::ClassProfile profile;
  for (std::uint32_t term = 0; term < 3; ++term)
    profile[term];
  if (!vek::parse_winnow_weights(text, profile))
    return;
  std::ostringstream output;
  require(vek::write_winnow_weights(output, profile));
  vek::ClassProfile again = profile;
  require(vek::parse_winnow_weights(output.str(), again));
  for (std::uint32_t term = 0; term < 3; ++term) {
    require(again[term].pos_weight == profile[term].pos_weight);
    require(again[term].neg_weight == profile[term].neg_weight);
  }
  require(again.threshold() == profile.threshold());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  if (size == 0)
    return 0;
  const std::string text(vek::fuzzing::text_of(data + 1, size - 1));
  switch (data[0] % 5) {
    case 0:
      check_table(text);
      break;
    case 1:
      check_profile(text, vek::ProfileColumns::updates);
      break;
    case 2:
      check_profile(text, vek::ProfileColumns::weight);
      check_profile(text, vek::ProfileColumns::exact_weight);
      break;
    case 3:
      check_profile(text, vek::ProfileColumns::frequencies);
      break;
    default:
      check_weights(text);
      break;
  }
  return 0;
}

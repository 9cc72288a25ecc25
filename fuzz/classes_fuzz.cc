// Any bytes as a class table, as a class profile under each algorithm, or as a
// file of weights (the first byte chooses): what is read is written, read again
// and written the same.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

#include "classes/classtab.h"
#include "learning/weightfile.h"
#include "params/params.h"

namespace {

void check_table(const std::string &text) {
  vek::ClassTable table;
  std::istringstream input(text);
  // A key that comes twice stops the program by design; such a text is left
  // out.
  if (text.find('"') != text.rfind('"') &&
      text.find('"', text.find('"') + 1) != text.rfind('"')) {
    return;
  }
  if (!table.read(input))
    return;
  std::ostringstream output;
  if (!table.write(output))
    std::abort();
  vek::ClassTable again;
  std::istringstream second(output.str());
  if (!again.read(second) || again.size() != table.size())
    std::abort();
}

void check_profile(const std::string &text, vek::Algorithm algorithm) {
  vek::params.set_algorithm(algorithm);
  vek::ClassProfile profile;
  std::uint32_t nr_terms = 0;
  std::istringstream input(text);
  if (!profile.read(input, nr_terms))
    return;
  std::ostringstream output;
  if (!profile.write(output, nr_terms))
    std::abort();
  vek::ClassProfile again;
  std::istringstream second(output.str());
  if (!again.read(second, nr_terms))
    std::abort();
  std::ostringstream third;
  if (!again.write(third, nr_terms) || third.str() != output.str()) {
    std::abort();
  }
}

void check_weights(const std::string &text) {
  vek::ClassProfile profile;
  for (std::uint32_t term = 0; term < 3; ++term)
    profile[term];
  if (!vek::parse_winnow_weights(text, profile))
    return;
  std::ostringstream output;
  if (!vek::write_winnow_weights(output, profile))
    std::abort();
  vek::ClassProfile again = profile;
  if (!vek::parse_winnow_weights(output.str(), again))
    std::abort();
  for (std::uint32_t term = 0; term < 3; ++term) {
    if (again[term].pos_weight != profile[term].pos_weight)
      std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  if (size == 0)
    return 0;
  const std::string text(reinterpret_cast<const char *>(data) + 1, size - 1);
  switch (data[0] % 5) {
    case 0:
      check_table(text);
      break;
    case 1:
      check_profile(text, vek::Algorithm::winnow);
      break;
    case 2:
      check_profile(text, vek::Algorithm::rocchio);
      break;
    case 3:
      check_profile(text, vek::Algorithm::sbc);
      break;
    default:
      check_weights(text);
      break;
  }
  return 0;
}

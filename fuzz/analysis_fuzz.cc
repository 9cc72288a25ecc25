// Any bytes as an analysis text: the parser ends, memory stays within its
// stated bounds, and a second reading counts the same.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "intake/DocParser.h"
#include "run/log.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  const std::string text(reinterpret_cast<const char *>(data), size);
  vek::TermBag first;
  vek::TermBag second;
  const unsigned nr_errors = vek::parse_analysis(text, "document", &first);
  if (vek::parse_analysis(text, "document", &second) != nr_errors)
    std::abort();
  if (!std::equal(first.begin(), first.end(), second.begin(), second.end())) {
    std::abort();
  }
  return 0;
}

// Any bytes as an analysis text: the parser ends, memory stays within the
// stated limits, and a second reading counts the same.
//
// Under the usual limits some products are so large that a fuzzer would do
// little else. So it meets small ones; a text without an error has met none of
// them, and must come to the same under the usual limits. Kept inputs meet the
// usual ones in any case when they are replayed.
#include <algorithm>
#include <string>

#include "intake/DocParser.h"
#include "target.h"
#include "vocabulary/atomtab.h"

namespace {

using vek::fuzzing::require;

constexpr vek::DocParser::Limits small_limits = {32, 256, 2048};

#ifdef VEK_FUZZ
constexpr bool is_replay = false;
#else
constexpr bool is_replay = true;
#endif

// What a parse has come to.
struct Result {
  vek::TermBag bag;
  std::uint32_t nr_errors = 0;

  void require_same(const Result &other) const {
    require(nr_errors == other.nr_errors);
    require(
        std::equal(bag.begin(), bag.end(), other.bag.begin(), other.bag.end()));
  }
};

Result parse_with_small_limits(std::string_view text) {
  Result result;
  vek::DocParser parser(&result.bag, text, "document", small_limits);
  parser.parse();
  result.nr_errors = parser.nr_errors();
  return result;
}

Result parse(const std::string &text) {
  Result result;
  result.nr_errors = vek::parse_analysis(text, "document", &result.bag);
  return result;
}

void check_bounds(std::size_t size, const Result &result) {
  std::size_t nr_counted = 0;
  for (const vek::TermBagEntry &entry : result.bag)
    nr_counted += entry.count;
  require(nr_counted <= small_limits.pairs + size);
  std::size_t nr_bytes = 0;
  for (std::uint32_t id = 0; id < vek::atom_table.size(); ++id)
    nr_bytes += vek::atom_table.text(id).size();
  require(nr_bytes <= small_limits.compound_bytes + size);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  vek::fuzzing::renew(vek::atom_table);
  // What parse_analysis() looks at.
  std::string text(vek::fuzzing::text_of(data, size));
  text.resize(std::min(text.size(), text.find('\0')));
  const Result first = parse_with_small_limits(text);
  check_bounds(size, first);
  if (first.nr_errors == 0)
    parse(text).require_same(first);
  else
    parse_with_small_limits(text).require_same(first);
  if (is_replay)
    parse(text).require_same(parse(text));
  return 0;
}

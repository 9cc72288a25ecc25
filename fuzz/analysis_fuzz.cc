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
  // Without limits of its own it meets the usual ones.
  template <class... Limits>
  Result(vek::AtomTable &atoms, std::string_view text,
         const Limits &...limits) {
    vek::Messages messages;
    vek::DocParser parser(atoms, bag, text, "document", messages, limits...);
    require(parser.parse());
    nr_errors = parser.nr_errors();
  }

  void require_same(const Result &other) const {
    require(nr_errors == other.nr_errors);
    require(
        std::equal(bag.begin(), bag.end(), other.bag.begin(), other.bag.end()));
  }

  vek::TermBag bag;
  std::uint32_t nr_errors = 0;
};

void check_bounds(std::size_t size, const vek::AtomTable &atoms,
                  const Result &result) {
  std::size_t nr_counted = 0;
  for (const vek::TermBagEntry &entry : result.bag)
    nr_counted += entry.count;
  require(nr_counted <= small_limits.pairs + size);
  std::size_t nr_bytes = 0;
  for (std::uint32_t id = 0; id < atoms.size(); ++id)
    nr_bytes += atoms.text(id).size();
  require(nr_bytes <= small_limits.compound_bytes + size);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  const std::string_view text = vek::fuzzing::text_of(data, size);
  vek::StringPool pool;
  vek::AtomTable atoms(pool);
  const Result first(atoms, text, small_limits);
  check_bounds(size, atoms, first);
  if (first.nr_errors == 0)
    Result(atoms, text).require_same(first);
  else
    Result(atoms, text, small_limits).require_same(first);
  if (is_replay)
    Result(atoms, text).require_same(Result(atoms, text));
  return 0;
}

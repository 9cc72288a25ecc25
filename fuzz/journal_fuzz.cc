// Any bytes as journal.dat: what is read can be entered in tables as large as
// it says, and is written, read again and written the same.
#include <string>

#include "store/journal.h"
#include "target.h"
#include "vocabulary/atomtab.h"

namespace {

using vek::fuzzing::require;

void check_entries(const vek::JournalContent &journal) {
  const std::uint64_t nr_atoms =
      std::uint64_t{journal.nr_atoms} + journal.new_atoms.size();
  for (const std::string_view atom : journal.new_atoms) {
    require(!atom.empty());
    require(atom.find_first_of(std::string_view("\0\n", 2)) == atom.npos);
  }
  for (const auto &[head, mod] : journal.new_terms) {
    require(head < nr_atoms && head != vek::EmptyAtom);
    require(mod < nr_atoms || mod == vek::EmptyAtom);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  vek::JournalContent journal;
  const bool good =
      vek::parse_journal(vek::fuzzing::text_of(data, size), journal);
  require(2 * journal.new_atoms.size() + 4 * journal.new_terms.size() <= size);
  if (!good)
    return 0;
  check_entries(journal);
  const std::string text = vek::journal_text(journal);
  vek::JournalContent again;
  require(vek::parse_journal(text, again));
  require(again.new_atoms == journal.new_atoms);
  require(vek::journal_text(again) == text);
  return 0;
}

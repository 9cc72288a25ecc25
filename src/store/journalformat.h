// The vocabulary's journal as text, apart from the file: for the run that
// writes it (journal.h) and for readers of a data directory.
#ifndef VEK_STORE_JOURNALFORMAT_H_
#define VEK_STORE_JOURNALFORMAT_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "vocabulary/atomtab.h"
#include "vocabulary/termtab.h"

namespace vek {

// What the file says. The atoms lie in the text that it was parsed from, or in
// the atom table.
struct JournalContent {
  struct Pair {
    std::uint32_t head;
    std::uint32_t mod;
  };
  std::uint32_t nr_atoms = 0;    // in atoms.dat
  std::uint64_t atoms_size = 0;  // its length in bytes
  std::uint32_t nr_terms = 0;    // in terms.dat
  std::uint64_t terms_size = 0;  // its length in bytes
  std::vector<std::string_view> new_atoms;
  std::vector<Pair> new_terms;
};

// Fills the empty `content`. Returns false if journal_text() cannot have made
// the text: it is cut, has bytes left over, an atom that cannot be one, or a
// term of atoms that do not exist.
bool parse_journal(std::string_view text, JournalContent &content);

// The whole file.
std::string journal_text(const JournalContent &content);

// Enters what the journal has in the tables, which must have been read up to
// the lengths that it gives. False if the tables are others, or if an atom or
// term is known already: its id would not be the one that the profiles use.
bool enter_journal(const JournalContent &content, AtomTable &atoms,
                   TermTable &terms);

// Whether a table's file, of which the journal says that it had `size` bytes,
// can be the one that it was written for: it has them, and behind them no more
// than what was being appended, `nr_pending` complete lines. A table with more
// is newer than the journal, and nothing of it may be cut.
bool fits_journal(std::string_view table, std::uint64_t size,
                  std::size_t nr_pending);

}  // namespace vek

#endif  // VEK_STORE_JOURNALFORMAT_H_

// Any bytes as terms.dat, over a few atoms: the chains hold each term once and
// in their order, and what is read is written, read again and written the same.
#include <string>

#include "target.h"
#include "vocabulary/atomtab.h"
#include "vocabulary/termtab.h"

namespace {

using vek::fuzzing::require;

constexpr std::uint32_t nr_atoms = 16;

void enter_atoms() {
  for (char text = 'a'; vek::atom_table.size() < nr_atoms; ++text)
    vek::atom_table.enter({&text, 1});
}

std::string written(const vek::TermTable &table) {
  std::string out;
  for (std::uint32_t id = 0; id < table.size(); ++id)
    table.append_line(out, id);
  return out;
}

// The length of the chain of a head.
std::size_t check_chain(const vek::TermTable &table, std::uint32_t head) {
  std::size_t length = 0;
  std::uint32_t id = table.first_of_head(head);
  while (id != vek::EmptyAtom) {
    const vek::TermTable::Term &term = table.get_term(id);
    require(term.head == head && term.id == id);
    require(term.next == vek::EmptyAtom || table.mod(term.next) > term.mod);
    ++length;
    id = term.next;
  }
  return length;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  enter_atoms();
  vek::TermTable table;
  const bool good = table.parse(vek::fuzzing::text_of(data, size));
  // The shortest line is that of four digits.
  require(table.size() <= (size + 1) / 8);
  if (!good)
    return 0;
  std::size_t nr_in_chains = 0;
  for (std::uint32_t head = 0; head < nr_atoms; ++head)
    nr_in_chains += check_chain(table, head);
  require(nr_in_chains == table.size());
  const std::string text = written(table);
  vek::TermTable again;
  require(again.parse(text) && written(again) == text);
  for (std::uint32_t id = 0; id < table.size(); ++id)
    require(again.enter(table.head(id), table.mod(id)) == id);
  return 0;
}

// Any bytes as terms.dat, over a few atoms: the chains hold each term once and
// in their order, and what is read is written, read again and written the same.
#include <string>
#include <vector>

#include "target.h"
#include "vocabulary/termtab.h"

namespace {

using vek::fuzzing::require;

constexpr std::uint32_t nr_atoms = 16;

std::string written(const vek::TermTable &table) {
  std::string out;
  for (std::uint32_t id = 0; id < table.size(); ++id)
    table.append_line(out, id);
  return out;
}

// The terms of a head lead to one another in the order of their modifiers, and
// one of them is the last.
void check_chains(const vek::TermTable &table) {
  std::vector<std::uint32_t> nr_terms(nr_atoms), nr_links(nr_atoms);
  for (std::uint32_t id = 0; id < table.size(); ++id) {
    const vek::TermTable::Term &term = table.get_term(id);
    require(term.id == id);
    ++nr_terms[term.head];
    if (term.next == vek::EmptyAtom)
      continue;
    ++nr_links[term.head];
    require(table.head(term.next) == term.head);
    require(table.mod(term.next) > term.mod);
  }
  for (std::uint32_t head = 0; head < nr_atoms; ++head)
    require(nr_terms[head] == 0 || nr_links[head] + 1 == nr_terms[head]);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  vek::TermTable table;
  const bool good = table.parse(vek::fuzzing::text_of(data, size), nr_atoms);
  // The shortest line is that of four digits.
  require(table.size() <= (size + 1) / 8);
  if (!good) {
    const vek::LineFault fault =
        table.fault(vek::fuzzing::text_of(data, size), nr_atoms);
    require(fault.line == table.size() + 1 &&
            fault.reason != "there are too many lines");
    return 0;
  }
  check_chains(table);
  const std::string text = written(table);
  vek::TermTable again;
  require(again.parse(text, nr_atoms) && written(again) == text);
  for (std::uint32_t id = 0; id < table.size(); ++id)
    require(again.enter(table.head(id), table.mod(id)) == id);
  return 0;
}

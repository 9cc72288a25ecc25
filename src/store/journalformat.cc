#include "store/journalformat.h"

#include <algorithm>

#include "base/textio.h"

namespace vek {
namespace {

constexpr std::string_view first_line = "vek journal 1\n";
constexpr std::string_view last_line = "end\n";

// Takes the numbers of the second line.
bool parse_numbers(std::string_view line, JournalContent &content,
                   std::uint32_t &nr_new_atoms, std::uint32_t &nr_new_terms) {
  FieldReader fields(line);
  return fields.read(content.nr_atoms) && fields.read(content.atoms_size) &&
         fields.read(content.nr_terms) && fields.read(content.terms_size) &&
         fields.read(nr_new_atoms) && fields.read(nr_new_terms) &&
         fields.at_end();
}

bool parse_atom(std::string_view line, JournalContent &content) {
  content.new_atoms.push_back(line);
  return !line.empty() && line.find('\0') == std::string_view::npos;
}

bool parse_term(std::string_view line, JournalContent &content) {
  FieldReader fields(line);
  JournalContent::Pair term = {};
  if (!fields.read(term.head) || !fields.read(term.mod) || !fields.at_end())
    return false;
  content.new_terms.push_back(term);
  // In 64 bits: both numbers come from the file and their sum may wrap.
  const std::uint64_t nr_atoms =
      std::uint64_t{content.nr_atoms} + content.new_atoms.size();
  return term.head < nr_atoms && term.head != EmptyAtom &&
         (term.mod < nr_atoms || term.mod == EmptyAtom);
}

}  // namespace

bool parse_journal(std::string_view text, JournalContent &content) {
  // Without its last line the text is cut, and nothing of it counts.
  if (!text.starts_with(first_line) || !text.ends_with(last_line))
    return false;
  text.remove_prefix(first_line.size());
  text.remove_suffix(last_line.size());
  // Without this check, a line that lost its end would pass: the last line
  // would then be taken off directly behind it.
  if (!text.ends_with('\n'))
    return false;
  std::uint32_t nr_new_atoms = 0;
  std::uint32_t nr_new_terms = 0;
  std::string_view line;
  take_line(text, line);
  if (!parse_numbers(line, content, nr_new_atoms, nr_new_terms))
    return false;
  // Nothing is reserved for the numbers of the file; memory grows with its
  // lines.
  while (content.new_atoms.size() < nr_new_atoms) {
    if (!take_line(text, line) || !parse_atom(line, content))
      return false;
  }
  while (content.new_terms.size() < nr_new_terms) {
    if (!take_line(text, line) || !parse_term(line, content))
      return false;
  }
  return text.empty();
}

std::string journal_text(const JournalContent &content) {
  std::string text(first_line);
  append_number(text, content.nr_atoms);
  text += ' ';
  append_number(text, content.atoms_size);
  text += ' ';
  append_number(text, content.nr_terms);
  text += ' ';
  append_number(text, content.terms_size);
  text += ' ';
  append_number(text, content.new_atoms.size());
  text += ' ';
  append_number(text, content.new_terms.size());
  text += '\n';
  for (const std::string_view atom : content.new_atoms) {
    text += atom;
    text += '\n';
  }
  for (const auto &[head, mod] : content.new_terms) {
    append_number(text, head);
    text += ' ';
    append_number(text, mod);
    text += '\n';
  }
  text += last_line;
  return text;
}

bool enter_journal(const JournalContent &content, AtomTable &atoms,
                   TermTable &terms) {
  // Ids are positions: behind other tables the same lines would get other ids.
  if (atoms.size() != content.nr_atoms || terms.size() != content.nr_terms) {
    return false;
  }
  for (const std::string_view atom : content.new_atoms) {
    const std::uint32_t id = atoms.size();
    if (atoms.enter(atom) != id)
      return false;
  }
  for (const auto &[head, mod] : content.new_terms) {
    const std::uint32_t id = terms.size();
    if (terms.enter(head, mod) != id)
      return false;
  }
  return true;
}

bool fits_journal(std::string_view table, std::uint64_t size,
                  std::size_t nr_pending) {
  if (table.size() < size)
    return false;
  const std::string_view tail = table.substr(size);
  // Complete lines only; a torn one at the end has no line end.
  const auto nr_ends = static_cast<std::size_t>(std::ranges::count(tail, '\n'));
  // A last line without its end gets it before more is appended.
  const bool ends_line =
      size > 0 && table[size - 1] != '\n' && tail.starts_with('\n');
  return nr_ends - (ends_line ? 1 : 0) <= nr_pending;
}

}  // namespace vek

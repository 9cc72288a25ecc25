#include "store/journal.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <string_view>

#include "run/helpers.h"
#include "run/log.h"
#include "run/output_file.h"
#include "run/textio.h"
#include "vocabulary/atomtab.h"
#include "vocabulary/tablefile.h"
#include "vocabulary/termtab.h"

namespace vek {
namespace {

constexpr std::string_view first_line = "vek journal 1\n";
constexpr std::string_view last_line = "end\n";

// Of a table's file, which may be missing.
std::uint64_t size_or_zero(const std::string &path) {
  const KeepErrno keep;
  const std::int64_t size = file_size(path);
  if (size >= 0)
    return static_cast<std::uint64_t>(size);
  if (file_is_there(path)) {
    report_file_error(path, FileError::read);
    abort_run();
  }
  return 0;
}

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
  const std::uint64_t nr_atoms =
      std::uint64_t{content.nr_atoms} + content.new_atoms.size();
  return term.head < nr_atoms && term.head != EmptyAtom &&
         (term.mod < nr_atoms || term.mod == EmptyAtom);
}

}  // namespace

bool parse_journal(std::string_view text, JournalContent &content) {
  if (!text.starts_with(first_line) || !text.ends_with(last_line))
    return false;
  text.remove_prefix(first_line.size());
  text.remove_suffix(last_line.size());
  // Else the end of the line before would be lost on the way to the last one.
  if (!text.ends_with('\n'))
    return false;
  std::uint32_t nr_new_atoms = 0;
  std::uint32_t nr_new_terms = 0;
  std::string_view line;
  take_line(text, line);
  if (!parse_numbers(line, content, nr_new_atoms, nr_new_terms))
    return false;
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

void Journal::set_directory(const std::string &directory) {
  directory_ = directory;
  path_ = Path(directory, "journal", ".dat");
  temporary_path_ = Path(directory, "journal", ".tmp");
  atoms_path_ = Path(directory, "atoms", ".dat");
  terms_path_ = Path(directory, "terms", ".dat");
}

bool Journal::exists() const {
  const KeepErrno keep;
  return file_is_there(path_);
}

void Journal::reject(const std::string &path) const {
  report_file_error(path, FileError::format);
  abort_run();
}

// Reads the file into `text`, in which the atoms of `content` then lie.
void Journal::load(std::string &text, JournalContent &content) const {
  const ReadResult result = read_file(path_, text);
  if (result != ReadResult::ok) {
    report_file_error(path_, result == ReadResult::cannot_open
                                 ? FileError::open_for_reading
                                 : FileError::read);
    abort_run();
  }
  if (!parse_journal(text, content))
    reject(path_);
}

// The number of complete lines from byte `size` on; none if nothing is there.
std::size_t Journal::count_lines_behind(const std::string &path,
                                        std::uint64_t size) const {
  if (size_or_zero(path) <= size)
    return 0;
  std::string text;
  if (read_file(path, text) != ReadResult::ok) {
    report_file_error(path, FileError::read);
    abort_run();
  }
  const std::string_view tail = std::string_view(text).substr(size);
  const auto nr_ends = static_cast<std::size_t>(std::ranges::count(tail, '\n'));
  // A last line without its end gets it before more is appended.
  return size > 0 && text[size - 1] != '\n' && tail.starts_with('\n')
             ? nr_ends - 1
             : nr_ends;
}

void Journal::prepare_tables() {
  std::string text;
  JournalContent journal;
  load(text, journal);
  struct Table {
    const std::string &path;
    std::uint64_t size;
    std::size_t nr_pending;
  };
  const Table tables[] = {
      {atoms_path_, journal.atoms_size, journal.new_atoms.size()},
      {terms_path_, journal.terms_size, journal.new_terms.size()}};
  for (const Table &table : tables) {
    if (size_or_zero(table.path) < table.size)
      reject(table.path);
    // What was being appended is in the journal. Tables with more than that
    // are newer than the journal, and nothing of them may be cut.
    if (count_lines_behind(table.path, table.size) > table.nr_pending)
      reject(path_);
  }
  for (const Table &table : tables) {
    if (size_or_zero(table.path) > table.size &&
        truncate(table.path.c_str(), static_cast<off_t>(table.size)) != 0) {
      report_file_error(table.path, FileError::write);
      abort_run();
    }
  }
}

void Journal::enter_pending() {
  std::string text;
  JournalContent journal;
  load(text, journal);
  if (!enter(journal))
    reject(path_);
  nr_atoms_saved_ = atom_table.size();
  nr_terms_saved_ = term_table.size();
}

// False if the tables are others, or if an atom or term is known already: its
// id would not be the one that the stored profiles use.
bool Journal::enter(const JournalContent &content) const {
  if (atom_table.size() != content.nr_atoms ||
      term_table.size() != content.nr_terms) {
    return false;
  }
  for (const std::string_view atom : content.new_atoms) {
    const std::uint32_t id = atom_table.size();
    if (atom_table.enter(atom) != id)
      return false;
  }
  for (const auto &[head, mod] : content.new_terms) {
    const std::uint32_t id = term_table.size();
    if (term_table.enter(head, mod) != id)
      return false;
  }
  return true;
}

// What the tables' files lack.
JournalContent Journal::content() const {
  JournalContent content;
  content.nr_atoms = atom_table.nr_written();
  content.atoms_size = size_or_zero(atoms_path_);
  content.nr_terms = term_table.nr_written();
  content.terms_size = size_or_zero(terms_path_);
  for (std::uint32_t id = content.nr_atoms; id < atom_table.size(); ++id) {
    content.new_atoms.push_back(atom_table.text(id));
  }
  for (std::uint32_t id = content.nr_terms; id < term_table.size(); ++id) {
    content.new_terms.push_back({term_table.head(id), term_table.mod(id)});
  }
  return content;
}

bool Journal::write_file(const std::string &text) const {
  OutputFile file;
  file.open(temporary_path_, OutputFile::Mode::truncate);
  if (!file.is_open())
    return false;
  file.write(text.data(), std::ssize(text));
  if (!file.sync_to_disk())
    return false;
  file.close();
  return file.good() &&
         std::rename(temporary_path_.c_str(), path_.c_str()) == 0 &&
         sync_path(directory_);
}

bool Journal::save() {
  if (!atom_table.has_unwritten() && !term_table.has_unwritten())
    return true;
  if (nr_atoms_saved_ == atom_table.size() &&
      nr_terms_saved_ == term_table.size() && exists()) {
    return true;
  }
  if (!write_file(journal_text(content())))
    return false;
  nr_atoms_saved_ = atom_table.size();
  nr_terms_saved_ = term_table.size();
  return true;
}

void Journal::drop() {
  if (!exists())
    return;
  for (const std::string &path : {atoms_path_, terms_path_, directory_}) {
    if (sync_path(path))
      continue;
    report_file_error(path, FileError::write);
    abort_run();
  }
  if (unlink(path_.c_str()) != 0) {
    report_file_error(path_, FileError::remove);
    abort_run();
  }
}

}  // namespace vek

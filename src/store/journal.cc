#include "store/journal.h"

#include <fcntl.h>
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

std::uint64_t size_or_zero(const std::string &path) {
  const KeepErrno keep;
  return static_cast<std::uint64_t>(std::max<std::int64_t>(file_size(path), 0));
}

bool sync_file(const std::string &path) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0)
    return false;
  const bool ok = fsync(fd) == 0;
  const KeepErrno keep;
  ::close(fd);
  return ok;
}

}  // namespace

void Journal::set_directory(const std::string &directory) {
  path_ = Path(directory, "journal", ".dat");
  temporary_path_ = Path(directory, "journal", ".tmp");
  atoms_path_ = Path(directory, "atoms", ".dat");
  terms_path_ = Path(directory, "terms", ".dat");
}

bool Journal::exists() const {
  const KeepErrno keep;
  return file_exists(path_);
}

void Journal::reject(const std::string &path) const {
  report_file_error(path, FileError::format);
  abort_run();
}

bool Journal::parse(const std::string &text, Header &header,
                    std::string &body) const {
  std::string_view rest(text);
  std::string_view line;
  if (!rest.starts_with(first_line) || !rest.ends_with(last_line))
    return false;
  rest.remove_prefix(first_line.size());
  rest.remove_suffix(last_line.size());
  if (!take_line(rest, line))
    return false;
  FieldReader fields(line);
  body = rest;
  return fields.read(header.nr_atoms) && fields.read(header.atoms_size) &&
         fields.read(header.nr_terms) && fields.read(header.terms_size) &&
         fields.read(header.nr_new_atoms) && fields.read(header.nr_new_terms) &&
         fields.at_end();
}

void Journal::load(Header &header, std::string &body) const {
  std::string text;
  const ReadResult result = read_file(path_, text);
  if (result != ReadResult::ok) {
    report_file_error(path_, result == ReadResult::cannot_open
                                 ? FileError::open_for_reading
                                 : FileError::read);
    abort_run();
  }
  if (!parse(text, header, body))
    reject(path_);
}

void Journal::prepare_tables() {
  Header header = {};
  std::string body;
  load(header, body);
  struct Table {
    const std::string &path;
    std::uint64_t size;
  };
  for (const Table &table : {Table{atoms_path_, header.atoms_size},
                             Table{terms_path_, header.terms_size}}) {
    const std::uint64_t size = size_or_zero(table.path);
    if (size < table.size)
      reject(table.path);
    if (size > table.size &&
        truncate(table.path.c_str(), static_cast<off_t>(table.size)) != 0) {
      report_file_error(table.path, FileError::write);
      abort_run();
    }
  }
}

void Journal::enter_pending() {
  Header header = {};
  std::string body;
  load(header, body);
  if (atom_table.size() != header.nr_atoms ||
      term_table.size() != header.nr_terms || !enter_body(header, body)) {
    reject(path_);
  }
  nr_atoms_saved_ = atom_table.size();
  nr_terms_saved_ = term_table.size();
}

// False if a record is malformed or already known: its id would not be the
// one that the stored profiles use.
bool Journal::enter_body(const Header &header, const std::string &body) const {
  std::string_view rest(body);
  std::string_view line;
  for (std::uint32_t i = 0; i < header.nr_new_atoms; ++i) {
    if (!take_line(rest, line) || line.empty() ||
        line.find('\0') != std::string_view::npos ||
        atom_table.enter(line) != header.nr_atoms + i) {
      return false;
    }
  }
  for (std::uint32_t i = 0; i < header.nr_new_terms; ++i) {
    if (!take_line(rest, line))
      return false;
    FieldReader fields(line);
    std::uint32_t head = 0;
    std::uint32_t mod = 0;
    if (!fields.read(head) || !fields.read(mod) || !fields.at_end() ||
        head >= atom_table.size() ||
        (mod != EmptyAtom && mod >= atom_table.size()) ||
        term_table.enter(head, mod) != header.nr_terms + i) {
      return false;
    }
  }
  return rest.empty();
}

std::string Journal::content() const {
  std::string text(first_line);
  append_number(text, atom_table.nr_written());
  text += ' ';
  append_number(text, size_or_zero(atoms_path_));
  text += ' ';
  append_number(text, term_table.nr_written());
  text += ' ';
  append_number(text, size_or_zero(terms_path_));
  text += ' ';
  append_number(text, atom_table.size() - atom_table.nr_written());
  text += ' ';
  append_number(text, term_table.size() - term_table.nr_written());
  text += '\n';
  for (std::uint32_t id = atom_table.nr_written(); id < atom_table.size();
       ++id) {
    text += atom_table.text(id);
    text += '\n';
  }
  for (std::uint32_t id = term_table.nr_written(); id < term_table.size();
       ++id) {
    append_number(text, term_table.head(id));
    text += ' ';
    append_number(text, term_table.mod(id));
    text += '\n';
  }
  text += last_line;
  return text;
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
         std::rename(temporary_path_.c_str(), path_.c_str()) == 0;
}

bool Journal::save() {
  if (!atom_table.has_unwritten() && !term_table.has_unwritten())
    return true;
  if (nr_atoms_saved_ == atom_table.size() &&
      nr_terms_saved_ == term_table.size() && exists()) {
    return true;
  }
  if (!write_file(content()))
    return false;
  nr_atoms_saved_ = atom_table.size();
  nr_terms_saved_ = term_table.size();
  return true;
}

void Journal::drop() {
  if (!exists())
    return;
  if (!sync_file(atoms_path_) || !sync_file(terms_path_))
    return;
  if (unlink(path_.c_str()) != 0) {
    report_file_error(path_, FileError::remove);
    abort_run();
  }
}

}  // namespace vek

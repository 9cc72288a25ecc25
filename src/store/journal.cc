#include "store/journal.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <string_view>

#include "base/helpers.h"
#include "base/output_file.h"
#include "base/textio.h"
#include "log/log.h"
#include "store/datafiles.h"

namespace vek {
namespace {

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

[[noreturn]] void reject(const std::string &path, const std::string &reason) {
  report_file_error(path, FileError::format, reason);
  abort_run(no_cause);
}

std::uint64_t nr_digits(std::uint32_t number) {
  std::uint64_t count = 1;
  while (number >= 10) {
    number /= 10;
    ++count;
  }
  return count;
}

}  // namespace

void Journal::set_directory(const std::string &directory) {
  directory_ = directory;
  path_ = journal_path(directory);
  temporary_path_ = Path(directory, "journal", ".tmp");
}

bool Journal::exists() const {
  const KeepErrno keep;
  return file_is_there(path_);
}

// Reads the file into `text`, in which the atoms of `content` then lie.
void Journal::load(std::string &text, JournalContent &content) const {
  must_read(path_, text);
  if (!parse_journal(text, content))
    reject(path_, "it is damaged");
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
      {atoms_file_.name(), journal.atoms_size, journal.new_atoms.size()},
      {terms_file_.name(), journal.terms_size, journal.new_terms.size()}};
  for (const Table &table : tables) {
    const std::uint64_t size = size_or_zero(table.path);
    if (size < table.size)
      reject(table.path, "it is shorter than the journal says");
    if (size == table.size)
      continue;
    std::string content;
    must_read(table.path, content);
    if (!fits_journal(content, table.size, table.nr_pending))
      reject(path_, "it does not fit " + table.path);
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
  if (!enter_journal(journal, atoms_, terms_))
    reject(path_, "it does not fit the tables");
  nr_atoms_saved_ = atoms_.size();
  nr_terms_saved_ = terms_.size();
}

// What the tables' files lack.
JournalContent Journal::content() const {
  JournalContent content;
  content.nr_atoms = atoms_file_.nr_written();
  content.atoms_size = size_or_zero(atoms_file_.name());
  content.nr_terms = terms_file_.nr_written();
  content.terms_size = size_or_zero(terms_file_.name());
  for (std::uint32_t id = content.nr_atoms; id < atoms_.size(); ++id) {
    content.new_atoms.push_back(atoms_.text(id));
  }
  for (std::uint32_t id = content.nr_terms; id < terms_.size(); ++id) {
    content.new_terms.push_back({terms_.head(id), terms_.mod(id)});
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

bool Journal::has_unwritten() const {
  return atoms_file_.nr_written() < atoms_.size() ||
         terms_file_.nr_written() < terms_.size();
}

std::uint64_t Journal::length() {
  // The numbers of the head, and the lines at both ends.
  constexpr std::uint64_t frame = 128;
  const std::uint32_t nr_atoms_written = atoms_file_.nr_written();
  const std::uint32_t nr_terms_written = terms_file_.nr_written();
  if (nr_atoms_measured_ <= nr_atoms_written &&
      nr_terms_measured_ <= nr_terms_written) {
    nr_bytes_measured_ = 0;
    nr_atoms_measured_ = nr_atoms_written;
    nr_terms_measured_ = nr_terms_written;
  }
  for (; nr_atoms_measured_ < atoms_.size(); ++nr_atoms_measured_)
    nr_bytes_measured_ += atoms_.text(nr_atoms_measured_).size() + 1;
  for (; nr_terms_measured_ < terms_.size(); ++nr_terms_measured_) {
    nr_bytes_measured_ += nr_digits(terms_.head(nr_terms_measured_)) +
                          nr_digits(terms_.mod(nr_terms_measured_)) + 2;
  }
  return nr_bytes_measured_ + frame;
}

bool Journal::save() {
  if (!has_unwritten())
    return true;
  if (nr_atoms_saved_ == atoms_.size() && nr_terms_saved_ == terms_.size() &&
      exists()) {
    return true;
  }
  if (!write_file(journal_text(content())))
    return false;
  nr_atoms_saved_ = atoms_.size();
  nr_terms_saved_ = terms_.size();
  return true;
}

void Journal::drop() {
  if (!exists())
    return;
  for (const std::string &path :
       {atoms_file_.name(), terms_file_.name(), directory_}) {
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

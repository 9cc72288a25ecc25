// A write-ahead journal: keeps what the vocabulary's files do not hold yet, so
// that nothing that is stored ever names a term that nobody knows.
//
// A stored profile holds term ids. atoms.dat and terms.dat are written at one
// point of a run only, but profiles reach the disk earlier (a run that stops
// in mid-collection) and later (polling). Without their terms a later run
// would give the same ids to other terms. So whenever the store's index is
// about to reach the disk while atoms or terms are unwritten, they are written
// to this file first; the next run reads it right behind the tables; and it is
// removed once the tables hold all of it. After an ordinary run it is gone.
//
// It also says how long the tables' files were. What lies behind that was
// being appended when a run was killed; it is cut off, and comes again from
// here, so that a torn last line is never read as a whole one.
#ifndef VEK_STORE_JOURNAL_H_
#define VEK_STORE_JOURNAL_H_

#include <cstdint>
#include <string>

#include "store/journalformat.h"
#include "store/tablefile.h"
#include "vocabulary/atomtab.h"
#include "vocabulary/termtab.h"

namespace vek {

class Journal {
 public:
  // The two tables, and the files that they are appended to. All must outlive
  // the journal.
  Journal(AtomTable &atoms, TermTable &terms, const TableFile &atoms_file,
          const TableFile &terms_file)
      : atoms_(atoms),
        terms_(terms),
        atoms_file_(atoms_file),
        terms_file_(terms_file) {}

  // Where the journal lies.
  void set_directory(const std::string &directory);

  // There is one on the disk. Leaves errno alone.
  bool exists() const;

  // To be called before the tables are read: gives their files the length that
  // they had when the journal was written. Ends the run if the journal is
  // damaged or does not fit the files.
  void prepare_tables();

  // To be called when the tables have been read: enters what they lack. Ends
  // the run if they are not the tables that the journal was written for.
  void enter_pending();

  // How long the file would be now. Costs time only for what is new since the
  // last call.
  std::uint64_t length();

  // Writes what is unwritten, if anything new has come since the last time:
  // under a temporary name, synced, renamed. Returns false with errno set if
  // that fails; the journal on the disk is then the old one.
  bool save();

  // To be called when the tables' files hold everything: syncs them and
  // removes the journal, if there is one. Ends the run if either fails.
  void drop();

 private:
  bool has_unwritten() const;
  JournalContent content() const;
  void load(std::string &text, JournalContent &content) const;
  bool write_file(const std::string &text) const;

  AtomTable &atoms_;
  TermTable &terms_;
  const TableFile &atoms_file_;
  const TableFile &terms_file_;
  std::string directory_;
  std::string path_;
  std::string temporary_path_;
  // What the journal on the disk reaches up to.
  std::uint32_t nr_atoms_saved_ = 0;
  std::uint32_t nr_terms_saved_ = 0;
  // Up to where length() has added up, and what the lines of those that are
  // unwritten come to.
  std::uint32_t nr_atoms_measured_ = 0;
  std::uint32_t nr_terms_measured_ = 0;
  std::uint64_t nr_bytes_measured_ = 0;
};

}  // namespace vek

#endif  // VEK_STORE_JOURNAL_H_

// Keeps what the vocabulary's files do not hold yet, so that nothing that is
// stored ever names a term that nobody knows.
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
#include <string_view>
#include <vector>

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

// Fills the empty `content`. Returns false if no journal_text() can be that
// text: it is cut, has bytes to spare, an atom that none can be, or a term of
// atoms that are not there.
bool parse_journal(std::string_view text, JournalContent &content);

// The whole file.
std::string journal_text(const JournalContent &content);

class Journal {
 public:
  // Where the journal and the two tables' files lie.
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

  // Writes what is unwritten, if anything new has come since the last time:
  // under a temporary name, synced, renamed. Returns false with errno set if
  // that fails; the journal on the disk is then the old one.
  bool save();

  // To be called when the tables' files hold everything: syncs them and
  // removes the journal, if there is one. Ends the run if either fails.
  void drop();

 private:
  JournalContent content() const;
  void load(std::string &text, JournalContent &content) const;
  bool enter(const JournalContent &content) const;
  bool write_file(const std::string &text) const;
  [[noreturn]] void reject(const std::string &path) const;
  std::size_t count_lines_behind(const std::string &path,
                                 std::uint64_t size) const;

  std::string directory_;
  std::string path_;
  std::string temporary_path_;
  std::string atoms_path_;
  std::string terms_path_;
  // What the journal on the disk reaches up to.
  std::uint32_t nr_atoms_saved_ = 0;
  std::uint32_t nr_terms_saved_ = 0;
};

}  // namespace vek

#endif  // VEK_STORE_JOURNAL_H_

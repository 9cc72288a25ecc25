// The atom table: every word and compound that was ever reported, each known
// by a small dense number.
//
// Terms, profiles and statistics hold atom ids only; the text is found here.
// The table lies in the data directory as a text file, one atom a line, line k
// being atom k. An atom keeps its id for the life of the data directory, and a
// run only appends to the file.
#ifndef VEK_VOCABULARY_ATOMTAB_H_
#define VEK_VOCABULARY_ATOMTAB_H_

#include <cstdint>
#include <deque>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "vocabulary/idindex.h"
#include "vocabulary/tablefile.h"

namespace vek {

// No atom at all: the modifier of a term without one, and the end of a chain
// of terms. Never the id of a text.
inline constexpr std::uint32_t EmptyAtom = 0xFFFFFFFF;

class AtomTable {
 public:
  AtomTable() = default;
  AtomTable(const AtomTable &) = delete;
  AtomTable &operator=(const AtomTable &) = delete;

  // Names the table's file, of which nothing is held to be written yet.
  void set_file(const std::string &path);

  // The id of `text`, compared byte by byte. A new text gets the next id, so
  // ids follow the order of first entering, from 0 without gaps. `text` must
  // not be empty and must hold neither a line feed nor a zero byte, which the
  // file could not give back. Ends the run when all ids are used up.
  std::uint32_t enter(std::string_view text);

  // Sets `ids` to what enter() gives for each of `texts`, in their order. Takes
  // much less time for a large table than one call for each.
  void enter_all(std::span<const std::string_view> texts,
                 std::vector<std::uint32_t> &ids);

  // The text of an atom; valid for the life of the table. `atom_id` must be
  // below size().
  const std::string &text(std::uint32_t atom_id) const;

  // The number of atoms, which is also the id of the next new one.
  std::uint32_t size() const {
    return static_cast<std::uint32_t>(texts_.size());
  }
  std::uint32_t next_id() const { return size(); }
  bool empty() const { return texts_.empty(); }

  // How many atoms, counted from id 0, the file holds.
  std::uint32_t nr_written() const { return file_.nr_written(); }
  bool has_unwritten() const { return nr_written() < size(); }

  // Enters the content of a file in the empty table. Returns false if it is
  // damaged: an empty line, a line that was there before, a zero byte. The
  // table then holds the lines before that. A last line without its line end
  // counts.
  bool parse(std::string_view content);

  // Adds to `out` the line of the file that stands for an atom, whose id must
  // be below size().
  void append_line(std::string &out, std::uint32_t atom_id) const;

  // Loads the file into the empty table by parse(). The run ends with a report
  // if the file can't be read or is damaged.
  void read();

  // Appends the atoms that the file does not hold yet, and logs how many. The
  // file is created even if there are none. Ends the run with a report if
  // that fails.
  void write();

 private:
  // An atom in the index. Most texts are so short that all of them is here, and
  // a search need not look at the text itself, which lies somewhere else.
  struct Slot {
    explicit Slot(std::string_view text);
    Slot() = default;

    bool is_free() const { return id == EmptyAtom; }
    std::uint64_t hash() const;

    std::uint32_t id = EmptyAtom;
    std::uint32_t text_hash = 0;
    // The first 15 bytes, with zeros behind the end of a shorter text, and the
    // length, 16 for all longer ones; as two numbers, which compare quickly.
    std::uint64_t start = 0;
    std::uint64_t rest = 0;
  };

  std::uint32_t enter(std::string_view text, Slot slot);

  // A deque, because the references handed out must outlive its growth.
  std::deque<std::string> texts_;
  IdIndex<Slot> index_;
  TableFile file_;
};

extern AtomTable atom_table;

}  // namespace vek

#endif  // VEK_VOCABULARY_ATOMTAB_H_

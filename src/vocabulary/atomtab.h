// The atom table: every word and compound that was ever reported, each known
// by a small dense number.
//
// Terms, profiles and statistics hold atom ids only; the text is found here.
// The table lies in the data directory as a text file, atoms.dat, one atom a
// line, line k being atom k. An atom keeps its id for the life of the data
// directory, and a run only appends to the file (store/tablefile.h).
#ifndef VEK_VOCABULARY_ATOMTAB_H_
#define VEK_VOCABULARY_ATOMTAB_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/failure.h"
#include "vocabulary/idindex.h"
#include "vocabulary/stringpool.h"

namespace vek {

// No atom at all: the modifier of a term without one, and the end of a chain
// of terms. Never the id of a text.
inline constexpr std::uint32_t EmptyAtom = 0xFFFFFFFF;

class AtomTable {
 public:
  // The pool holds the texts and must outlive the table.
  explicit AtomTable(StringPool &pool) : pool_(pool) {}
  AtomTable(const AtomTable &) = delete;
  AtomTable &operator=(const AtomTable &) = delete;

  // The id of `text`, compared byte by byte. A new text gets the next id, so
  // ids follow the order of first entering, from 0 without gaps. `text` must
  // not be empty and must hold neither a line feed nor a zero byte, which the
  // file could not give back. EmptyAtom when all ids are used up.
  std::uint32_t enter(std::string_view text);

  // The id of `text`, or EmptyAtom if it has none.
  std::uint32_t find(std::string_view text) const;

  // The text of an atom; valid for the life of the pool. `atom_id` must be
  // below size().
  std::string_view text(std::uint32_t atom_id) const;

  // The number of atoms, which is also the id of the next new one.
  std::uint32_t size() const {
    return static_cast<std::uint32_t>(texts_.size());
  }
  bool empty() const { return texts_.empty(); }

  // Enters the content of a file in the empty table. Returns false if it is
  // damaged: an empty line, a line that was there before, a zero byte. The
  // table then holds the lines before that. A last line without its line end
  // counts.
  bool parse(std::string_view content);
  // Where and why parse() has just refused that content.
  LineFault fault(std::string_view content) const;

  // Adds to `out` the line of the file that stands for an atom, whose id must
  // be below size().
  void append_line(std::string &out, std::uint32_t atom_id) const;

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

  const Slot *find_slot(std::string_view text, const Slot &slot) const;

  StringPool &pool_;
  std::vector<std::string_view> texts_;
  IdIndex<Slot> index_;
};

}  // namespace vek

#endif  // VEK_VOCABULARY_ATOMTAB_H_

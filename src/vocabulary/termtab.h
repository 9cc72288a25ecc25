// The term table: every pair of a head atom and a modifier atom, or head atom
// alone, that was ever counted, each known by a dense number.
//
// Profiles, statistics and classifiers count terms by that id. Like the atom
// table it lies in the data directory as a text file, terms.dat, to which a run
// only appends; a line holds the four numbers of a Term.
//
// The terms of one head form a chain through `next`, in ascending order of
// `mod`, so that the head alone stands last. Only the file shows the chains.
// Keeping them in order at each enter() would cost a walk along the chain, and
// common heads have tens of thousands of modifiers; so pairs are found by a
// hash, and the links are made for the whole table when they are asked for.
#ifndef VEK_VOCABULARY_TERMTAB_H_
#define VEK_VOCABULARY_TERMTAB_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/failure.h"
#include "vocabulary/atomtab.h"
#include "vocabulary/idindex.h"

namespace vek {

class TermTable {
 public:
  struct Term {
    std::uint32_t head;  // atom id, never EmptyAtom
    std::uint32_t mod;   // atom id, EmptyAtom for the head alone
    std::uint32_t id;    // the term's own id
    std::uint32_t next;  // next term of this head, EmptyAtom at the end
  };

  TermTable() = default;
  TermTable(const TermTable &) = delete;
  TermTable &operator=(const TermTable &) = delete;

  // The id of the pair. A new pair gets the next id, from 0 without gaps.
  // `head` must not be EmptyAtom; `mod` may be. EmptyAtom when all ids are
  // used up.
  std::uint32_t enter(std::uint32_t head, std::uint32_t mod);

  // The id of the pair, or EmptyAtom if it has none.
  std::uint32_t find(std::uint32_t head, std::uint32_t mod) const;

  // The term, with `next` as it stands after the last enter(). The reference is
  // good until the next enter(). After new pairs were entered, the first call
  // sorts the whole table; head() and mod() never do. `term_id` must be below
  // size().
  const Term &get_term(std::uint32_t term_id) const;
  std::uint32_t head(std::uint32_t term_id) const;
  std::uint32_t mod(std::uint32_t term_id) const;

  // The number of terms, which is also the id of the next new one.
  std::uint32_t size() const {
    return static_cast<std::uint32_t>(terms_.size());
  }
  bool empty() const { return terms_.empty(); }

  // Enters the content of a file in the empty table, for an atom table of
  // `nr_atoms` atoms. Of a line only head and modifier are used: the term's
  // place is its id, and the chain has grown since the line was written.
  // Returns false if the content is damaged: a line that is not four 32-bit
  // decimal numbers with one blank between them, a pair that was there before,
  // no head, or an atom that the atom table does not hold. The table then holds
  // the lines before that.
  bool parse(std::string_view content, std::uint32_t nr_atoms);
  // Where and why parse() has just refused that content.
  LineFault fault(std::string_view content, std::uint32_t nr_atoms) const;

  // Adds to `out` the line of the file that stands for a term, as get_term()
  // has it.
  void append_line(std::string &out, std::uint32_t term_id) const;

 private:
  struct Slot {
    bool is_free() const { return id == EmptyAtom; }
    std::uint64_t hash() const;

    std::uint64_t key = 0;  // the pair as one number
    std::uint32_t id = EmptyAtom;
  };

  void link() const;

  // The chains are made on demand, in const functions too.
  mutable std::vector<Term> terms_;
  mutable bool linked_ = true;
  IdIndex<Slot> index_;
};

}  // namespace vek

#endif  // VEK_VOCABULARY_TERMTAB_H_

#include "vocabulary/termtab.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <charconv>
#include <cstddef>
#include <system_error>

#include "base/textio.h"

namespace vek {
namespace {

// A pair as one number, whose order is that of head and then modifier.
// EmptyAtom is the largest modifier, so a head alone comes last.
constexpr std::uint64_t pair_key(std::uint32_t head, std::uint32_t mod) {
  return std::uint64_t{head} << 32 | mod;
}

// Takes a number off the front of `line`; false if there is none that fits.
bool take_number(std::string_view &line, std::uint32_t &value) {
  const char *const end_P = line.data() + line.size();
  // std::from_chars() takes no sign, no blank and no other base, and refuses a
  // number beyond 32 bits.
  const auto result = std::from_chars(line.data(), end_P, value);
  if (result.ec != std::errc())
    return false;
  line = std::string_view(result.ptr, end_P);
  return true;
}

bool take_blank(std::string_view &line) {
  if (!line.starts_with(' '))
    return false;
  line.remove_prefix(1);
  return true;
}

// Reads a whole line of the file into `term`.
bool parse_line(std::string_view line, TermTable::Term &term) {
  // All four must be numbers although two are not used: a line that vek cannot
  // have written is a sign of damage.
  return take_number(line, term.head) && take_blank(line) &&
         take_number(line, term.mod) && take_blank(line) &&
         take_number(line, term.id) && take_blank(line) &&
         take_number(line, term.next) && line.empty();
}

bool has_known_atoms(const TermTable::Term &term, std::uint32_t nr_atoms) {
  return term.head < nr_atoms && (term.mod < nr_atoms || term.mod == EmptyAtom);
}

}  // namespace

// The last step of MurmurHash3: every bit of the pair reaches the upper ones.
std::uint64_t TermTable::Slot::hash() const {
  std::uint64_t bits = key;
  bits = (bits ^ bits >> 33) * 0xFF51AFD7ED558CCD;
  return (bits ^ bits >> 33) * 0xC4CEB9FE1A85EC53;
}

std::uint32_t TermTable::enter(std::uint32_t head, std::uint32_t mod) {
  assert(head != EmptyAtom);
  // With the id that it gets if it is new.
  const Slot slot = {pair_key(head, mod), size()};
  const Slot *const found_P = index_.find(
      slot.hash(), [&](const Slot &other) { return slot.key == other.key; });
  if (found_P != nullptr)
    return found_P->id;
  if (slot.id == EmptyAtom)
    return EmptyAtom;
  // `next` is a placeholder until link().
  terms_.push_back({head, mod, slot.id, EmptyAtom});
  linked_ = false;
  index_.insert(slot);
  return slot.id;
}

std::uint32_t TermTable::find(std::uint32_t head, std::uint32_t mod) const {
  const Slot slot = {pair_key(head, mod), EmptyAtom};
  const Slot *const found_P = index_.find(
      slot.hash(), [&](const Slot &other) { return slot.key == other.key; });
  return found_P == nullptr ? EmptyAtom : found_P->id;
}

const TermTable::Term &TermTable::get_term(std::uint32_t term_id) const {
  assert(term_id < size());
  link();
  return terms_[term_id];
}

std::uint32_t TermTable::head(std::uint32_t term_id) const {
  assert(term_id < size());
  return terms_[term_id].head;
}

std::uint32_t TermTable::mod(std::uint32_t term_id) const {
  assert(term_id < size());
  return terms_[term_id].mod;
}

// Rebuilds all chains. In the order of the pairs the terms of a head stand one
// behind the other. No two keys are equal, so the order is the same with any
// sort.
void TermTable::link() const {
  if (linked_)
    return;
  // Key and id side by side, so that the sort reads one array from front to
  // back and not the terms at random.
  struct Place {
    std::uint64_t key;
    std::uint32_t id;
  };
  std::vector<Place> places;
  places.reserve(terms_.size());
  for (const Term &term : terms_) {
    places.push_back({pair_key(term.head, term.mod), term.id});
  }
  std::ranges::sort(places, {}, &Place::key);
  Term *previous_P = nullptr;
  for (const Place &place : places) {
    Term &term = terms_[place.id];
    term.next = EmptyAtom;
    if (previous_P != nullptr && previous_P->head == term.head) {
      previous_P->next = term.id;
    }
    previous_P = &term;
  }
  linked_ = true;
}

bool TermTable::parse(std::string_view content, std::uint32_t nr_atoms) {
  assert(empty());
  const std::size_t nr_lines = count_lines(content);
  if (nr_lines >= EmptyAtom)
    return false;
  terms_.reserve(nr_lines);
  index_.reserve(nr_lines);
  std::array<Term, search_batch> batch = {};
  bool is_good = true;
  while (is_good && !content.empty()) {
    std::size_t nr_read = 0;
    std::string_view line;
    // As for the atoms: ask for the slots of a batch, then use them.
    while (nr_read < batch.size() && take_line(content, line)) {
      Term &term = batch[nr_read];
      is_good = parse_line(line, term) && has_known_atoms(term, nr_atoms);
      if (!is_good)
        break;
      index_.prefetch(Slot{pair_key(term.head, term.mod), 0}.hash());
      ++nr_read;
    }
    // Also after a bad line: the lines before it are entered, so that the size
    // of the table tells where the damage is.
    for (std::size_t i = 0; i < nr_read; ++i) {
      const std::uint32_t next_id = size();
      if (enter(batch[i].head, batch[i].mod) != next_id)
        return false;
    }
  }
  return is_good;
}

LineFault TermTable::fault(std::string_view content,
                           std::uint32_t nr_atoms) const {
  Term term = {};
  const bool is_line = parse_line(line_at(content, size()), term);
  const bool is_there =
      is_line &&
      index_.find(Slot{pair_key(term.head, term.mod), 0}.hash(),
                  [&](const Slot &other) {
                    return other.key == pair_key(term.head, term.mod);
                  }) != nullptr;
  return {std::size_t{size()} + 1, !is_line ? "the line is not four numbers"
                                   : !has_known_atoms(term, nr_atoms)
                                       ? "there is no such atom"
                                   : is_there ? "the term was there before"
                                              : "there are too many lines"};
}

void TermTable::append_line(std::string &out, std::uint32_t term_id) const {
  const Term &term = get_term(term_id);
  append_number(out, term.head);
  out += ' ';
  append_number(out, term.mod);
  out += ' ';
  append_number(out, term.id);
  out += ' ';
  append_number(out, term.next);
  out += '\n';
}

}  // namespace vek

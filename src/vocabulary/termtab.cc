#include "vocabulary/termtab.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <charconv>
#include <cstddef>
#include <numeric>
#include <system_error>

#include "run/log.h"
#include "run/textio.h"

namespace vek {
namespace {

// Lines that are searched for together: each search waits for memory.
constexpr std::size_t batch_size = 16;

// A pair as one number, whose order is that of head and then modifier.
constexpr std::uint64_t pair_key(std::uint32_t head, std::uint32_t mod) {
  return std::uint64_t{head} << 32 | mod;
}

// Takes a number off the front of `line`; false if there is none that fits.
bool take_number(std::string_view &line, std::uint32_t &value) {
  const char *const end_P = line.data() + line.size();
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
  return take_number(line, term.head) && take_blank(line) &&
         take_number(line, term.mod) && take_blank(line) &&
         take_number(line, term.id) && take_blank(line) &&
         take_number(line, term.next) && line.empty();
}

bool has_known_atoms(const TermTable::Term &term) {
  const std::uint32_t nr_atoms = atom_table.size();
  return term.head < nr_atoms && (term.mod < nr_atoms || term.mod == EmptyAtom);
}

}  // namespace

void TermTable::set_file(const std::string &path) {
  file_.set_name(path);
}

// The last step of MurmurHash3: every bit of the pair reaches the upper ones.
std::uint64_t TermTable::Slot::hash() const {
  std::uint64_t bits = key;
  bits = (bits ^ bits >> 33) * 0xFF51AFD7ED558CCD;
  return (bits ^ bits >> 33) * 0xC4CEB9FE1A85EC53;
}

std::uint32_t TermTable::enter(std::uint32_t head, std::uint32_t mod) {
  assert(head != EmptyAtom);
  Slot slot = {pair_key(head, mod), size()};
  const Slot *const found_P = index_.find(
      slot.hash(), [&](const Slot &other) { return slot.key == other.key; });
  if (found_P != nullptr)
    return found_P->id;
  create_term(head, mod);
  index_.insert(slot);
  return slot.id;
}

void TermTable::create_term(std::uint32_t head, std::uint32_t mod) {
  if (size() == EmptyAtom) {
    error("no more terms can be numbered");
    abort_run();
  }
  terms_.push_back({head, mod, size(), EmptyAtom});
  linked_ = false;
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

std::uint32_t TermTable::first_of_head(std::uint32_t head) const {
  link();
  const auto place = std::ranges::lower_bound(
      chains_, head, {}, [this](std::uint32_t id) { return terms_[id].head; });
  const bool found = place != chains_.end() && terms_[*place].head == head;
  return found ? *place : EmptyAtom;
}

// Makes all chains anew: in the order of the pairs they stand one behind the
// other.
void TermTable::link() const {
  if (linked_)
    return;
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
  chains_.clear();
  Term *previous_P = nullptr;
  for (const Place &place : places) {
    Term &term = terms_[place.id];
    term.next = EmptyAtom;
    if (previous_P != nullptr && previous_P->head == term.head) {
      previous_P->next = term.id;
    } else {
      chains_.push_back(term.id);
    }
    previous_P = &term;
  }
  linked_ = true;
}

bool TermTable::parse(std::string_view content) {
  assert(empty());
  const std::size_t nr_lines = count_lines(content);
  if (nr_lines >= EmptyAtom)
    return false;
  terms_.reserve(nr_lines);
  index_.reserve(nr_lines);
  while (!content.empty()) {
    if (!add_lines(content))
      return false;
  }
  return true;
}

// Returns false if the line is none that write() leaves.
bool TermTable::add_lines(std::string_view &content) {
  std::array<Term, batch_size> batch = {};
  std::size_t nr_lines = 0;
  std::string_view line;
  while (nr_lines < batch.size() && take_line(content, line)) {
    Term &term = batch[nr_lines++];
    if (!parse_line(line, term) || !has_known_atoms(term))
      return false;
    index_.prefetch(Slot{pair_key(term.head, term.mod), 0}.hash());
  }
  const std::size_t nr_before = size();
  for (std::size_t i = 0; i < nr_lines; ++i)
    enter(batch[i].head, batch[i].mod);
  return size() == nr_before + nr_lines;
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

void TermTable::read() {
  if (!parse(file_.load()))
    file_.reject();
  file_.accept(size());
}

void TermTable::write() {
  file_.append(size(), "terms", [this](std::string &out, std::uint32_t id) {
    append_line(out, id);
  });
}

}  // namespace vek

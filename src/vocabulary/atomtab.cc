#include "vocabulary/atomtab.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
#include <cstring>
#include <functional>

#include "base/textio.h"

namespace vek {
namespace {

// The bytes of a text that a slot holds. Its 16th byte is the length, which
// tells a text that fits from a longer one that begins with it.
constexpr std::size_t longest_in_slot = 15;

}  // namespace

// The slot lacks the id.
AtomTable::Slot::Slot(std::string_view text)
    // std::hash differs between libraries. Ids follow the order of entering, so
    // nothing that is written depends on it.
    : text_hash(
          static_cast<std::uint32_t>(std::hash<std::string_view>()(text))) {
  std::array<char, longest_in_slot + 1> bytes{};
  std::memcpy(bytes.data(), text.data(),
              std::min(text.size(), longest_in_slot));
  // Copied as bytes, in the machine's own order: the two numbers are compared
  // for equality only, and never leave the process.
  bytes.back() = static_cast<char>(std::min(text.size(), bytes.size()));
  std::memcpy(&start, bytes.data(), sizeof start);
  std::memcpy(&rest, bytes.data() + sizeof start, sizeof rest);
}

// Fibonacci hashing: brings 32 well mixed bits to the upper end of 64.
std::uint64_t AtomTable::Slot::hash() const {
  return text_hash * std::uint64_t{0x9E3779B97F4A7C15};
}

// `slot` is that of `text`. Null if the text is not there. For a text that fits
// into the slot, equal slots are equal texts; only a longer one must be
// compared in full, which costs a second wait for memory.
const AtomTable::Slot *AtomTable::find_slot(std::string_view text,
                                            const Slot &slot) const {
  return index_.find(slot.hash(), [&](const Slot &other) {
    return slot.text_hash == other.text_hash && slot.start == other.start &&
           slot.rest == other.rest &&
           (text.size() <= longest_in_slot || texts_[other.id] == text);
  });
}

std::uint32_t AtomTable::enter(std::string_view text) {
  assert(!text.empty());
  Slot slot(text);
  const Slot *const found_P = find_slot(text, slot);
  if (found_P != nullptr)
    return found_P->id;
  // The last number means "no atom" and can be no id.
  if (size() == EmptyAtom)
    return EmptyAtom;
  slot.id = size();
  texts_.push_back(pool_.copy(text));
  index_.insert(slot);
  return slot.id;
}

std::uint32_t AtomTable::find(std::string_view text) const {
  const Slot *const found_P = find_slot(text, Slot(text));
  return found_P == nullptr ? EmptyAtom : found_P->id;
}

std::string_view AtomTable::text(std::uint32_t atom_id) const {
  assert(atom_id < size());
  return texts_[atom_id];
}

bool AtomTable::parse(std::string_view content) {
  assert(empty());
  // No atom holds a zero byte: analysis text ends at the first one.
  const std::size_t zero = content.find('\0');
  const bool is_good = zero == std::string_view::npos;
  if (!is_good)
    content = content.substr(0, content.rfind('\n', zero) + 1);
  const std::size_t nr_lines = count_lines(content);
  // Counted first, so that neither array is copied while it grows, and a file
  // with more lines than ids is refused before memory is taken.
  if (nr_lines >= EmptyAtom)
    return false;
  texts_.reserve(nr_lines);
  index_.reserve(nr_lines);
  std::array<std::string_view, search_batch> lines;
  while (!content.empty()) {
    // The slots of a whole batch are asked for before the first is used.
    // Hashing each line twice is cheaper than waiting for memory once a line.
    std::size_t nr_read = 0;
    while (nr_read < lines.size() && take_line(content, lines[nr_read]))
      index_.prefetch(Slot(lines[nr_read++]).hash());
    for (std::size_t i = 0; i < nr_read; ++i) {
      const std::uint32_t next_id = size();
      // A line that was there before gets its earlier id. Accepted, it would
      // shift the ids of all lines behind it.
      if (lines[i].empty() || enter(lines[i]) != next_id)
        return false;
    }
  }
  return is_good;
}

LineFault AtomTable::fault(std::string_view content) const {
  const std::string_view line = line_at(content, size());
  const bool has_zero = line.find('\0') != std::string_view::npos;
  return {std::size_t{size()} + 1, line.empty() ? "the line is empty"
                                   : has_zero   ? "there is a NUL byte"
                                   : find(line) == EmptyAtom
                                       ? "there are too many lines"
                                       : "the atom was there before"};
}

void AtomTable::append_line(std::string &out, std::uint32_t atom_id) const {
  out += text(atom_id);
  out += '\n';
}

}  // namespace vek

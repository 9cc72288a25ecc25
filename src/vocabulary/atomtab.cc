#include "vocabulary/atomtab.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
#include <cstring>
#include <functional>

#include "run/log.h"

namespace vek {
namespace {

// The bytes of a text that a slot holds; its last byte is the length.
constexpr std::size_t longest_in_slot = 15;

// Searches that wait for memory together. More than the processor can have
// under way at once is of no use.
constexpr std::size_t batch_size = 16;

}  // namespace

// The slot lacks the id.
AtomTable::Slot::Slot(std::string_view text)
    : text_hash(
          static_cast<std::uint32_t>(std::hash<std::string_view>()(text))) {
  std::array<char, longest_in_slot + 1> bytes{};
  std::memcpy(bytes.data(), text.data(),
              std::min(text.size(), longest_in_slot));
  bytes.back() = static_cast<char>(std::min(text.size(), bytes.size()));
  std::memcpy(&start, bytes.data(), sizeof start);
  std::memcpy(&rest, bytes.data() + sizeof start, sizeof rest);
}

// Fibonacci hashing: brings 32 well mixed bits to the upper end of 64.
std::uint64_t AtomTable::Slot::hash() const {
  return text_hash * std::uint64_t{0x9E3779B97F4A7C15};
}

void AtomTable::set_file(const std::string &path) {
  file_.set_name(path);
}

std::uint32_t AtomTable::enter(std::string_view text) {
  return enter(text, Slot(text));
}

void AtomTable::enter_all(std::span<const std::string_view> texts,
                          std::vector<std::uint32_t> &ids) {
  ids.clear();
  std::array<Slot, batch_size> slots;
  while (!texts.empty()) {
    const auto batch = texts.first(std::min(batch_size, texts.size()));
    for (std::size_t i = 0; i < batch.size(); ++i) {
      slots[i] = Slot(batch[i]);
      index_.prefetch(slots[i].hash());
    }
    for (std::size_t i = 0; i < batch.size(); ++i) {
      ids.push_back(enter(batch[i], slots[i]));
    }
    texts = texts.subspan(batch.size());
  }
}

// `slot` is that of `text`.
std::uint32_t AtomTable::enter(std::string_view text, Slot slot) {
  assert(!text.empty());
  const Slot *const found_P = index_.find(slot.hash(), [&](const Slot &other) {
    return slot.text_hash == other.text_hash && slot.start == other.start &&
           slot.rest == other.rest &&
           (text.size() <= longest_in_slot || texts_[other.id] == text);
  });
  if (found_P != nullptr)
    return found_P->id;
  if (size() == EmptyAtom) {
    error("no more atoms can be numbered");
    abort_run();
  }
  slot.id = size();
  texts_.emplace_back(text);
  index_.insert(slot);
  return slot.id;
}

const std::string &AtomTable::text(std::uint32_t atom_id) const {
  assert(atom_id < size());
  return texts_[atom_id];
}

bool AtomTable::parse(std::string_view content) {
  assert(empty());
  // No atom holds a zero byte: analysis text ends at the first one.
  if (content.find('\0') != std::string_view::npos)
    return false;
  const std::size_t nr_lines = count_lines(content);
  if (nr_lines >= EmptyAtom)
    return false;
  index_.reserve(nr_lines);
  std::array<std::string_view, batch_size> lines;
  std::vector<std::uint32_t> ids;
  while (!content.empty()) {
    std::size_t nr_read = 0;
    while (nr_read < lines.size() && take_line(content, lines[nr_read])) {
      if (lines[nr_read++].empty())
        return false;
    }
    const std::size_t nr_before = size();
    enter_all(std::span(lines).first(nr_read), ids);
    if (size() != nr_before + nr_read)
      return false;
  }
  return true;
}

void AtomTable::append_line(std::string &out, std::uint32_t atom_id) const {
  out += text(atom_id);
  out += '\n';
}

void AtomTable::read() {
  if (!parse(file_.load()))
    file_.reject();
  file_.accept(size());
}

void AtomTable::write() {
  file_.append(size(), "atoms", [this](std::string &out, std::uint32_t id) {
    append_line(out, id);
  });
}

}  // namespace vek

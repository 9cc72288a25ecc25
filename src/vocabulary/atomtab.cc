#include "vocabulary/atomtab.h"

#include <cassert>

#include "run/log.h"

namespace vek {

void AtomTable::set_file(const std::string &path) {
  file_.set_name(path);
}

std::uint32_t AtomTable::enter(std::string_view text) {
  assert(!text.empty());
  const auto place = ids_.find(text);
  if (place != ids_.end())
    return place->second;
  if (size() == EmptyAtom) {
    error("no more atoms can be numbered");
    abort_run();
  }
  const std::uint32_t id = size();
  add(text);
  return id;
}

const std::string &AtomTable::text(std::uint32_t atom_id) const {
  assert(atom_id < size());
  return texts_[atom_id];
}

// Returns whether `text` is new. If it is not, the table is of no use any more.
bool AtomTable::add(std::string_view text) {
  const std::uint32_t id = size();
  const std::string &stored = texts_.emplace_back(text);
  return ids_.emplace(stored, id).second;
}

void AtomTable::read() {
  assert(empty());
  const std::string content = file_.load();
  // No atom holds a zero byte: analysis text ends at the first one.
  if (content.find('\0') != std::string::npos)
    file_.reject();
  const std::size_t nr_lines = count_lines(content);
  if (nr_lines >= EmptyAtom)
    file_.reject();
  ids_.reserve(nr_lines);
  std::string_view rest = content;
  std::string_view line;
  while (take_line(rest, line)) {
    if (line.empty() || !add(line))
      file_.reject();
  }
  file_.accept(size());
}

void AtomTable::write() {
  file_.append(size(), "atoms", [this](std::string &out, std::uint32_t id) {
    out += texts_[id];
    out += '\n';
  });
}

}  // namespace vek

#include "classes/classprof.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

#include "base/textio.h"

namespace vek {
namespace {

// Beyond this many terms the table grows by itself as terms come. The expected
// number comes from a file, which may claim anything.
constexpr std::size_t largest_preparation = 4096;

// Text is handed to the stream in pieces of about this size.
constexpr std::size_t piece_size = 65536;

void append_entry(std::string &out, const ClassProfile::Slot &slot,
                  ProfileColumns columns) {
  append_number(out, slot.term);
  out += '\t';
  append_number(out, slot.entry.tf);
  out += '\t';
  append_number(out, slot.entry.df);
  out += '\t';
  if (columns == ProfileColumns::updates) {
    append_number(out, slot.entry.promotions);
    out += '\t';
    append_number(out, slot.entry.demotions);
    out += '\t';
  } else if (columns == ProfileColumns::weight) {
    append_real(out, slot.entry.pos_weight);
    out += '\t';
  } else if (columns == ProfileColumns::exact_weight) {
    append_exact_real(out, slot.entry.pos_weight);
    out += '\t';
  }
  out += '\n';
}

bool read_entry(FieldReader &fields, std::uint32_t &term,
                ClassProfileEntry &entry, ProfileColumns columns) {
  if (!fields.read(term) || !fields.read(entry.tf) || !fields.read(entry.df))
    return false;
  if (columns == ProfileColumns::updates)
    return fields.read(entry.promotions) && fields.read(entry.demotions);
  return columns == ProfileColumns::frequencies ||
         fields.read(entry.pos_weight);
}

}  // namespace

std::uint32_t ClassProfile::tf(std::uint32_t term) const {
  const ClassProfileEntry *entry_P = find(term);
  return entry_P == nullptr ? 0 : entry_P->tf;
}

std::uint32_t ClassProfile::df(std::uint32_t term) const {
  const ClassProfileEntry *entry_P = find(term);
  return entry_P == nullptr ? 0 : entry_P->df;
}

ClassProfileEntry &ClassProfile::operator[](std::uint32_t term) {
  // A new term goes to the end. If terms come in ascending order, as they do
  // from files and from term selection, nothing ever needs to be sorted.
  const std::uint32_t place =
      places_.find_or_insert(term, static_cast<std::uint32_t>(slots_.size()));
  if (place == slots_.size()) {
    if (!slots_.empty() && slots_.back().term > term)
      arranged_ = false;
    slots_.push_back({term, {}});
  }
  return slots_[place].entry;
}

void ClassProfile::erase(std::uint32_t term) {
  const std::uint32_t hole = places_.find(term);
  if (hole == TermMap::nowhere)
    return;
  places_.erase(term);
  // The last slot fills the hole, so that erasing takes no longer in a large
  // profile.
  if (hole + 1 != slots_.size()) {
    slots_[hole] = slots_.back();
    places_.set(slots_[hole].term, hole);
    arranged_ = false;
  }
  slots_.pop_back();
}

void ClassProfile::reserve(std::size_t nr_entries, std::uint32_t largest_term) {
  slots_.reserve(nr_entries);
  places_.expect(nr_entries, largest_term);
}

void ClassProfile::prepare(std::size_t nr_expected) {
  const std::size_t room = std::min(nr_expected / 2, largest_preparation);
  if (room > slots_.size())
    slots_.reserve(room);
}

void ClassProfile::arrange() const {
  if (arranged_)
    return;
  // Each term occurs once, so any sort gives the same order.
  std::sort(slots_.begin(), slots_.end(),
            [](const Slot &a, const Slot &b) { return a.term < b.term; });
  for (std::size_t place = 0; place < slots_.size(); ++place) {
    places_.set(slots_[place].term, static_cast<std::uint32_t>(place));
  }
  arranged_ = true;
}

ClassProfile::iterator ClassProfile::begin() {
  arrange();
  return slots_.begin();
}

ClassProfile::const_iterator ClassProfile::begin() const {
  arrange();
  return slots_.cbegin();
}

void ClassProfile::set_init_weights(WeightType pos, WeightType neg) {
  init_pos_weight_ = pos;
  init_neg_weight_ = neg;
}

bool ClassProfile::write(std::ostream &os, std::uint32_t nr_terms,
                         ProfileColumns columns) const {
  std::string text;
  append_number(text, size());
  text += '\t';
  append_number(text, nr_terms);
  text += '\t';
  if (columns == ProfileColumns::exact_weight) {
    append_exact_real(text, threshold_);
    text += '\t';
    append_exact_real(text, bias_);
  } else {
    append_real(text, threshold_);
  }
  text += '\n';
  for (const Slot &slot : *this) {
    append_entry(text, slot, columns);
    if (text.size() < piece_size)
      continue;
    if (!os.write(text.data(), std::ssize(text)))
      return false;
    text.clear();
  }
  os.write(text.data(), std::ssize(text));
  return os.good();
}

bool ClassProfile::parse(std::string_view text, std::uint32_t &nr_terms,
                         ProfileColumns columns, std::uint64_t nr_known_terms,
                         LineFault &fault) {
  FieldReader fields(text);
  const auto refuse = [&](std::string reason) {
    const std::string_view read =
        text.substr(0, text.size() - fields.rest().size());
    const auto nr_ends =
        static_cast<std::size_t>(std::ranges::count(read, '\n'));
    fault = {nr_ends + 1, std::move(reason)};
    return false;
  };
  std::uint32_t nr_entries = 0;
  if (!fields.read(nr_entries) || !fields.read(nr_terms) ||
      !fields.read(threshold_)) {
    return refuse("it is no head of a class profile");
  }
  if (columns == ProfileColumns::exact_weight) {
    WeightType bias = 0.0;
    if (!fields.read(bias))
      return refuse("it is no head of a class profile");
    set_bias(bias);
  }
  prepare(nr_entries);
  for (std::uint32_t i = 0; i < nr_entries; ++i) {
    std::uint32_t term = 0;
    ClassProfileEntry entry;
    if (!read_entry(fields, term, entry, columns))
      return refuse("an entry is damaged or missing");
    if (term >= nr_known_terms)
      return refuse("term " + std::to_string(term) + " is not known");
    // A term that comes twice would leave fewer entries than the file says.
    if (find(term) != nullptr)
      return refuse("term " + std::to_string(term) + " was there before");
    (*this)[term] = entry;
  }
  return fields.at_end() || refuse("there is more than the entries");
}

bool ClassProfile::parse(std::string_view text, std::uint32_t &nr_terms,
                         ProfileColumns columns) {
  LineFault ignored;
  return parse(text, nr_terms, columns, std::uint64_t{1} << 32, ignored);
}

}  // namespace vek

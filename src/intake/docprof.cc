#include "intake/docprof.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <limits>

#include "classes/classtab.h"
#include "classes/termset.h"
#include "params/params.h"
#include "run/bytes.h"

namespace vek {
namespace {

constexpr std::size_t entry_size = 8;

WeightType strength(std::uint32_t freq) {
  // No text counts a term 0 times, but a stored block may say so, and its
  // logarithm would spoil all sums.
  if (freq == 0)
    return 0.0;
  switch (params.strength()) {
    case Strength::freq:
      break;
    case Strength::boolean:
      return 1.0;
    case Strength::sqrt:
      return std::sqrt(static_cast<double>(freq));
    case Strength::ltc:
      return std::log(static_cast<double>(freq)) + 1.0;
  }
  return static_cast<double>(freq);
}

// ln(N / df), of 0 < df. Few document frequencies serve many terms, so those
// against the N of the call before are kept.
double inverse_document_frequency(std::uint32_t nr_docs, std::uint32_t df) {
  constexpr std::size_t nr_kept = 8192;
  static std::uint32_t known_nr_docs = 0;
  static std::vector<double> known;
  const double quotient = double(nr_docs) / df;
  if (df >= nr_kept)
    return std::log(quotient);
  if (nr_docs != known_nr_docs || known.empty()) {
    known.assign(nr_kept, std::numeric_limits<double>::quiet_NaN());
    known_nr_docs = nr_docs;
  }
  double &value = known[df];
  if (std::isnan(value))
    value = std::log(quotient);
  return value;
}

// Relative frequency in thousandths, rounded; an exact half stays down.
std::uint32_t thousandths(std::uint32_t freq, std::uint32_t total) {
  if (total == 0)
    return 0;
  const double exact =
      static_cast<double>(freq) / static_cast<double>(total) * 1000.0;
  // A total that has wrapped makes shares beyond 32 bits; they wrap too.
  auto rounded = static_cast<std::uint64_t>(exact);
  if (exact - static_cast<double>(rounded) > 0.5)
    ++rounded;
  return static_cast<std::uint32_t>(rounded);
}

}  // namespace

void DocProfile::add_term(std::uint32_t term, std::uint32_t freq) {
  entries_.push_back({term, freq, 0.0});
  total_ += freq;
}

void DocProfile::clear() {
  entries_.clear();
  total_ = 0;
}

bool DocProfile::write(std::string &block) const {
  block.clear();
  block.reserve(entry_size * entries_.size() + 4);
  append_uint32(block, static_cast<std::uint32_t>(entries_.size()));
  for (const DocProfileEntry &entry : entries_) {
    append_uint32(block, entry.term);
    append_uint32(block, entry.freq);
  }
  return true;
}

bool DocProfile::read(const void *contents, unsigned len) {
  // The stored form's sizes have four bytes, whatever this machine's have.
  using size_t = std::uint32_t;
  assert(contents);
  assert(len >= sizeof(size_t));
  const auto *byte_P = static_cast<const unsigned char *>(contents);
  const std::uint32_t nr_entries = get_uint32(byte_P);
  if (std::uint64_t{nr_entries} * entry_size + 4 != len)
    return false;
  const std::size_t nr_before = entries_.size();
  entries_.resize(nr_before + nr_entries);
  const unsigned char *entry_P = byte_P + 4;
  std::uint32_t sum = 0;
  for (std::size_t i = nr_before; i < entries_.size(); ++i) {
    const std::uint32_t freq = get_uint32(entry_P + 4);
    entries_[i] = {get_uint32(entry_P), freq, 0.0};
    sum += freq;
    entry_P += entry_size;
  }
  total_ += sum;
  return true;
}

void DocProfile::weigh(std::uint32_t class_id) {
  ClassData &data = class_table.get_data(class_id);
  // Kept from call to call, so that scoring does not allocate.
  static std::vector<ClassProfileEntry *> class_entries;
  class_entries.resize(entries_.size());
  ClassProfileEntry **place_P = class_entries.data();
  for (DocProfileEntry &entry : entries_) {
    ClassProfileEntry *class_entry_P = data.profile.find(entry.term);
    *place_P++ = class_entry_P;
    const std::uint32_t df = class_entry_P == nullptr ? 0 : class_entry_P->df;
    // Without documents there is no mean to compare with: ln(0) is no weight.
    entry.weight = df == 0 || data.nr_docs == 0
                       ? 0.0
                       : inverse_document_frequency(data.nr_docs, df) *
                             strength(entry.freq);
  }
  const WeightType divisor = normaliser();
  const bool divide = params.normalize() != Normalize::off;
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    WeightType &weight = entries_[i].weight;
    if (divide)
      weight = divisor == 0.0 ? 0.0 : weight / divisor;
    if (class_entries[i] != nullptr)
      class_entries[i]->weight += weight;
  }
}

// What the weights are to be divided by, if they are to be normalised.
WeightType DocProfile::normaliser() const {
  WeightType sum = 0.0;
  switch (params.normalize()) {
    case Normalize::off:
      break;
    case Normalize::linear:
      for (const DocProfileEntry &entry : entries_)
        sum += entry.weight;
      break;
    case Normalize::vector:
      for (const DocProfileEntry &entry : entries_) {
        sum += entry.weight * entry.weight;
      }
      sum = std::sqrt(sum);
      break;
  }
  return sum;
}

void DocProfile::update_statistics(ClassData &data) const {
  // Most terms occur once.
  const std::uint32_t share_of_one = thousandths(1, total_);
  for (const DocProfileEntry &entry : entries_) {
    const std::uint32_t share =
        entry.freq == 1 ? share_of_one : thousandths(entry.freq, total_);
    TermStats &stats = data.term_stats[entry.term];
    stats.tf += entry.freq;
    ++stats.df;
    stats.sum += share;
    stats.sum_of_squares += share * share;
  }
  data.nr_terms += total_;
}

template <class Keep>
void DocProfile::filter(Keep keep) {
  std::size_t nr_kept = 0;
  total_ = 0;
  for (const DocProfileEntry &entry : entries_) {
    if (!keep(entry.term))
      continue;
    total_ += entry.freq;
    entries_[nr_kept++] = entry;
  }
  entries_.resize(nr_kept);
}

void DocProfile::select_active(const TermSet &active) {
  if (active.empty())
    return;
  filter([&](std::uint32_t term) { return active.contains(term); });
}

std::size_t DocProfile::drop_unknown(std::size_t nr_terms) {
  const auto is_known = [&](std::uint32_t term) { return term < nr_terms; };
  if (std::ranges::all_of(entries_, is_known, &DocProfileEntry::term))
    return 0;
  const std::size_t before = entries_.size();
  filter(is_known);
  return before - entries_.size();
}

}  // namespace vek

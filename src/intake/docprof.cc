#include "intake/docprof.h"

#include <algorithm>
#include <cmath>

#include "base/bytes.h"
#include "base/logarithm.h"
#include "base/require.h"

namespace vek {
namespace {

// Bytes of an entry of the stored form.
constexpr std::size_t entry_size = 8;

WeightType strength(std::uint32_t freq, Strength kind) {
  // No text counts a term 0 times, but a stored block may say so, and its
  // logarithm would spoil all sums.
  if (freq == 0)
    return 0.0;
  switch (kind) {
    case Strength::freq:
      break;
    case Strength::boolean:
      return 1.0;
    case Strength::sqrt:
      return std::sqrt(static_cast<double>(freq));
    case Strength::ltc:
      return natural_logarithm(static_cast<double>(freq)) + 1.0;
  }
  return static_cast<double>(freq);
}

// Relative frequency in thousandths, rounded; an exact half stays down.
std::uint32_t thousandths(std::uint32_t freq, std::uint32_t total) {
  if (total == 0)
    return 0;
  // Not by std::round(), which takes a half up.
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
  require(contents != nullptr, "contents");
  require(len >= 4, "len >= sizeof(size_t)");
  const auto *byte_P = static_cast<const unsigned char *>(contents);
  const std::uint32_t nr_entries = get_uint32(byte_P);
  // In 64 bits, so that no count can wrap round to the right length.
  if (std::uint64_t{nr_entries} * entry_size + 4 != len)
    return false;
  const std::size_t nr_before = entries_.size();
  entries_.resize(nr_before + nr_entries);
  const unsigned char *entry_P = byte_P + 4;
  // The total is not stored: it follows from the entries, and wraps as
  // add_term() lets it wrap.
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

void DocProfile::weigh(const ClassData &data, const Params &params) {
  for (DocProfileEntry &entry : entries_) {
    const std::uint32_t df = data.profile.df(entry.term);
    // Without documents there is no mean to compare with: ln(0) is no weight.
    entry.weight = df == 0 || data.nr_docs == 0
                       ? 0.0
                       // Negative for a term in more documents than the class
                       // has in this run, which earlier statistics make
                       // possible.
                       : natural_logarithm(double(data.nr_docs) / df) *
                             strength(entry.freq, params.strength);
  }
  if (params.normalize == Normalize::off)
    return;
  // Over the entries in their order, as every sum of a document.
  const WeightType divisor = normaliser(params.normalize);
  for (DocProfileEntry &entry : entries_)
    // Also for the root of a sum of squares that are too small to be told from
    // 0.
    entry.weight = divisor == 0.0 ? 0.0 : entry.weight / divisor;
}

void DocProfile::weigh_and_add(ClassData &data, const Params &params) {
  weigh(data, params);
  for (const DocProfileEntry &entry : entries_) {
    ClassProfileEntry *const class_entry_P = data.profile.find(entry.term);
    if (class_entry_P != nullptr)
      class_entry_P->weight += entry.weight;
  }
}

// What the weights are to be divided by.
WeightType DocProfile::normaliser(Normalize kind) const {
  WeightType sum = 0.0;
  for (const DocProfileEntry &entry : entries_) {
    sum +=
        kind == Normalize::linear ? entry.weight : entry.weight * entry.weight;
  }
  return kind == Normalize::linear ? sum : std::sqrt(sum);
}

void DocProfile::update_statistics(TermStatsCollector &statistics) const {
  for (const DocProfileEntry &entry : entries_) {
    const std::uint32_t share = thousandths(entry.freq, total_);
    TermStats &stats = statistics[entry.term];
    stats.tf += entry.freq;
    ++stats.df;
    stats.sum += share;
    // In 32 bits: a share of 1000 leaves room for some 4000 documents.
    stats.sum_of_squares += share * share;
  }
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
  // Nothing has been selected, as in a run without training: all terms stay.
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

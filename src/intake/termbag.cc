#include "intake/termbag.h"

#include <algorithm>
#include <boost/sort/spreadsort/integer_sort.hpp>
#include <utility>

namespace vek {
namespace {

AtomPair pair_of(std::uint64_t key) {
  return {static_cast<std::uint32_t>(key >> 32),
          static_cast<std::uint32_t>(key)};
}

// Counts the sorted keys.
std::vector<TermBagEntry> count_keys(const std::vector<std::uint64_t> &keys) {
  std::vector<TermBagEntry> entries;
  for (std::size_t i = 0; i < keys.size(); ++i) {
    if (i == 0 || keys[i] != keys[i - 1])
      entries.push_back({pair_of(keys[i]), 0});
    ++entries.back().count;
  }
  return entries;
}

// Merges two sorted lists, adding up the counts of equal pairs.
std::vector<TermBagEntry> merge(const std::vector<TermBagEntry> &left,
                                const std::vector<TermBagEntry> &right) {
  std::vector<TermBagEntry> merged;
  merged.reserve(left.size() + right.size());
  auto place = left.begin();
  for (const TermBagEntry &entry : right) {
    while (place != left.end() && place->pair < entry.pair) {
      merged.push_back(*place++);
    }
    merged.push_back(entry);
    if (place != left.end() && place->pair == entry.pair) {
      merged.back().count += place++->count;
    }
  }
  merged.insert(merged.end(), place, left.end());
  return merged;
}

}  // namespace

// Sorts what was noted into the entries.
void TermBag::settle() const {
  if (pending_.empty())
    return;
  // A pair is one number while it waits, so that sorting needs no comparison of
  // structs; the numbers are ordered as the pairs are.
  boost::sort::spreadsort::integer_sort(pending_.begin(), pending_.end());
  std::vector<TermBagEntry> entries = count_keys(pending_);
  entries_ = entries_.empty() ? std::move(entries) : merge(entries_, entries);
  pending_.clear();
}

TermBag::const_iterator TermBag::begin() const {
  settle();
  return entries_.begin();
}

TermBag::const_iterator TermBag::end() const {
  settle();
  return entries_.end();
}

std::size_t TermBag::size() const {
  settle();
  return entries_.size();
}

std::uint32_t TermBag::count(const AtomPair &pair) const {
  settle();
  const auto place =
      std::ranges::lower_bound(entries_, pair, {}, &TermBagEntry::pair);
  return place != entries_.end() && place->pair == pair ? place->count : 0;
}

}  // namespace vek

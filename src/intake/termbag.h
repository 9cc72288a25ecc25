// What the analysis of one document comes to: how often each pair of head and
// modifier occurs in it.
#ifndef VEK_INTAKE_TERMBAG_H_
#define VEK_INTAKE_TERMBAG_H_

#include <compare>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace vek {

// Two atom ids; `mod` is EmptyAtom for a head alone. Ordered by head and then
// by modifier, so that a head alone comes behind all pairs of that head.
struct AtomPair {
  std::uint32_t head;
  std::uint32_t mod;

  friend auto operator<=>(const AtomPair &, const AtomPair &) = default;
};

struct TermBagEntry {
  AtomPair pair;
  std::uint32_t count;  // wraps at 32 bits

  friend bool operator==(const TermBagEntry &, const TermBagEntry &) = default;
};

// Behaves as a map from pair to count that is walked in the order of pairs.
// Pairs are only noted when they come; sorting them once, at the first access,
// is much cheaper than keeping a tree.
class TermBag {
 public:
  using const_iterator = std::vector<TermBagEntry>::const_iterator;

  // Counts `pair` once more. Iterators become invalid.
  void add(const AtomPair &pair) {
    pending_.push_back(std::uint64_t{pair.head} << 32 | pair.mod);
    if (pending_.size() >= max_pending + entries_.size())
      settle();
  }

  // The entries, each pair once, in ascending order.
  const_iterator begin() const;
  const_iterator end() const;

  // The number of different pairs.
  std::size_t size() const;
  bool empty() const { return pending_.empty() && entries_.empty(); }

  // How often `pair` was counted; 0 if never.
  std::uint32_t count(const AtomPair &pair) const;

 private:
  // Noted pairs are sorted into the entries at the latest when they are this
  // many more than the entries. So a pair that comes again and again takes no
  // room, and all sorting together stays in proportion to the pairs.
  static constexpr std::size_t max_pending = 65536;

  void settle() const;

  // Settled when the bag is looked at, in const functions too.
  mutable std::vector<TermBagEntry> entries_;   // sorted, each pair once
  mutable std::vector<std::uint64_t> pending_;  // pairs not yet in `entries_`
};

}  // namespace vek

#endif  // VEK_INTAKE_TERMBAG_H_

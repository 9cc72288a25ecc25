// A hash index from a key to its id, for tables that only grow: open addressing
// with linear probing, in one array of slots.
//
// A table of millions of keys does not fit into the processor's caches, and
// waiting for memory takes longer than all else that is done for a word. So a
// slot holds as much of the key as it can, and most searches touch one place in
// memory only. At two thirds full the array doubles, and is filled from front
// to back.
#ifndef VEK_VOCABULARY_IDINDEX_H_
#define VEK_VOCABULARY_IDINDEX_H_

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace vek {

// Lines of a file that are looked up together. The processor cannot have more
// reads than about this many under way at once.
inline constexpr std::size_t search_batch = 16;

// A Slot is a small struct whose default value means a free slot, for which its
// is_free() is true, and whose hash() spreads over the upper bits of 64.
template <typename Slot>
class IdIndex {
 public:
  // The slot with that hash for which `matches(slot)` is true, null if there is
  // none. Good until the next insert().
  template <typename Matches>
  const Slot *find(std::uint64_t hash, Matches matches) const {
    // This ends: a third of the slots is always free, and none is ever emptied,
    // so a run of used slots has no gap that would hide a key behind it.
    for (std::size_t i = home(hash); !slots_[i].is_free(); i = behind(i)) {
      if (matches(slots_[i]))
        return &slots_[i];
    }
    return nullptr;
  }

  // Puts in a slot whose key is not there yet.
  void insert(const Slot &slot) {
    if (nr_used_ >= most_used(slots_.size()))
      resize(2 * slots_.size());
    place(slot);
    ++nr_used_;
  }

  // Makes room for `nr_keys` keys in all.
  void reserve(std::size_t nr_keys) {
    std::size_t size = slots_.size();
    while (most_used(size) < nr_keys) {
      size *= 2;
    }
    if (size > slots_.size())
      resize(size);
  }

  // Starts to fetch the memory that find() with that hash will look at first.
  // Several searches that wait at the same time take hardly longer than one.
  void prefetch(std::uint64_t hash) const {
    __builtin_prefetch(&slots_[home(hash)]);
  }

 private:
  static constexpr unsigned first_size_bits = 10;

  // Linear probing slows down steeply where more slots are used: the runs of
  // used slots grow together.
  static constexpr std::size_t most_used(std::size_t size) {
    return size / 3 * 2;
  }

  // The upper bits, so that a walk over the old slots fills the new ones from
  // front to back when the index grows.
  std::size_t home(std::uint64_t hash) const { return hash >> shift_; }
  std::size_t behind(std::size_t i) const {
    return (i + 1) & (slots_.size() - 1);
  }

  void place(const Slot &slot) {
    std::size_t i = home(slot.hash());
    while (!slots_[i].is_free()) {
      i = behind(i);
    }
    slots_[i] = slot;
  }

  void resize(std::size_t size) {
    const std::vector<Slot> old =
        std::exchange(slots_, std::vector<Slot>(size));
    // `size` is a power of two; home() takes as many bits as it has.
    while (std::size_t{1} << (64 - shift_) < size) {
      --shift_;
    }
    for (const Slot &slot : old) {
      if (!slot.is_free())
        place(slot);
    }
  }

  std::vector<Slot> slots_ =
      std::vector<Slot>(std::size_t{1} << first_size_bits);
  // 64 less the number of bits of a place.
  unsigned shift_ = 64 - first_size_bits;
  std::size_t nr_used_ = 0;
};

}  // namespace vek

#endif  // VEK_VOCABULARY_IDINDEX_H_

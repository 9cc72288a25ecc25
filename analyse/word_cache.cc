#include "analyse/word_cache.h"

#include <algorithm>
#include <cstring>

namespace vek::analysis {
namespace {

// Measured with news text in English: the words that are missed take a tenth
// of the time at this size. A power of two, 20 bytes each.
constexpr std::size_t nr_slots = 1U << 15;
constexpr std::uint32_t most_words = nr_slots / 4 * 3;
constexpr std::uint32_t most_text_bytes = 512 * 1024;

// A search looks at no more slots than this.
constexpr std::size_t longest_search = 32;

std::uint64_t load(const char *from, std::size_t size) {
  std::uint64_t block = 0;
  std::memcpy(&block, from, size);
  return block;
}

std::uint64_t mixed(std::uint64_t hash, std::uint64_t block) {
  hash = (hash ^ block) * 0x9E3779B97F4A7C15U;
  return hash ^ (hash >> 32);
}

}  // namespace

WordCache::WordCache()
    : slots_(nr_slots), texts_(new char[most_text_bytes]) {}

std::uint32_t WordCache::hash_of(std::string_view raw) {
  constexpr std::size_t block_size = sizeof(std::uint64_t);
  std::uint64_t hash = raw.size();
  while (raw.size() > block_size) {
    hash = mixed(hash, load(raw.data(), block_size));
    raw.remove_prefix(block_size);
  }
  return static_cast<std::uint32_t>(mixed(hash, load(raw.data(), raw.size())));
}

bool WordCache::holds(const Slot &slot, std::uint32_t hash,
                      std::string_view raw) const {
  return slot.hash == hash && slot.raw_size == raw.size() &&
         std::memcmp(texts_.get() + slot.offset, raw.data(), raw.size()) == 0;
}

bool WordCache::find(std::string_view raw, Word &word) const {
  const std::uint32_t hash = hash_of(raw);
  for (std::size_t i = 0; i < longest_search; ++i) {
    const Slot &slot = slots_[(hash + i) % nr_slots];
    if (slot.raw_size == 0) return false;
    if (!holds(slot, hash, raw)) continue;
    word = {slot.kind, slot.function, slot.elided, slot.has_capital,
            {texts_.get() + slot.offset + slot.raw_size, slot.stem_size}};
    return true;
  }
  return false;
}

// The first free slot for `hash`, or the first of all if the search is over.
WordCache::Slot &WordCache::slot_for(std::uint32_t hash) {
  for (std::size_t i = 0; i < longest_search; ++i) {
    Slot &slot = slots_[(hash + i) % nr_slots];
    if (slot.raw_size == 0) return slot;
  }
  return slots_[hash % nr_slots];
}

void WordCache::insert(std::string_view raw, const Word &word) {
  const std::size_t size = raw.size() + word.stem.size();
  if (nr_words_ == most_words || nr_text_bytes_ + size > most_text_bytes) {
    clear();
  }
  const std::uint32_t hash = hash_of(raw);
  Slot &slot = slot_for(hash);
  slot = {hash,
          nr_text_bytes_,
          static_cast<std::uint8_t>(raw.size()),
          static_cast<std::uint8_t>(word.stem.size()),
          word.kind,
          word.function,
          word.elided,
          word.has_capital};
  raw.copy(texts_.get() + slot.offset, raw.size());
  word.stem.copy(texts_.get() + slot.offset + raw.size(), word.stem.size());
  nr_text_bytes_ += static_cast<std::uint32_t>(size);
  ++nr_words_;
}

void WordCache::clear() {
  std::fill(slots_.begin(), slots_.end(), Slot{});
  nr_text_bytes_ = 0;
  nr_words_ = 0;
}

}  // namespace vek::analysis

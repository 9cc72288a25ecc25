#include "analyse/word_cache.h"

#include <algorithm>
#include <cstring>

namespace vek::analysis {
namespace {

// Bytes for a word and its stem, on average more than any language needs.
constexpr std::size_t bytes_per_slot = 16;
// But at least so much that any one word finds room.
constexpr std::size_t least_bytes = 1024;

// A search looks at no more slots than this.
constexpr std::size_t longest_search = 32;

// The words are short, and calls to copy and compare them took a fifth of the
// time: so blocks of a fixed size, of which the last two may overlap.
template <typename Block>
Block load(const char *from) {
  Block block;
  std::memcpy(&block, from, sizeof block);
  return block;
}

constexpr std::size_t long_block = sizeof(std::uint64_t);
constexpr std::size_t short_block = sizeof(std::uint32_t);

// All of a word of at most long_block bytes, in a form of its own for each word
// of the same size.
std::uint64_t load_short_word(std::string_view word) {
  const char *begin = word.data();
  const std::size_t size = word.size();
  if (size >= short_block) {
    const std::uint64_t high = load<std::uint32_t>(begin + size - short_block);
    return load<std::uint32_t>(begin) | high << 32;
  }
  std::uint64_t block = 0;
  for (const char c : word)
    block = block << 8 | static_cast<unsigned char>(c);
  return block;
}

bool equal_words(const char *a, std::string_view b) {
  if (b.size() <= long_block) {
    return load_short_word({a, b.size()}) == load_short_word(b);
  }
  const std::size_t last = b.size() - long_block;
  for (std::size_t i = 0; i < last; i += long_block) {
    if (load<std::uint64_t>(a + i) != load<std::uint64_t>(b.data() + i)) {
      return false;
    }
  }
  return load<std::uint64_t>(a + last) == load<std::uint64_t>(b.data() + last);
}

std::uint64_t mixed(std::uint64_t hash, std::uint64_t block) {
  hash = (hash ^ block) * 0x9E3779B97F4A7C15U;
  return hash ^ (hash >> 32);
}

}  // namespace

WordCache::WordCache(std::size_t nr_slots)
    : most_words_(nr_slots / 4 * 3),
      most_text_bytes_(std::max(nr_slots * bytes_per_slot, least_bytes)),
      slots_(nr_slots),
      texts_(new char[most_text_bytes_]) {}

std::uint32_t WordCache::hash_of(std::string_view raw) {
  std::uint64_t hash = raw.size();
  while (raw.size() > long_block) {
    hash = mixed(hash, load<std::uint64_t>(raw.data()));
    raw.remove_prefix(long_block);
  }
  return static_cast<std::uint32_t>(mixed(hash, load_short_word(raw)));
}

bool WordCache::holds(const Slot &slot, std::uint32_t hash,
                      std::string_view raw) const {
  return slot.hash == hash && slot.raw_size == raw.size() &&
         equal_words(texts_.get() + slot.offset, raw);
}

bool WordCache::find(std::string_view raw, Word &word) const {
  const std::uint32_t hash = hash_of(raw);
  for (std::size_t i = 0; i < longest_search; ++i) {
    const Slot &slot = slots_[(hash + i) & (slots_.size() - 1)];
    if (slot.raw_size == 0)
      return false;
    if (!holds(slot, hash, raw))
      continue;
    word = {slot.kind,
            slot.function,
            slot.elided,
            slot.has_capital,
            {texts_.get() + slot.offset + slot.raw_size, slot.stem_size}};
    return true;
  }
  return false;
}

// The first free slot for `hash`, or the first of all if the search is over.
WordCache::Slot &WordCache::slot_for(std::uint32_t hash) {
  for (std::size_t i = 0; i < longest_search; ++i) {
    Slot &slot = slots_[(hash + i) & (slots_.size() - 1)];
    if (slot.raw_size == 0)
      return slot;
  }
  return slots_[hash & (slots_.size() - 1)];
}

void WordCache::insert(std::string_view raw, const Word &word) {
  const std::size_t size = raw.size() + word.stem.size();
  if (nr_words_ == most_words_ || nr_text_bytes_ + size > most_text_bytes_) {
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

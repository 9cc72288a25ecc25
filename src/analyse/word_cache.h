// What is known of the words that occurred lately, so that each is looked up
// and stemmed once and not at each occurrence. Of bounded size, and bounded in
// the time of a search also for texts that are made to collide.
#ifndef VEK_ANALYSE_WORD_CACHE_H_
#define VEK_ANALYSE_WORD_CACHE_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "analyse/word.h"

namespace vek::analysis {

class WordCache {
 public:
  // For fewer words than `nr_slots`, a power of two, at least 32.
  explicit WordCache(std::size_t nr_slots);

  // Sets `word` to what is known of the word that is written `raw`. False if
  // nothing is. The stem stays valid until the next call of insert().
  bool find(std::string_view raw, Word &word) const;

  // Notes `word` for `raw`, which is not in the cache and has at most 255
  // bytes, as has the stem. Forgets all others if there is no room, or one of
  // them if too many are looked for at the same place.
  void insert(std::string_view raw, const Word &word);

 private:
  struct Slot {
    std::uint32_t hash;
    std::uint32_t offset;    // of the word in texts_, its stem behind it
    std::uint8_t raw_size;   // bytes; 0 for a free slot
    std::uint8_t stem_size;  // bytes
    WordKind kind;
    FunctionFlags function;
    FunctionFlags elided;
    bool has_capital;
  };

  static std::uint32_t hash_of(std::string_view raw);
  bool holds(const Slot &slot, std::uint32_t hash, std::string_view raw) const;
  Slot &slot_for(std::uint32_t hash);
  void clear();

  const std::size_t most_words_;
  const std::size_t most_text_bytes_;
  std::vector<Slot> slots_;
  std::unique_ptr<char[]> texts_;
  std::uint32_t nr_text_bytes_ = 0;
  std::size_t nr_words_ = 0;
};

}  // namespace vek::analysis

#endif  // VEK_ANALYSE_WORD_CACHE_H_

#include "import/likeness.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace vek::importing {
namespace {

constexpr std::size_t rows = 3;  // minima that must agree
constexpr std::size_t sequence_size = 3;
// Training documents with which a test document is compared in each band.
constexpr std::size_t most_compared = 16;

// The finalizer of SplitMix64 (Steele, Lea and Flood, 2014).
std::uint64_t mixed(std::uint64_t value) {
  value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9U;
  value = (value ^ (value >> 27)) * 0x94D049BB133111EBU;
  return value ^ (value >> 31);
}

// Letters and digits, and all characters beyond ASCII.
bool is_word_byte(unsigned char byte) {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= '0' && byte <= '9') || byte >= 0x80;
}

std::uint64_t small_letter(unsigned char byte) {
  return byte >= 'A' && byte <= 'Z' ? byte + 32U : byte;
}

class Sequences {
 public:
  Sequences() { minima_.fill(std::numeric_limits<std::uint32_t>::max()); }

  void add_word(std::uint64_t word) {
    words_ = mixed(words_ + word);
    last_[nr_words_ % sequence_size] = word;
    ++nr_words_;
    if (nr_words_ >= sequence_size)
      add_sequence();
  }

  Fingerprint finish() {
    if (nr_words_ < sequence_size)
      add_sequence();  // all there is
    Fingerprint result = {words_, nr_words_, {}};
    for (std::size_t i = 0; i < nr_minima; ++i)
      result.minima[i] = static_cast<std::uint16_t>(minima_[i]);
    return result;
  }

 private:
  void add_sequence() {
    std::uint64_t sequence = 0;
    for (std::size_t i = 0; i < sequence_size; ++i)
      sequence = mixed(sequence + last_[(nr_words_ + i) % sequence_size]);
    // Multiplied by odd numbers, one for each order.
    std::uint64_t factor = 0x9E3779B97F4A7C15U;
    for (std::uint32_t &minimum : minima_) {
      minimum = std::min(minimum,
                         static_cast<std::uint32_t>((sequence * factor) >> 32));
      factor = mixed(factor) | 1;
    }
  }

  std::uint64_t words_ = 0;
  std::size_t nr_words_ = 0;
  std::uint64_t last_[sequence_size] = {};
  std::array<std::uint32_t, nr_minima> minima_ = {};
};

std::uint64_t band_of(const Document &document, std::size_t band) {
  std::uint64_t key = 0;
  for (std::size_t i = 0; i < rows; ++i)
    key = key << 16 | document.minima[band * rows + i];
  return key;
}

using Entry = std::pair<std::uint64_t, std::uint32_t>;  // band, document

class NearFinder {
 public:
  explicit NearFinder(const std::vector<Document> &documents)
      : documents_(documents), best_(documents.size()) {}

  void look_at_band(std::size_t band) {
    entries_.clear();
    for (std::size_t i = 0; i < documents_.size(); ++i) {
      if (documents_[i].side != Side::none) {
        entries_.emplace_back(band_of(documents_[i], band),
                              static_cast<std::uint32_t>(i));
      }
    }
    std::sort(entries_.begin(), entries_.end());
    for (auto begin = entries_.cbegin(); begin != entries_.cend();) {
      const auto end = std::find_if(
          begin, entries_.cend(),
          [begin](const Entry &entry) { return entry.first != begin->first; });
      compare(begin, end);
      begin = end;
    }
  }

  std::vector<NearPair> pairs() const {
    std::vector<NearPair> result;
    std::copy_if(
        best_.begin(), best_.end(), std::back_inserter(result),
        [](const NearPair &pair) { return pair.nr_equal >= least_equal; });
    return result;
  }

 private:
  using Iterator = std::vector<Entry>::const_iterator;

  void compare(Iterator begin, Iterator end) {
    std::vector<std::uint32_t> train;
    for (auto entry = begin; entry != end && train.size() < most_compared;
         ++entry) {
      if (documents_[entry->second].side == Side::train)
        train.push_back(entry->second);
    }
    if (train.empty())
      return;
    for (; begin != end; ++begin) {
      if (documents_[begin->second].side != Side::test)
        continue;
      for (const std::uint32_t other : train)
        compare_pair(begin->second, other);
    }
  }

  void compare_pair(std::uint32_t test, std::uint32_t train) {
    const Minima &a = documents_[test].minima;
    const Minima &b = documents_[train].minima;
    std::uint32_t nr_equal = 0;
    for (std::size_t i = 0; i < nr_minima; ++i)
      nr_equal += a[i] == b[i];
    if (nr_equal > best_[test].nr_equal)
      best_[test] = {test, train, nr_equal};
  }

  const std::vector<Document> &documents_;
  std::vector<NearPair> best_;
  std::vector<Entry> entries_;
};

}  // namespace

Fingerprint fingerprint_of(std::string_view text) {
  Sequences sequences;
  std::uint64_t word = 0;
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (is_word_byte(byte)) {
      // FNV-1a, mixed when the word ends.
      word = ((word == 0 ? 0xCBF29CE484222325U : word) ^ small_letter(byte)) *
             0x100000001B3U;
    } else if (word != 0) {
      sequences.add_word(mixed(word));
      word = 0;
    }
  }
  if (word != 0)
    sequences.add_word(mixed(word));
  return sequences.finish();
}

std::vector<NearPair> find_near(const std::vector<Document> &documents) {
  NearFinder finder(documents);
  for (std::size_t band = 0; band < nr_minima / rows; ++band)
    finder.look_at_band(band);
  return finder.pairs();
}

}  // namespace vek::importing

// From term ids to places in an array.
//
// Terms are looked up for every word of every document, in the profile of a
// class and in the rows of an inverted index. Ids are dense numbers: for a map
// that holds a good part of them an array is smaller and faster than a hash
// table. So a map begins as a hash table and becomes an array as it fills.
#ifndef VEK_CLASSES_TERMMAP_H_
#define VEK_CLASSES_TERMMAP_H_

#include <tsl/robin_map.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace vek {

// The upper half of a * term + b, with random a and b: two terms meet no more
// often than by chance (Dietzfelbinger 1996), whatever terms a damaged or
// hostile file names. With numbers that are known, it could name such that
// all meet, and take minutes to be read. No result depends on the numbers.
struct TermHash {
  struct Key {
    std::uint64_t factor;
    std::uint64_t summand;
  };
  static const Key key;

  std::size_t operator()(std::uint32_t term) const {
    return static_cast<std::size_t>((term * key.factor + key.summand) >> 32);
  }
};

class TermMap {
 public:
  static constexpr std::uint32_t nowhere = 0xFFFFFFFF;

  // The term's place, or `nowhere`.
  std::uint32_t find(std::uint32_t term) const {
    if (term < near_.size())
      return near_[term];
    if (far_.empty())
      return nowhere;
    const auto place = far_.find(term);
    return place == far_.end() ? nowhere : place->second;
  }

  // The term's place if it has one; otherwise it gets `place`, which is below
  // `nowhere`.
  std::uint32_t find_or_insert(std::uint32_t term, std::uint32_t place) {
    const std::uint32_t found = find(term);
    if (found != nowhere)
      return found;
    set(term, place);
    ++nr_terms_;
    largest_ = std::max(largest_, term);
    if (nr_terms_ >= next_look_)
      look_for_density();
    return place;
  }

  // Announces that the map will have about `nr_terms` terms, none larger than
  // `largest`. Has no effect once there are terms in the hash table.
  void expect(std::size_t nr_terms, std::uint32_t largest) {
    if (far_.empty() && largest / most_spread <= nr_terms &&
        near_.size() <= largest)
      near_.resize(std::size_t{largest} + 1, nowhere);
  }

  // Changes the place of a term that has one.
  void set(std::uint32_t term, std::uint32_t place) {
    if (term < near_.size()) {
      near_[term] = place;
    } else {
      far_[term] = place;
    }
  }

  // Takes the place away from a term that has one.
  void erase(std::uint32_t term) {
    if (term < near_.size()) {
      near_[term] = nowhere;
    } else {
      far_.erase(term);
    }
    --nr_terms_;
  }

 private:
  // An array is used if it has at most so many places for each term.
  static constexpr std::size_t most_spread = 8;

  // Called each time the number of terms has doubled, so that all calls
  // together cost no more than the terms themselves.
  void look_for_density() {
    next_look_ = 2 * nr_terms_;
    if (far_.empty() || largest_ / most_spread > nr_terms_)
      return;
    near_.resize(std::size_t{largest_} + 1, nowhere);
    for (const auto &[term, place] : far_)
      near_[term] = place;
    far_ = {};
  }

  std::vector<std::uint32_t> near_;                             // by term
  tsl::robin_map<std::uint32_t, std::uint32_t, TermHash> far_;  // all others
  std::size_t nr_terms_ = 0;
  std::size_t next_look_ = 64;
  std::uint32_t largest_ = 0;  // term that ever was there
};

}  // namespace vek

#endif  // VEK_CLASSES_TERMMAP_H_

// What one class knows of its terms: how often each occurs in the class's
// training documents, what weight the documents have given it, and the
// classifier's own weights for it, with the class's threshold.
//
// Every class of the table owns one. Documents add to it, term selection
// prunes it, the trainers put their weights into it and the scorer reads it.
#ifndef VEK_CLASSES_CLASSPROF_H_
#define VEK_CLASSES_CLASSPROF_H_

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string_view>
#include <vector>

#include "base/failure.h"
#include "base/helpers.h"
#include "classes/termmap.h"

namespace vek {

struct ClassProfileEntry {
  // Sum of the term's frequencies over the class's training documents.
  std::uint32_t tf = 0;
  // Number of the class's training documents in which the term occurs.
  std::uint32_t df = 0;
  // Sum of the weights of documents for the term, a trainer's intermediate
  // result.
  WeightType weight = 0.0;
  // Winnow's positive weight, or the only weight of Rocchio and SBC.
  WeightType pos_weight = 0.0;
  WeightType neg_weight = 0.0;
  // How many of Winnow's updates touched the term.
  std::int32_t promotions = 0;
  std::int32_t demotions = 0;
};

// What a class profile's file has of each term behind its frequencies: nothing
// more, Winnow's counts of updates, the one weight, or that weight as exactly
// as the machine has it; then threshold and bias are in the file as exactly.
enum class ProfileColumns { frequencies, updates, weight, exact_weight };

class ClassProfile {
 public:
  struct Slot {
    std::uint32_t term = 0;
    ClassProfileEntry entry;
  };
  using iterator = std::vector<Slot>::iterator;
  using const_iterator = std::vector<Slot>::const_iterator;

  // The entry of a term, or null. Valid until an entry is created or erased
  // or the profile is walked.
  ClassProfileEntry *find(std::uint32_t term) {
    const std::uint32_t place = places_.find(term);
    return place == TermMap::nowhere ? nullptr : &slots_[place].entry;
  }
  const ClassProfileEntry *find(std::uint32_t term) const {
    const std::uint32_t place = places_.find(term);
    return place == TermMap::nowhere ? nullptr : &slots_[place].entry;
  }

  // 0 for an absent term, which stays absent.
  std::uint32_t tf(std::uint32_t term) const;
  std::uint32_t df(std::uint32_t term) const;

  // The entry of a term, all zero if it is new.
  ClassProfileEntry &operator[](std::uint32_t term);
  void erase(std::uint32_t term);
  std::size_t size() const { return slots_.size(); }

  // Makes room for so many terms in all, none larger than `largest_term`.
  void reserve(std::size_t nr_entries, std::uint32_t largest_term);
  // 0 in an empty profile.
  std::uint32_t largest_term() const {
    return slots_.empty() ? 0 : (end() - 1)->term;
  }
  // Makes room for half of `nr_expected` terms, within bounds: in a table of
  // fifty thousand classes not each may reserve room for the whole vocabulary.
  void prepare(std::size_t nr_expected);

  // Walks go by ascending term id, so that no sum and no file depends on how
  // the table is laid out.
  iterator begin();
  iterator end() { return slots_.end(); }
  const_iterator begin() const;
  const_iterator end() const { return slots_.end(); }

  WeightType threshold() const { return threshold_; }
  void set_threshold(WeightType threshold) { threshold_ = threshold; }

  // What a score that is a sum begins with; 0 but for linear machines.
  WeightType bias() const { return bias_; }
  // Adding 0 makes 0 of -0, which no sum may begin with (see InvertedIndex).
  void set_bias(WeightType bias) { bias_ = bias + 0.0; }

  // Winnow's start weights, as they were set last. Nothing depends on them;
  // they show from where the weights of a trained class began.
  WeightType init_pos_weight() const { return init_pos_weight_; }
  WeightType init_neg_weight() const { return init_neg_weight_; }
  void set_init_weights(WeightType pos, WeightType neg);

  // The text form: a line with the number of entries, `nr_terms` and the
  // threshold, then a line for each entry with the columns. Doubles have six
  // significant digits. With exact weights the first line also has the bias,
  // and all doubles are the shortest texts that read back as the same. False if
  // the stream fails.
  bool write(std::ostream &os, std::uint32_t nr_terms,
             ProfileColumns columns) const;

  // Reads that form into the empty profile. What the file does not carry is
  // 0. False, with `fault` filled in, if a number is none or out of range, if a
  // term comes twice or is not below `nr_known_terms`, and if anything follows
  // the last entry.
  bool parse(std::string_view text, std::uint32_t &nr_terms,
             ProfileColumns columns, std::uint64_t nr_known_terms,
             LineFault &fault);
  // The same where nobody knows the terms.
  bool parse(std::string_view text, std::uint32_t &nr_terms,
             ProfileColumns columns);

 private:
  void arrange() const;

  // Slots in order of entry until a walk sorts them. `places_` has the place of
  // each term's slot. Sorting changes the order of the slots and not the
  // content, hence mutable.
  mutable std::vector<Slot> slots_;
  mutable TermMap places_;
  mutable bool arranged_ = true;
  WeightType threshold_ = 1.0;
  WeightType bias_ = 0.0;
  WeightType init_pos_weight_ = 0.0;
  WeightType init_neg_weight_ = 0.0;
};

}  // namespace vek

#endif  // VEK_CLASSES_CLASSPROF_H_

#include "classes/weightfile.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>

#include "base/textio.h"

namespace vek {
namespace {

// Whether both have the same text in a class profile.
bool print_equal(WeightType a, WeightType b) {
  std::string text_of_a;
  std::string text_of_b;
  append_real(text_of_a, a);
  append_real(text_of_b, b);
  return text_of_a == text_of_b;
}

bool read_weights(FieldReader &fields, ClassProfile &profile) {
  std::size_t nr_entries = 0;
  WeightType threshold = 0.0;
  if (!fields.read(nr_entries) || nr_entries != profile.size() ||
      !fields.read(threshold)) {
    return false;
  }
  // Both files are by ascending term, so the terms must agree line by line.
  for (ClassProfile::Slot &slot : profile) {
    std::uint32_t term = 0;
    if (!fields.read(term) || term != slot.term ||
        !fields.read(slot.entry.pos_weight) ||
        !fields.read(slot.entry.neg_weight)) {
      return false;
    }
  }
  if (!fields.at_end())
    return false;
  // Set only here, when all is read: a damaged file must not change it.
  if (print_equal(threshold, profile.threshold())) {
    profile.set_threshold(threshold);
  }
  return true;
}

}  // namespace

bool write_winnow_weights(std::ostream &os, const ClassProfile &profile) {
  std::string text;
  append_number(text, profile.size());
  text += '\t';
  append_exact_real(text, profile.threshold());
  text += '\n';
  for (const ClassProfile::Slot &slot : profile) {
    append_number(text, slot.term);
    text += '\t';
    append_exact_real(text, slot.entry.pos_weight);
    text += '\t';
    append_exact_real(text, slot.entry.neg_weight);
    text += '\n';
  }
  os.write(text.data(), std::ssize(text));
  return os.good();
}

bool parse_winnow_weights(std::string_view text, ClassProfile &profile) {
  FieldReader fields(text);
  if (read_weights(fields, profile))
    return true;
  for (ClassProfile::Slot &slot : profile) {
    slot.entry.pos_weight = 0.0;
    slot.entry.neg_weight = 0.0;
  }
  return false;
}

}  // namespace vek

#include "learning/sbc.h"

#include <cstdint>

namespace vek {

void train_sbc(const Training &training) {
  for_each_father(training, "S.B.C.", sbc_set_weights);
}

WeightType sbc_scoring_weight(const ClassProfileEntry &entry,
                              const Params & /*params*/) {
  return entry.pos_weight;
}

void write_sbc_settings(std::ostream &out, const Params &params) {
  out << "[SBC]\n"
      << "Laplace           " << on_off(params.sbc.laplace) << '\n'
      << "MaxSignif         " << params.sbc.max_signif << '\n';
}

void restore_sbc_weights(ClassTable &classes) {
  for (auto &[key, data] : classes)
    sbc_set_weights(data);
}

void sbc_set_weights(ClassData &father) {
  for (ClassData *son_P : father.sons) {
    for (ClassProfile::Slot &slot : son_P->profile) {
      // In 32 bits, as the count itself: a count at the end of the range wraps
      // to 0.
      const std::uint32_t count = slot.entry.tf + 1;
      slot.entry.pos_weight =
          son_P->nr_terms == 0 ? 0.0 : double(count) / double(son_P->nr_terms);
    }
  }
}

}  // namespace vek

#include "learning/sbc.h"

#include <cstdint>

#include "classes/termset.h"
#include "evaluation/testing.h"
#include "run/log.h"

namespace vek {

void train_sbc() {
  for (auto &[key, data] : class_table) {
    if (data.sons.empty() || data.train_docs.empty())
      continue;
    logf_always(1,
                "training S.B.C. on `%s' with %d documents: %d active terms.",
                key.name.c_str(), static_cast<int>(data.train_docs.size()),
                static_cast<int>(active_terms.size()));
    sbc_set_weights(data);
  }
  clear_scorers();
}

void restore_sbc_weights() {
  for (auto &[key, data] : class_table)
    sbc_set_weights(data);
  clear_scorers();
}

void sbc_set_weights(ClassData &father) {
  for (ClassData *son_P : father.sons) {
    for (ClassProfile::Slot &slot : son_P->profile) {
      const std::uint32_t count = slot.entry.tf + 1;
      slot.entry.pos_weight =
          son_P->nr_terms == 0 ? 0.0 : double(count) / double(son_P->nr_terms);
    }
  }
}

}  // namespace vek

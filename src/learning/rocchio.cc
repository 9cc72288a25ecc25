#include "learning/rocchio.h"

#include "classes/termset.h"
#include "evaluation/scoretable.h"
#include "evaluation/testing.h"
#include "params/params.h"
#include "run/log.h"
#include "run/progress.h"
#include "store/database.h"

namespace vek {
namespace {

WeightType term_weight(const ClassData &son, WeightType sum_in_son,
                       WeightType sum_in_father) {
  const WeightType sum_in_others = sum_in_father - sum_in_son;
  WeightType weight =
      params.rocchio().beta() * sum_in_son / double(son.nr_docs);
  if (son.nr_others != 0) {
    weight -= params.rocchio().gamma() * sum_in_others / double(son.nr_others);
  }
  if (weight < 0.0 && !params.rocchio().negative_weights())
    return 0.0;
  return weight;
}

}  // namespace

void train_rocchio() {
  for (auto &[key, data] : class_table) {
    if (data.sons.empty() || data.train_docs.empty())
      continue;
    logf_always(1,
                "training Rocchio on `%s' with %d documents: %d active terms.",
                key.name.c_str(), static_cast<int>(data.train_docs.size()),
                static_cast<int>(active_terms.size()));
    rocchio_weigh_documents(data);
    rocchio_sum_sons(data);
    rocchio_set_weights(data);
  }
  clear_scorers();
  set_leaf_thresholds();
  data_base.clear_cache();
}

void rocchio_weigh_documents(ClassData &father) {
  Progress progress("Rocchio Training", class_table.get_name(father.id),
                    father.train_docs.size());
  for (const auto &[name, classes] : father.train_docs) {
    data_base.get(name)->weigh(father.id);
    progress.count();
  }
}

void rocchio_sum_sons(ClassData &father) {
  for (ClassData *son_P : father.sons) {
    for (const auto &[name, classes] : son_P->train_docs) {
      for (const DocProfileEntry &entry : *data_base.get(name)) {
        ClassProfileEntry *entry_P = son_P->profile.find(entry.term);
        if (entry_P != nullptr)
          entry_P->weight += entry.weight;
      }
    }
  }
}

void rocchio_set_weights(ClassData &father) {
  for (ClassData *son_P : father.sons) {
    for (ClassProfile::Slot &slot : son_P->profile) {
      const ClassProfileEntry *father_entry_P = father.profile.find(slot.term);
      slot.entry.pos_weight =
          father_entry_P == nullptr || son_P->nr_docs == 0
              ? 0.0
              : term_weight(*son_P, slot.entry.weight, father_entry_P->weight);
    }
  }
}

}  // namespace vek

#include "learning/rocchio.h"

#include "base/progress.h"

namespace vek {
namespace {

void clear_sums(ClassData &data) {
  for (ClassProfile::Slot &slot : data.profile)
    slot.entry.weight = 0.0;
}

WeightType term_weight(const RocchioParams &params, const ClassData &son,
                       WeightType sum_in_son, WeightType sum_in_father) {
  // Each document of the son is one of the father's and counts there once, even
  // if several sons hold it. So the others are had by a subtraction, without
  // another walk over them.
  const WeightType sum_in_others = sum_in_father - sum_in_son;
  WeightType weight = params.beta * sum_in_son / double(son.nr_docs);
  // An only son has no others to be told from: the second part is left out.
  if (son.nr_others != 0) {
    weight -= params.gamma * sum_in_others / double(son.nr_others);
  }
  if (weight < 0.0 && !params.negative_weights)
    return 0.0;
  return weight;
}

}  // namespace

void train_rocchio(const Training &training) {
  // The three steps in this order for each father: the weights of a document
  // hold for the father against which it was weighed last.
  // A class between the top and the leaves has its sums as a son and as a
  // father in one place.
  const Params &params = training.params;
  const bool clears = params.held_out > 1 || params.walk == WalkKind::path;
  for_each_father(training, "Rocchio", [&](ClassData &father) {
    if (clears) {
      clear_sums(father);
      for (ClassData *son_P : father.sons)
        clear_sums(*son_P);
    }
    rocchio_weigh_documents(training, father);
    rocchio_sum_sons(training, father);
    rocchio_set_weights(training.params, father);
  });
}

WeightType rocchio_scoring_weight(const ClassProfileEntry &entry,
                                  const Params & /*params*/) {
  return entry.pos_weight;
}

void write_rocchio_settings(std::ostream &out, const Params &params) {
  out << "[Rocchio]\n"
      << "Beta              " << params.rocchio.beta << '\n'
      << "Gamma             " << params.rocchio.gamma << '\n'
      << "NegativeWeights   " << on_off(params.rocchio.negative_weights)
      << '\n';
}

void rocchio_weigh_documents(const Training &training, ClassData &father) {
  Progress progress(training.messages, "Rocchio Training",
                    training.classes.get_name(father.id),
                    father.train_docs.size());
  // In the order of names, so that each sum has one order of addition.
  for (const auto &[name, classes] : father.train_docs) {
    training.documents.get(name)->weigh_and_add(father, training.params);
    progress.count();
  }
}

void rocchio_sum_sons(const Training &training, ClassData &father) {
  for (ClassData *son_P : father.sons) {
    for (const auto &[name, classes] : son_P->train_docs) {
      for (const DocProfileEntry &entry : *training.documents.get(name)) {
        ClassProfileEntry *entry_P = son_P->profile.find(entry.term);
        // The document may have terms that the son's own profile lacks: a term
        // is active for all classes if one class has selected it.
        if (entry_P != nullptr)
          entry_P->weight += entry.weight;
      }
    }
  }
}

void rocchio_set_weights(const Params &params, ClassData &father) {
  for (ClassData *son_P : father.sons) {
    for (ClassProfile::Slot &slot : son_P->profile) {
      const ClassProfileEntry *father_entry_P = father.profile.find(slot.term);
      slot.entry.pos_weight =
          father_entry_P == nullptr || son_P->nr_docs == 0
              ? 0.0
              : term_weight(params.rocchio, *son_P, slot.entry.weight,
                            father_entry_P->weight);
    }
  }
}

}  // namespace vek

#include "learning/classifiers.h"

#include <array>
#include <cstddef>

#include "base/textio.h"
#include "evaluation/thresholds.h"
#include "learning/linear.h"
#include "learning/rocchio.h"
#include "learning/sbc.h"
#include "learning/winnow.h"

namespace vek {
namespace {

// In the order of Algorithm, whose values are the indices.
constexpr std::array records = {
    Classifier{Algorithm::winnow,
               "Winnow",
               'W',
               winnow_scoring,
               {ProfileColumns::updates, ".cwt", write_winnow_weights,
                parse_winnow_weights},
               true,
               train_winnow,
               nullptr,
               write_winnow_settings},
    Classifier{Algorithm::rocchio,
               "Rocchio",
               'R',
               rocchio_scoring,
               {ProfileColumns::weight},
               true,
               train_rocchio,
               nullptr,
               write_rocchio_settings},
    Classifier{Algorithm::sbc,
               "SBC",
               'S',
               sbc_scoring,
               {ProfileColumns::frequencies},
               false,
               train_sbc,
               restore_sbc_weights,
               write_sbc_settings},
    Classifier{Algorithm::linear,
               "Linear",
               'L',
               linear_scoring,
               {ProfileColumns::exact_weight},
               true,
               train_linear,
               nullptr,
               write_linear_settings},
};

}  // namespace

std::span<const Classifier> classifiers() {
  return records;
}

const Classifier &classifier_of(Algorithm algorithm) {
  return records.at(static_cast<std::size_t>(algorithm));
}

void train_classes(const Training &training, const Classifier &classifier) {
  classifier.train(training);
  if (!classifier.has_thresholds)
    return;
  // Scores use the weights that the documents have from the last father in the
  // order of the table.
  set_leaf_thresholds(training.classes, training.documents.cache(),
                      classifier.scoring, training.params, training.scores,
                      training.messages);
  training.documents.clear_cache();
}

void train_for_judging(const Training &training, const Classifier &classifier) {
  classifier.train(training);
  training.documents.clear_cache();
  if (classifier.files.columns != ProfileColumns::weight)
    return;
  for (auto &[key, data] : training.classes) {
    for (ClassProfile::Slot &slot : data.profile)
      slot.entry.pos_weight = as_written(slot.entry.pos_weight);
  }
}

}  // namespace vek

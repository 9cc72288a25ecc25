#include "learning/classifiers.h"

#include <array>
#include <cstddef>

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
               train_winnow,
               nullptr,
               write_winnow_settings},
    Classifier{Algorithm::rocchio,
               "Rocchio",
               'R',
               rocchio_scoring,
               {ProfileColumns::weight},
               train_rocchio,
               nullptr,
               write_rocchio_settings},
    Classifier{Algorithm::sbc,
               "SBC",
               'S',
               sbc_scoring,
               {ProfileColumns::frequencies},
               train_sbc,
               restore_sbc_weights,
               write_sbc_settings},
    Classifier{Algorithm::linear,
               "Linear",
               'L',
               linear_scoring,
               {ProfileColumns::exact_weight},
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

}  // namespace vek

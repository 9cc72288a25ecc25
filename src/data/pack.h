// Packed models: what judging needs of a model in one directory, to hand on.
// answering/manifest.h says what is in one.
#ifndef VEK_DATA_PACK_H_
#define VEK_DATA_PACK_H_

#include <optional>
#include <string>

#include "answering/kept_model.h"
#include "base/failure.h"

namespace vek::keeping {

struct Packing {
  // The directory can be a packed model.
  KeptModel::Place place;
  // The analyser's command line where the model will be used; if not given,
  // that of the resource file.
  std::optional<std::string> analyser;
  std::string destination;  // which must not be there yet
};

// It is written as "<destination>.part". The same model gives the same bytes,
// but for the date; the environment's SOURCE_DATE_EPOCH sets that. `warning`
// says what will be missing where the model is used. False, with `failure`
// filled in, if that cannot be done.
bool pack_model(const Packing &packing, std::string &warning, Failure &failure);

}  // namespace vek::keeping

#endif  // VEK_DATA_PACK_H_

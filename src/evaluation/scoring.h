// How a classifier's weights become a score: one place for training, tests and
// new documents.
#ifndef VEK_EVALUATION_SCORING_H_
#define VEK_EVALUATION_SCORING_H_

#include "base/helpers.h"
#include "classes/classtab.h"
#include "intake/docprof.h"
#include "params/params.h"

namespace vek {

// The factor of a product for a term that the class does not know. With 0, a
// single such term would exclude the class.
inline constexpr WeightType unknown_term_factor = 0.01;

struct Scoring {
  // Adds to the class's bias weight times document weight over the terms that
  // the class knows, or multiplies the weights of all terms of the document.
  enum class Kind { sum, product };

  Kind kind;
  // What an entry contributes per unit of document weight.
  WeightType (*weight)(const ClassProfileEntry &entry, const Params &params);
};

// The unscaled score of a document against a class, over the document's terms
// in order.
WeightType score_document(const Scoring &scoring, const Params &params,
                          const ClassProfile &profile, const DocProfile &doc);

// The score in units of the class's threshold, if scaling is on. For a
// threshold that nothing can be divided by, or that would turn the order
// round, it is 1 + (score - threshold): 1.0 still divides above from below.
WeightType scaled_score(const Params &params, WeightType score,
                        WeightType threshold);

}  // namespace vek

#endif  // VEK_EVALUATION_SCORING_H_

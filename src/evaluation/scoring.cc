#include "evaluation/scoring.h"

namespace vek {

WeightType score_document(const Scoring &scoring, const Params &params,
                          const ClassProfile &profile, const DocProfile &doc) {
  // The plain form of the score. All faster ones give the same result.
  const bool is_product = scoring.kind == Scoring::Kind::product;
  WeightType score = is_product ? 1.0 : profile.bias();
  for (const DocProfileEntry &entry : doc) {
    const ClassProfileEntry *entry_P = profile.find(entry.term);
    if (is_product) {
      score *= entry_P == nullptr ? unknown_term_factor
                                  : scoring.weight(*entry_P, params);
    } else if (entry_P != nullptr) {
      score += scoring.weight(*entry_P, params) * entry.weight;
    }
  }
  return score;
}

WeightType scaled_score(const Params &params, WeightType score,
                        WeightType threshold) {
  if (!params.scaling)
    return score;
  return threshold > 0.0 ? score / threshold : 1.0 + (score - threshold);
}

}  // namespace vek

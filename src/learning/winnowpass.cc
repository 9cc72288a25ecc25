#include "learning/winnowpass.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <limits>

#include "base/simd.h"
#include "learning/winnow.h"

namespace vek {
namespace {

// The counter wraps at its limit; in unsigned numbers, where that is defined.
void count_up(std::int32_t &counter) {
  counter = static_cast<std::int32_t>(static_cast<std::uint32_t>(counter) + 1U);
}

// A rough score of a son is off by at most `relative` times the largest weight
// of that son, plus `absolute`.
struct Error {
  WeightType relative;
  WeightType absolute;

  WeightType bound(WeightType largest_weight) const {
    return largest_weight * relative + absolute;
  }
};

// Weights and strengths are rounded, so are n products and n sums: with u for
// the unit roundoff, a rough score is off by less than 2 (n + 3) u times the
// sum of the products' magnitudes while (n + 3) u < 1/2, and the score proper
// by far less (Higham, Accuracy and Stability of Numerical Algorithms, 2nd
// ed., section 3.1). FLT_EPSILON is 2 u. What gets smaller than the normal
// numbers is off by less than FLT_MIN for each term.
Error error_of(std::size_t nr_terms, WeightType strengths) {
  const auto n = static_cast<WeightType>(nr_terms);
  // The one more than n + 3 covers the score proper and the sum of the
  // strengths, which are rounded in double precision.
  return {(n + 4) * FLT_EPSILON * strengths + n * FLT_MIN,
          n * FLT_MIN * (1.0 + strengths)};
}

// The rough scores of a document's sons and what they are judged by, in arrays
// of `size` numbers, a multiple of four.
struct Judgement {
  std::size_t size;
  const float *scores;
  const WeightType *thetas;
  const WeightType *sides;
  const WeightType *largest_weights;
  Error error;
};

// Whether every score lies on the right side of its theta by more than its
// error. Comparisons with a NaN are false, so such a score is never taken for
// certain. The results are gathered without a branch, as nearly all are true.
VEK_FOR_EACH_PROCESSOR bool all_are_right(const Judgement &j) {
  constexpr std::size_t width = pack_width<WeightType>;
  Pack<std::int64_t> are_right = ~Pack<std::int64_t>{};
  for (std::size_t k = 0; k < j.size; k += width) {
    float rough[width];
    std::memcpy(rough, j.scores + k, sizeof rough);
    const Pack<WeightType> scores = {rough[0], rough[1], rough[2], rough[3]};
    Pack<WeightType> thetas;
    Pack<WeightType> sides;
    Pack<WeightType> largest;
    load_pack(thetas, j.thetas + k);
    load_pack(sides, j.sides + k);
    load_pack(largest, j.largest_weights + k);
    are_right &= (scores - thetas) * sides >
                 largest * j.error.relative + j.error.absolute;
  }
  bool result = true;
  for (std::size_t i = 0; i < width; ++i)
    result &= are_right[i] != 0;
  return result;
}

}  // namespace

WinnowPasses::WinnowPasses(ClassData &father, const Params &params)
    : sons_(father.sons),
      params_(params),
      index_(sons_),
      weights_(index_.nr_places()),
      // The sums behind the sons are padding: with these values any score is on
      // the right side.
      thetas_(index_.nr_sums(), std::numeric_limits<WeightType>::infinity()),
      sides_(index_.nr_sums(), -1.0),
      scores_(index_.nr_sums()),
      largest_weights_(index_.nr_sums()) {
  for (std::uint32_t son = 0; son < sons_.size(); ++son) {
    son_numbers_.emplace(sons_[son], son);
    set_member(son, false);
  }
  index_.for_each(
      sons_, [&](std::size_t place, std::uint32_t son,
                 ClassProfileEntry &entry) { set_weight(place, son, entry); });
}

void WinnowPasses::reserve(std::size_t nr_docs, std::size_t nr_terms) {
  documents_.reserve(nr_docs);
  members_.reserve(nr_docs);
  terms_.reserve(nr_terms);
}

void WinnowPasses::add_document(const DocProfile &doc,
                                const DocumentMap::ClassList &members) {
  const std::size_t begin = terms_.size();
  WeightType strengths = 0.0;
  for (const DocProfileEntry &entry : doc) {
    const std::uint32_t row = index_.row_of(entry.term);
    if (row == InvertedIndex::no_row)
      continue;
    terms_.push_back({row, static_cast<float>(entry.weight)});
    strengths += std::abs(entry.weight);
  }
  // Full rows first, as they are added up fastest side by side. This order is
  // not that of the score proper, but the bound of the error holds for any.
  std::partition(terms_.begin() + std::ptrdiff_t(begin), terms_.end(),
                 [&](const auto &term) { return index_.is_full(term.row); });
  for (const ClassData *class_data_P : members) {
    // A document filed in the father itself has the father in its list.
    const auto place = son_numbers_.find(class_data_P);
    if (place != son_numbers_.end())
      members_.push_back(place->second);
  }
  documents_.push_back({&doc, terms_.size(), members_.size(), strengths});
}

void WinnowPasses::set_member(std::uint32_t son, bool is_member) {
  sides_[son] = is_member ? 1.0 : -1.0;
  thetas_[son] =
      is_member ? params_.winnow.theta_plus : params_.winnow.theta_min;
}

int WinnowPasses::train_document(std::uint32_t number) {
  // The document's terms and members begin where those of the one before end.
  const Document before = number == 0 ? Document{} : documents_[number - 1];
  const Document &doc = documents_[number];
  for (std::size_t i = before.members_end; i < doc.members_end; ++i)
    set_member(members_[i], true);
  choose_sons(doc, Terms(terms_).subspan(before.terms_end,
                                         doc.terms_end - before.terms_end));
  int result = 0;
  if (!chosen_.empty()) {
    for (const std::uint32_t son : chosen_)
      update(son, *doc.profile_P);
    result = is_member(chosen_.back()) ? 1 : -1;
  }
  for (std::size_t i = before.members_end; i < doc.members_end; ++i)
    set_member(members_[i], false);
  return result;
}

// Fills `chosen_` with the sons to be updated. Rough scores tell which, except
// for those so close to their theta that the score proper may lie on the other
// side of it.
void WinnowPasses::choose_sons(const Document &doc, Terms terms) {
  chosen_.clear();
  const bool has_scores = score_roughly(doc, terms);
  const Error error = error_of(terms.size(), doc.strengths);
  if (has_scores &&
      all_are_right({scores_.size(), scores_.data(), thetas_.data(),
                     sides_.data(), largest_weights_.data(), error})) {
    return;
  }
  for (std::uint32_t son = 0; son < sons_.size(); ++son) {
    // Above 0 on the right side. A distance within the error, or that is not a
    // number, is not certain.
    const WeightType distance = (scores_[son] - thetas_[son]) * sides_[son];
    const bool is_certain =
        has_scores && std::abs(distance) > error.bound(largest_weights_[son]);
    if (is_certain ? distance < 0.0 : is_wrong(son, *doc.profile_P))
      chosen_.push_back(son);
  }
}

// Scores in single precision, of which the processor takes twice as many at
// once. False if a sum of them might overflow, or its error not be bounded.
bool WinnowPasses::score_roughly(const Document &doc, Terms terms) {
  // With so many terms (n + 3) u is about 1/16: the bound's condition holds.
  constexpr std::size_t most_terms = std::size_t{1} << 20;
  constexpr WeightType largest_sum = FLT_MAX / 4;
  // False, too, for what is not a number.
  if (!(std::max(largest_weight_, 1.0) * std::max(doc.strengths, 1.0) <
        largest_sum) ||
      terms.size() > most_terms) {
    return false;
  }
  scores_.assign(scores_.size(), 0.0F);
  index_.add_rows<float>(terms, weights_, scores_);
  return true;
}

// By the score proper. One that is not a number compares false both times: no
// update.
bool WinnowPasses::is_wrong(std::uint32_t son, const DocProfile &doc) const {
  const WeightType score =
      score_document(winnow_scoring, params_, sons_[son]->profile, doc);
  return is_member(son) ? score <= thetas_[son] : score >= thetas_[son];
}

void WinnowPasses::update(std::uint32_t son, const DocProfile &doc) {
  const bool promoted = is_member(son);
  const double alpha = params_.winnow.alpha;
  const double beta = params_.winnow.beta;
  // The rule of winnow.h; one multiplication for each weight and update, so
  // that a weight depends on the order of its updates only.
  const double pos_factor = promoted ? alpha : beta;
  const double neg_factor = promoted ? beta : alpha;
  ClassProfile &profile = sons_[son]->profile;
  // All places are found and asked for before the first is changed, so that the
  // waits for memory overlap.
  known_.clear();
  for (const DocProfileEntry &term : doc) {
    ClassProfileEntry *const entry_P = profile.find(term.term);
    if (entry_P == nullptr)
      continue;
    const std::size_t place = index_.place_of(index_.row_of(term.term), son);
    __builtin_prefetch(entry_P);
    __builtin_prefetch(&weights_[place]);
    known_.push_back({entry_P, place});
  }
  for (const auto &[entry_P, place] : known_) {
    entry_P->pos_weight *= pos_factor;
    entry_P->neg_weight *= neg_factor;
    count_up(promoted ? entry_P->promotions : entry_P->demotions);
    set_weight(place, son, *entry_P);
  }
}

// To be called for an entry that has changed.
void WinnowPasses::set_weight(std::size_t place, std::uint32_t son,
                              const ClassProfileEntry &entry) {
  const WeightType weight = winnow_scoring_weight(entry, params_);
  weights_[place] = static_cast<float>(weight);
  largest_weights_[son] = std::max(largest_weights_[son], std::abs(weight));
  largest_weight_ = std::max(largest_weight_, largest_weights_[son]);
}

}  // namespace vek

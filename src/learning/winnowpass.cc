#include "learning/winnowpass.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <limits>

#include "evaluation/packs.h"
#include "params/params.h"

namespace vek {
namespace {

// The counter wraps at its limit.
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

// Every score lies on the right side of its theta, and certainly so.
template <int nr_bytes>
[[gnu::always_inline]] inline bool all_right(const Judgement &j) {
  constexpr std::size_t width = pack_width<WeightType, nr_bytes>;
  Pack<std::int64_t, nr_bytes> are_right = ~Pack<std::int64_t, nr_bytes>{};
  for (std::size_t k = 0; k < j.size; k += width) {
    Pack<float, nr_bytes / 2> scores;
    Pack<WeightType, nr_bytes> thetas;
    Pack<WeightType, nr_bytes> sides;
    Pack<WeightType, nr_bytes> largest;
    load_pack(scores, j.scores + k);
    load_pack(thetas, j.thetas + k);
    load_pack(sides, j.sides + k);
    load_pack(largest, j.largest_weights + k);
    const auto distances =
        (__builtin_convertvector(scores, decltype(thetas)) - thetas) * sides;
    are_right &= distances > largest * j.error.relative + j.error.absolute;
  }
  bool result = true;
  for (std::size_t k = 0; k < width; ++k)
    result &= are_right[k] != 0;
  return result;
}

bool all_right_in_16_bytes(const Judgement &judgement) {
  return all_right<16>(judgement);
}
VEK_WIDE_PACKS bool all_right_in_32_bytes(const Judgement &judgement) {
  return all_right<32>(judgement);
}
auto *const all_are_right =
    has_wide_packs() ? all_right_in_32_bytes : all_right_in_16_bytes;

}  // namespace

WinnowPasses::WinnowPasses(ClassData &father)
    : sons_(father.sons),
      uses_neg_(params.winnow().negative_weights()),
      index_(sons_),
      entries_(index_.nr_places()),
      weights_(index_.nr_places()),
      rough_weights_(index_.nr_places()),
      // Behind the sons stands what is right with any score.
      thetas_(index_.nr_sums(), std::numeric_limits<WeightType>::infinity()),
      sides_(index_.nr_sums(), -1.0),
      scores_(index_.nr_sums()),
      rough_scores_(index_.nr_sums()),
      largest_weights_(index_.nr_sums()),
      is_chosen_(sons_.size()) {
  for (std::uint32_t son = 0; son < sons_.size(); ++son) {
    son_numbers_.emplace(sons_[son], son);
    set_member(son, false);
  }
  index_.for_each(sons_, [&](std::size_t place, std::uint32_t son,
                             ClassProfileEntry &entry) {
    entries_[place] = &entry;
    set_weight(place, son);
  });
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
    if (row == TermIndex::no_row)
      continue;
    terms_.push_back({row, static_cast<float>(entry.weight)});
    strengths += std::abs(entry.weight);
  }
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
      is_member ? params.winnow().theta_plus() : params.winnow().theta_min();
}

int WinnowPasses::train_document(std::uint32_t number) {
  const Document before = number == 0 ? Document{} : documents_[number - 1];
  const Document doc = documents_[number];
  const Terms terms =
      Terms(terms_).subspan(before.terms_end, doc.terms_end - before.terms_end);
  for (std::size_t i = before.members_end; i < doc.members_end; ++i)
    set_member(members_[i], true);
  if (!choose_roughly(terms, doc.strengths))
    choose_exactly(*doc.profile_P);
  int result = 0;
  if (!chosen_.empty()) {
    update(terms);
    result = is_member(chosen_.back()) ? 1 : -1;
  }
  for (std::size_t i = before.members_end; i < doc.members_end; ++i)
    set_member(members_[i], false);
  return result;
}

// Chooses by scores in single precision, which are twice as fast. False if one
// of them lies so near to its theta that the score proper may lie on the other
// side of it, or could not be represented.
bool WinnowPasses::choose_roughly(Terms terms, WeightType strengths) {
  constexpr std::size_t most_terms = std::size_t{1} << 20;
  constexpr WeightType largest_sum = FLT_MAX / 4;
  // Written so that it is false, too, for what is not a number.
  if (!(largest_weight_ * std::max(strengths, 1.0) < largest_sum &&
        terms.size() < most_terms)) {
    return false;
  }
  rough_scores_.assign(rough_scores_.size(), 0.0F);
  index_.add_rows<float>(terms, rough_weights_, rough_scores_);
  const Error error = error_of(terms.size(), strengths);
  chosen_.clear();
  if (all_are_right({rough_scores_.size(), rough_scores_.data(), thetas_.data(),
                     sides_.data(), largest_weights_.data(), error})) {
    return true;
  }
  bool is_certain = true;
  for (std::uint32_t son = 0; son < sons_.size(); ++son) {
    const WeightType distance =
        (rough_scores_[son] - thetas_[son]) * sides_[son];
    is_certain &= std::abs(distance) > error.bound(largest_weights_[son]);
    if (distance < 0.0)
      chosen_.push_back(son);
  }
  return is_certain;
}

// Members are promoted, all others demoted. A score that is not a number
// compares false both times: no update.
void WinnowPasses::choose_exactly(const DocProfile &doc) {
  index_.find_rows(doc, rows_);
  scores_.assign(scores_.size(), 0.0);
  index_.add_rows<WeightType>(rows_, weights_, scores_);
  chosen_.clear();
  for (std::uint32_t son = 0; son < sons_.size(); ++son) {
    if (is_member(son) ? scores_[son] <= thetas_[son]
                       : scores_[son] >= thetas_[son]) {
      chosen_.push_back(son);
    }
  }
}

void WinnowPasses::update(Terms terms) {
  const double alpha = params.winnow().alpha();
  const double beta = params.winnow().beta();
  for (const std::uint32_t son : chosen_)
    is_chosen_[son] = 1;
  for (const RowWeight<float> &term : terms) {
    index_.update_row(term.row, chosen_, is_chosen_,
                      [&](std::size_t place, std::uint32_t son) {
                        if (entries_[place] == nullptr)
                          return;
                        const bool promoted = is_member(son);
                        ClassProfileEntry &entry = *entries_[place];
                        entry.pos_weight *= promoted ? alpha : beta;
                        entry.neg_weight *= promoted ? beta : alpha;
                        count_up(promoted ? entry.promotions : entry.demotions);
                        set_weight(place, son);
                      });
  }
  for (const std::uint32_t son : chosen_)
    is_chosen_[son] = 0;
}

// To be called for an entry that has changed.
void WinnowPasses::set_weight(std::size_t place, std::uint32_t son) {
  const ClassProfileEntry &entry = *entries_[place];
  const WeightType weight =
      uses_neg_ ? entry.pos_weight - entry.neg_weight : entry.pos_weight;
  weights_[place] = weight;
  rough_weights_[place] = static_cast<float>(weight);
  largest_weights_[son] = std::max(largest_weights_[son], std::abs(weight));
  largest_weight_ = std::max(largest_weight_, largest_weights_[son]);
}

}  // namespace vek

#include "learning/winnowpass.h"

#include <algorithm>

#include "params/params.h"

namespace vek {

WinnowPasses::WinnowPasses(ClassData &father)
    : sons_(father.sons),
      uses_neg_(params.winnow().negative_weights()),
      index_(sons_),
      entries_(index_.nr_places()),
      scoring_(index_.nr_places()),
      scores_(index_.nr_sums()),
      is_member_(sons_.size()),
      is_chosen_(sons_.size()) {
  for (const ClassData *son_P : sons_) {
    son_numbers_.emplace(son_P, std::uint32_t(son_numbers_.size()));
  }
  index_.for_each(sons_, [&](std::size_t place, ClassProfileEntry &entry) {
    entries_[place] = {entry.pos_weight, entry.neg_weight,
                       static_cast<std::uint32_t>(entry.promotions),
                       static_cast<std::uint32_t>(entry.demotions)};
    scoring_[place] = scoring_weight(entries_[place]);
  });
}

void WinnowPasses::store() {
  index_.for_each(sons_, [&](std::size_t place, ClassProfileEntry &entry) {
    const Entry &trained = entries_[place];
    entry.pos_weight = trained.pos;
    entry.neg_weight = trained.neg;
    entry.promotions = static_cast<std::int32_t>(trained.promotions);
    entry.demotions = static_cast<std::int32_t>(trained.demotions);
  });
}

void WinnowPasses::reserve(std::size_t nr_docs, std::size_t nr_terms) {
  documents_.reserve(nr_docs);
  members_.reserve(nr_docs);
  terms_.reserve(nr_terms);
}

void WinnowPasses::add_document(const DocProfile &doc,
                                const DocumentMap::ClassList &members) {
  for (const DocProfileEntry &entry : doc) {
    const std::uint32_t row = index_.row_of(entry.term);
    if (row != TermIndex::no_row)
      terms_.push_back({row, entry.weight});
  }
  for (const ClassData *class_data_P : members) {
    // A document filed in the father itself has the father in its list.
    const auto place = son_numbers_.find(class_data_P);
    if (place != son_numbers_.end())
      members_.push_back(place->second);
  }
  documents_.push_back({terms_.size(), members_.size()});
}

int WinnowPasses::train_document(std::uint32_t number) {
  const Document begin = number == 0 ? Document{0, 0} : documents_[number - 1];
  const Document end = documents_[number];
  score(begin.terms_end, end.terms_end);
  for (std::size_t i = begin.members_end; i < end.members_end; ++i) {
    is_member_[members_[i]] = 1;
  }
  const int result = choose_sons();
  if (result != 0)
    update(begin.terms_end, end.terms_end);
  for (std::size_t i = begin.members_end; i < end.members_end; ++i) {
    is_member_[members_[i]] = 0;
  }
  return result;
}

void WinnowPasses::score(std::size_t terms_begin, std::size_t terms_end) {
  scores_.assign(scores_.size(), 0.0);
  index_.add_rows(
      std::span(terms_).subspan(terms_begin, terms_end - terms_begin), scoring_,
      scores_);
}

// Members are promoted, all others demoted. A score that is not a number
// compares false both times: no update.
int WinnowPasses::choose_sons() {
  const double theta_plus = params.winnow().theta_plus();
  const double theta_min = params.winnow().theta_min();
  chosen_.resize(sons_.size());
  std::size_t nr_chosen = 0;
  for (std::uint32_t son = 0; son < sons_.size(); ++son) {
    const bool is_wrong = is_member_[son] != 0 ? scores_[son] <= theta_plus
                                               : scores_[son] >= theta_min;
    // Written in any case: whether to would be guessed wrong too often.
    chosen_[nr_chosen] = son;
    nr_chosen += is_wrong ? 1 : 0;
  }
  chosen_.resize(nr_chosen);
  if (chosen_.empty())
    return 0;
  return is_member_[chosen_.back()] != 0 ? 1 : -1;
}

void WinnowPasses::update(std::size_t terms_begin, std::size_t terms_end) {
  const double alpha = params.winnow().alpha();
  const double beta = params.winnow().beta();
  for (const std::uint32_t son : chosen_)
    is_chosen_[son] = 1;
  for (std::size_t i = terms_begin; i < terms_end; ++i) {
    index_.update_row(terms_[i].row, chosen_, is_chosen_,
                      [&](std::size_t place, std::uint32_t son) {
                        const bool promoted = is_member_[son] != 0;
                        Entry &entry = entries_[place];
                        entry.pos *= promoted ? alpha : beta;
                        entry.neg *= promoted ? beta : alpha;
                        ++(promoted ? entry.promotions : entry.demotions);
                        scoring_[place] = scoring_weight(entry);
                      });
  }
  for (const std::uint32_t son : chosen_)
    is_chosen_[son] = 0;
}

WeightType WinnowPasses::scoring_weight(const Entry &entry) const {
  return uses_neg_ ? entry.pos - entry.neg : entry.pos;
}

}  // namespace vek

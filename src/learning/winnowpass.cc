#include "learning/winnowpass.h"

#include <algorithm>

#include "params/params.h"

namespace vek {

WinnowPasses::WinnowPasses(ClassData &father)
    : sons_(father.sons),
      index_(sons_),
      pos_(index_.nr_places()),
      neg_(index_.nr_places()),
      scoring_(index_.nr_places()),
      counters_(index_.nr_places()),
      scores_(sons_.size()),
      is_member_(sons_.size()),
      actions_(sons_.size()) {
  for (const ClassData *son_P : sons_) {
    son_numbers_.emplace(son_P, std::uint32_t(son_numbers_.size()));
  }
  index_.for_each(sons_, [&](std::size_t place, ClassProfileEntry &entry) {
    pos_[place] = entry.pos_weight;
    neg_[place] = entry.neg_weight;
    counters_[place] = {entry.promotions, entry.demotions};
    set_scoring_weight(place);
  });
}

void WinnowPasses::store() {
  index_.for_each(sons_, [&](std::size_t place, ClassProfileEntry &entry) {
    entry.pos_weight = pos_[place];
    entry.neg_weight = neg_[place];
    entry.promotions = counters_[place].promotions;
    entry.demotions = counters_[place].demotions;
  });
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
  const int result = choose_actions();
  for (std::size_t i = begin.members_end; i < end.members_end; ++i) {
    is_member_[members_[i]] = 0;
  }
  if (result != 0)
    update(begin.terms_end, end.terms_end);
  return result;
}

void WinnowPasses::score(std::size_t terms_begin, std::size_t terms_end) {
  std::fill(scores_.begin(), scores_.end(), 0.0);
  for (std::size_t i = terms_begin; i < terms_end; ++i) {
    const WeightType weight = terms_[i].weight;
    const std::size_t row_end = index_.row_end(terms_[i].row);
    for (std::size_t place = index_.row_begin(terms_[i].row); place < row_end;
         ++place) {
      scores_[index_.class_number(place)] += scoring_[place] * weight;
    }
  }
}

// A score that is not a number compares false both times: no update.
int WinnowPasses::choose_actions() {
  const double theta_plus = params.winnow().theta_plus();
  const double theta_min = params.winnow().theta_min();
  int result = 0;
  for (std::size_t son = 0; son < scores_.size(); ++son) {
    actions_[son] = Action::none;
    if (is_member_[son] == 0) {
      if (scores_[son] >= theta_min) {
        actions_[son] = Action::demote;
        result = -1;
      }
    } else if (scores_[son] <= theta_plus) {
      actions_[son] = Action::promote;
      result = 1;
    }
  }
  return result;
}

void WinnowPasses::update(std::size_t terms_begin, std::size_t terms_end) {
  for (std::size_t i = terms_begin; i < terms_end; ++i) {
    const std::size_t row_end = index_.row_end(terms_[i].row);
    for (std::size_t place = index_.row_begin(terms_[i].row); place < row_end;
         ++place) {
      switch (actions_[index_.class_number(place)]) {
        case Action::none:
          break;
        case Action::promote:
          promote(place);
          break;
        case Action::demote:
          demote(place);
          break;
      }
    }
  }
}

void WinnowPasses::promote(std::size_t place) {
  pos_[place] *= params.winnow().alpha();
  neg_[place] *= params.winnow().beta();
  ++counters_[place].promotions;
  set_scoring_weight(place);
}

void WinnowPasses::demote(std::size_t place) {
  pos_[place] *= params.winnow().beta();
  neg_[place] *= params.winnow().alpha();
  ++counters_[place].demotions;
  set_scoring_weight(place);
}

void WinnowPasses::set_scoring_weight(std::size_t place) {
  scoring_[place] = params.winnow().negative_weights()
                        ? pos_[place] - neg_[place]
                        : pos_[place];
}

}  // namespace vek

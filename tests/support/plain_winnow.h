// Winnow's training said plainly: names looked up again and again, one son
// after the other, each step on the entries of the class profiles. Slow, and
// only there to be compared with.
#ifndef VEK_TESTS_SUPPORT_PLAIN_WINNOW_H_
#define VEK_TESTS_SUPPORT_PLAIN_WINNOW_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "classes/classtab.h"
#include "intake/docprof.h"
#include "params/params.h"
#include "store/database.h"

namespace vek {

struct PlainWinnow {
  using TrainingList =
      std::vector<std::pair<std::string, DocumentMap::ClassList>>;

  static WeightType score_document(const ClassProfile &profile,
                                   const DocProfile &doc) {
    WeightType score = params.algorithm() == Algorithm::sbc ? 1.0 : 0.0;
    for (const DocProfileEntry &entry : doc) {
      const ClassProfileEntry *e = profile.find(entry.term);
      if (params.algorithm() == Algorithm::sbc) {
        score *= e != nullptr ? e->pos_weight : 0.01;
      } else if (e != nullptr) {
        const bool both = params.algorithm() == Algorithm::winnow &&
                          params.winnow().negative_weights();
        score += (both ? e->pos_weight - e->neg_weight : e->pos_weight) *
                 entry.weight;
      }
    }
    return score;
  }

  static void init_winnow_weights(ClassData &data) {
    const ClassData &father = *data.father;
    WeightType d = 10000.0;
    // Documents that weigh nothing count as none.
    if (father.nr_docs != 0 && father.weight_sum != 0.0)
      d = father.weight_sum / father.nr_docs;
    if (params.normalize() == Normalize::linear)
      d = 1.0;
    const WeightType pos = 2.0 / d;
    const WeightType neg = 1.0 / d;
    data.profile.set_init_weights(pos, neg);
    for (auto &[term, entry] : data.profile) {
      entry.pos_weight = pos;
      entry.neg_weight = neg;
    }
  }

  static TrainingList make_training_list(const DocumentMap &docs) {
    TrainingList list(docs.begin(), docs.end());
    for (std::size_t i = 1; i < list.size(); ++i)
      std::swap(list[i], list[static_cast<std::size_t>(lrand48()) % (i + 1)]);
    return list;
  }

  // Promotes a class that missed a member, demotes one that took another
  // document; of the terms of the document, those that the class knows.
  static void update(ClassProfile &profile, const DocProfile &doc,
                     bool promoted) {
    const double alpha = params.winnow().alpha();
    const double beta = params.winnow().beta();
    for (const DocProfileEntry &entry : doc) {
      if (ClassProfileEntry *e = profile.find(entry.term); e != nullptr) {
        e->pos_weight *= promoted ? alpha : beta;
        e->neg_weight *= promoted ? beta : alpha;
        ++(promoted ? e->promotions : e->demotions);
      }
    }
  }

  static int winnow_update(const std::vector<ClassData *> &sons,
                           const DocProfile &doc,
                           const DocumentMap::ClassList &classes) {
    int result = 0;
    for (ClassData *son_P : sons) {
      const WeightType s = score_document(son_P->profile, doc);
      const bool is_member = std::ranges::count(classes, son_P) > 0;
      if (is_member ? s <= params.winnow().theta_plus()
                    : s >= params.winnow().theta_min()) {
        update(son_P->profile, doc, is_member);
        result = is_member ? 1 : -1;
      }
    }
    return result;
  }

  // Returns a line for each pass, as the log has it.
  static std::string train_winnow_class(ClassData &father) {
    for (const auto &[name, classes] : father.train_docs)
      data_base.get(name)->weigh(father.id);
    father.profile.add_to_weight_sum(father.id);
    for (ClassData *son_P : father.sons)
      init_winnow_weights(*son_P);
    std::string lines;
    int unchanged = 0;
    for (unsigned pass = 1; pass <= params.winnow().max_iters(); ++pass) {
      int promotions = 0;
      int demotions = 0;
      for (const auto &[name, classes] :
           make_training_list(father.train_docs)) {
        const int result =
            winnow_update(father.sons, *data_base.get(name), classes);
        ++(result > 0 ? promotions : result < 0 ? demotions : unchanged);
      }
      lines += "iteration " + std::to_string(pass) + ": " +
               std::to_string(promotions) + " promotions, " +
               std::to_string(demotions) + " demotions\n";
      if (promotions + demotions == 0)
        break;
    }
    return lines;
  }
};

}  // namespace vek

#endif  // VEK_TESTS_SUPPORT_PLAIN_WINNOW_H_

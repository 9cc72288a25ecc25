// Winnow's training said plainly: names looked up again and again, one son
// after the other, each step on the entries of the class profiles. Slow, and
// only there to be compared with.
#ifndef VEK_TESTS_SUPPORT_PLAIN_WINNOW_H_
#define VEK_TESTS_SUPPORT_PLAIN_WINNOW_H_

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "support/collection_fixture.h"

namespace vek {

class PlainWinnow {
 public:
  explicit PlainWinnow(SmallCollection &collection)
      : collection_(collection), params_(collection.params) {}

  // Returns a line for each pass, as the messages have it.
  std::string train() {
    std::string lines;
    for (auto &[key, data] : collection_.classes) {
      if (!data.sons.empty() && !data.train_docs.empty())
        lines += train_father(data);
    }
    return lines;
  }

 private:
  WeightType score(const ClassProfile &profile, const DocProfile &doc) const {
    WeightType sum = 0.0;
    for (const DocProfileEntry &entry : doc) {
      if (const ClassProfileEntry *e = profile.find(entry.term); e != nullptr) {
        const double both = params_.winnow.negative_weights ? e->neg_weight : 0;
        sum += (e->pos_weight - both) * entry.weight;
      }
    }
    return sum;
  }

  void start(ClassData &data) const {
    const ClassData &father = *data.father;
    WeightType d = 10000.0;
    // Documents that weigh nothing count as none.
    if (father.nr_docs != 0 && father.weight_sum != 0.0)
      d = father.weight_sum / father.nr_docs;
    if (params_.normalize == Normalize::linear)
      d = 1.0;
    data.profile.set_init_weights(2.0 / d, 1.0 / d);
    for (auto &[term, entry] : data.profile) {
      entry.pos_weight = 2.0 / d;
      entry.neg_weight = 1.0 / d;
    }
  }

  static auto shuffled(const DocumentMap &docs) {
    std::vector<std::pair<std::string, DocumentMap::ClassList>> list(
        docs.begin(), docs.end());
    for (std::size_t i = 1; i < list.size(); ++i)
      std::swap(list[i], list[static_cast<std::size_t>(lrand48()) % (i + 1)]);
    return list;
  }

  // Promotes a class that missed a member, demotes one that took another
  // document; of the terms of the document, those that the class knows.
  void update(ClassProfile &profile, const DocProfile &doc,
              bool promoted) const {
    const auto &[max_iters, alpha, beta, plus, min, negative] = params_.winnow;
    for (const DocProfileEntry &entry : doc) {
      if (ClassProfileEntry *e = profile.find(entry.term); e != nullptr) {
        e->pos_weight *= promoted ? alpha : beta;
        e->neg_weight *= promoted ? beta : alpha;
        ++(promoted ? e->promotions : e->demotions);
      }
    }
  }

  int train_document(const std::vector<ClassData *> &sons,
                     const DocProfile &doc,
                     const DocumentMap::ClassList &classes) const {
    int result = 0;
    for (ClassData *son_P : sons) {
      const WeightType s = score(son_P->profile, doc);
      const bool is_member = std::ranges::count(classes, son_P) > 0;
      if (is_member ? s <= params_.winnow.theta_plus
                    : s >= params_.winnow.theta_min) {
        update(son_P->profile, doc, is_member);
        result = is_member ? 1 : -1;
      }
    }
    return result;
  }

  std::string train_father(ClassData &father) {
    for (const auto &[name, classes] : father.train_docs)
      collection_.documents.get(name)->weigh_and_add(father, params_);
    for (const auto &[term, entry] : father.profile)
      father.weight_sum += entry.weight;
    for (ClassData *son_P : father.sons)
      start(*son_P);
    std::string lines;
    for (unsigned pass = 1; pass <= params_.winnow.max_iters; ++pass) {
      int counts[] = {0, 0, 0};
      for (const auto &[name, classes] : shuffled(father.train_docs)) {
        const DocProfile &doc = *collection_.documents.get(name);
        ++counts[1 + train_document(father.sons, doc, classes)];
      }
      lines += "iteration " + std::to_string(pass) + ": " +
               std::to_string(counts[2]) + " promotions, " +
               std::to_string(counts[0]) + " demotions\n";
      if (counts[0] + counts[2] == 0)
        break;
    }
    return lines;
  }

  SmallCollection &collection_;
  const Params &params_;
};

}  // namespace vek

#endif  // VEK_TESTS_SUPPORT_PLAIN_WINNOW_H_

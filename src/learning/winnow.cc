#include "learning/winnow.h"

#include <cassert>
#include <cstdlib>
#include <numeric>
#include <utility>

#include "classes/termset.h"
#include "evaluation/scoretable.h"
#include "evaluation/testing.h"
#include "intake/analyser.h"
#include "learning/winnowpass.h"
#include "params/params.h"
#include "run/log.h"
#include "run/progress.h"
#include "store/database.h"

namespace vek {
namespace {

constexpr WeightType start_pos_weight = 2.0;
constexpr WeightType start_neg_weight = 1.0;
constexpr WeightType mean_without_documents = 10000.0;

// Weighs the documents of a father against it and sums up what they weigh.
// The strengths are not touched again during training. Returns how many terms
// the documents have.
std::size_t weigh_documents(ClassData &father) {
  std::size_t nr_terms = 0;
  Progress progress("Winnow Initialization", class_table.get_name(father.id),
                    father.train_docs.size());
  for (const auto &[name, classes] : father.train_docs) {
    DocProfile &doc = *data_base.get(name);
    doc.weigh(father.id);
    nr_terms += doc.size();
    progress.count();
  }
  father.profile.add_to_weight_sum(father.id);
  return nr_terms;
}

WeightType mean_weight_sum(const ClassData &father) {
  const WeightType mean = father.nr_docs == 0
                              ? mean_without_documents
                              : father.weight_sum / double(father.nr_docs);
  return mean == 0.0 ? mean_without_documents : mean;
}

std::vector<const std::string *> load_documents(WinnowPasses &passes,
                                                const ClassData &father) {
  std::vector<const std::string *> names;
  for (const auto &[name, classes] : father.train_docs) {
    passes.add_document(*data_base.get(name), classes);
    names.push_back(&name);
  }
  return names;
}

struct PassCounts {
  int promotions = 0;
  int demotions = 0;
};

// Counts documents, not updates: one that changed several sons counts once, on
// the side of the last.
PassCounts winnow_pass(WinnowPasses &passes,
                       const std::vector<const std::string *> &names) {
  PassCounts counts;
  for (const std::uint32_t number :
       make_training_list(static_cast<std::uint32_t>(names.size()))) {
    logf_if_verbose(4, "training document `%s'", names[number]->c_str());
    const int result = passes.train_document(number);
    if (result >= 1)
      ++counts.promotions;
    if (result < 0)
      ++counts.demotions;
  }
  return counts;
}

}  // namespace

void train_winnow() {
  for (auto &[key, data] : class_table) {
    if (data.sons.empty() || data.train_docs.empty())
      continue;
    logf_always(1,
                "training winnow on `%s' with %d documents: %d active terms.",
                key.name.c_str(), static_cast<int>(data.train_docs.size()),
                static_cast<int>(active_terms.size()));
    logf_if_verbose(1, "trained %d iterations",
                    static_cast<int>(train_winnow_class(data)));
  }
  clear_scorers();
  set_leaf_thresholds();
  data_base.clear_cache();
}

unsigned train_winnow_class(ClassData &father) {
  const std::size_t nr_terms = weigh_documents(father);
  for (ClassData *son_P : father.sons)
    init_winnow_weights(*son_P);
  WinnowPasses passes(father);
  passes.reserve(father.train_docs.size(), nr_terms);
  const std::vector<const std::string *> names = load_documents(passes, father);
  unsigned nr_passes = 0;
  while (nr_passes < params.winnow().max_iters()) {
    ++nr_passes;
    const PassCounts counts = winnow_pass(passes, names);
    logf_always(3, "iteration %d: %d promotions, %d demotions",
                static_cast<int>(nr_passes), counts.promotions,
                counts.demotions);
    if (counts.promotions + counts.demotions == 0)
      break;
  }
  return nr_passes;
}

void init_winnow_weights(ClassData &data) {
  assert(data.father != 0);
  WeightType pos = start_pos_weight;
  WeightType neg = start_neg_weight;
  if (params.normalize() != Normalize::linear) {
    const WeightType mean = mean_weight_sum(*data.father);
    pos = start_pos_weight / mean;
    neg = start_neg_weight / mean;
  }
  data.profile.set_init_weights(pos, neg);
  for (ClassProfile::Slot &slot : data.profile) {
    slot.entry.pos_weight = pos;
    slot.entry.neg_weight = neg;
  }
}

std::vector<std::uint32_t> make_training_list(std::uint32_t nr_docs) {
  std::vector<std::uint32_t> list(nr_docs);
  std::iota(list.begin(), list.end(), 0U);
  for (std::uint32_t i = 1; i < nr_docs; ++i) {
    const auto other = static_cast<std::uint32_t>(lrand48() % (long{i} + 1));
    std::swap(list[i], list[other]);
  }
  return list;
}

bool classify_new_document(const std::string &name, Ranks &ranks) {
  ClassData &top = class_table.get_data(0);
  DocProfile &doc = *document_profile(name);
  Ranks scores_of_sons;
  score_sons(&top, doc, scores_of_sons);
  scores_of_sons.sort();
  const bool significant = classify_document(&top, doc, scores_of_sons, ranks);
  const char *verdict = significant ? "significant" : "not significant";
  if (ranks.empty()) {
    logf_if_verbose(4, "classified document `%s' in no class (%s)",
                    name.c_str(), verdict);
  } else {
    const std::uint32_t id = ranks.front().class_data_P->id;
    logf_if_verbose(4, "classified document `%s' in class `%s' (%s)",
                    name.c_str(), class_table.get_name(id).c_str(), verdict);
  }
  return significant;
}

}  // namespace vek

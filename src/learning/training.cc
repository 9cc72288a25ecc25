#include "learning/training.h"

#include <algorithm>
#include <boost/sort/spreadsort/integer_sort.hpp>

#include "classes/selection.h"

namespace vek {
namespace {

// Gathers what one class needs: the counts, and the statistics of its
// documents.
void collect_statistics(const Training &training, ClassData &data,
                        TermStatsCollector &collector) {
  for (ClassData *son_P : data.sons) {
    son_P->nr_others = static_cast<std::uint32_t>(data.train_docs.size() -
                                                  son_P->train_docs.size());
  }
  // Set, while nr_terms below is added to: the documents are those of this
  // run's lists, the occurrences those of all runs.
  data.nr_docs = static_cast<std::uint32_t>(data.train_docs.size());
  // Read past the cache: until terms are selected, that would keep every
  // document with all its terms.
  DocProfile profile;
  for (const auto &[name, classes] : data.train_docs) {
    profile.clear();
    training.documents.read_profile(name, profile);
    profile.update_statistics(collector);
    data.nr_terms += profile.total();
  }
  data.term_stats = collector.take();
  training.messages.note(2,
                         formatted("Collected statistics for <%s>",
                                   training.classes.get_name(data.id).c_str()));
}

// The number of terms that the class has, earlier runs and this one together.
std::size_t count_terms(const ClassData &data) {
  return data.profile.size() +
         static_cast<std::size_t>(std::ranges::count_if(
             data.term_stats, [&](const TermStats &stats) {
               return data.profile.find(stats.term) == nullptr;
             }));
}

// Moves the statistics of the active terms into the class's profile and takes
// all others out of it. Terms of earlier runs that did not occur in this one
// stay as they are. std::erase_if() asks about each record exactly once, so
// that the predicate may keep the count.
void keep_active_terms(ClassData &data, const TermSet &active) {
  std::erase_if(data.term_stats, [&](const TermStats &stats) {
    if (active.contains(stats.term))
      return false;
    // First the count, then the entry: tf() of an erased term is 0.
    data.nr_terms -= data.profile.tf(stats.term) + stats.tf;
    data.profile.erase(stats.term);
    return true;
  });
  // In the profile's own order, so that it need not be sorted.
  boost::sort::spreadsort::integer_sort(
      data.term_stats.begin(), data.term_stats.end(),
      [](const TermStats &stats, unsigned offset) {
        return stats.term >> offset;
      },
      [](const TermStats &a, const TermStats &b) { return a.term < b.term; });
  if (!data.term_stats.empty()) {
    data.profile.reserve(
        std::max(data.profile.size(), data.term_stats.size()),
        std::max(data.profile.largest_term(), data.term_stats.back().term));
  }
  for (const TermStats &stats : data.term_stats) {
    ClassProfileEntry &entry = data.profile[stats.term];
    entry.tf += stats.tf;
    entry.df += stats.df;
    // Winnow starts from fresh weights in each training run.
    entry.promotions = 0;
    entry.demotions = 0;
  }
  data.term_stats = {};
}

}  // namespace

void update_profiles(const Training &training, std::size_t nr_terms) {
  ClassTable &classes = training.classes;
  // Three walks over all classes, one behind the other. A term that passes in
  // any class is active in all, so no class may drop a term before every class
  // has judged.
  TermStatsCollector collector(nr_terms);
  for (std::uint32_t id = 0; id < classes.size(); ++id)
    collect_statistics(training, classes.get_data(id), collector);
  const Selection selection = {
      training.params.term_selection, training.params.selectivity,
      classes.size() == 0 ? 0 : count_terms(classes.get_data(0)),
      classes.size()};
  for (std::uint32_t id = 0; id < classes.size(); ++id)
    select_terms(selection, classes.get_data(id), training.active_terms);
  for (std::uint32_t id = 0; id < classes.size(); ++id)
    keep_active_terms(classes.get_data(id), training.active_terms);
}

void for_each_father(const Training &training, const char *what,
                     const std::function<void(ClassData &father)> &train) {
  for (auto &[key, data] : training.classes) {
    if (data.sons.empty() || data.train_docs.empty())
      continue;
    training.messages.note(
        1, formatted("training %s on `%s' with %zu documents: %zu active "
                     "terms.",
                     what, key.name.c_str(), data.train_docs.size(),
                     training.active_terms.size()));
    train(data);
  }
}

}  // namespace vek

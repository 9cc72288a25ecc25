#include "classes/selection.h"

#include <algorithm>
#include <cmath>

#include "intake/docprof.h"
#include "params/params.h"
#include "run/log.h"
#include "store/database.h"
#include "vocabulary/termtab.h"

namespace vek {
namespace {

// Term frequencies and document frequencies, those of earlier runs included.
double term_frequency(std::uint32_t term, const TermStats &stats,
                      const ClassData &data) {
  return double(data.profile.tf(term) + stats.tf);
}
double document_frequency(std::uint32_t term, const TermStats &stats,
                          const ClassData &data) {
  return double(data.profile.df(term) + stats.df);
}

bool term_passes(std::uint32_t term, const TermStats &stats,
                 const ClassData &data, std::size_t vocabulary_size) {
  switch (params.term_selection()) {
    case TermSelection::none:
      return true;
    case TermSelection::uncertainty:
      return term_passes_uncertainty(stats, data.nr_docs);
    case TermSelection::termfreq:
      return term_passes_termfreq(term, stats, data);
    case TermSelection::docfreq:
      return term_passes_docfreq(term, stats, data);
    case TermSelection::tfidf:
      return term_passes_tfidf(term, stats, data);
    case TermSelection::infogain:
      return term_passes_infogain(term, stats, data, vocabulary_size);
  }
  return true;
}

// The number of terms that the class has, earlier runs and this one together.
std::size_t count_terms(const ClassData &data) {
  std::size_t nr_terms = data.profile.size();
  for (const auto &[term, stats] : data.term_stats) {
    if (data.profile.find(term) == nullptr)
      ++nr_terms;
  }
  return nr_terms;
}

}  // namespace

bool term_passes_uncertainty(const TermStats &stats, std::uint32_t nr_docs) {
  const double n = nr_docs;
  const double mean = double(stats.sum) / n;
  const double variance = double(stats.sum_of_squares) / n - mean * mean;
  // The root of a negative number would compare false too, and set errno.
  if (variance < 0.0)
    return false;
  return mean > params.selectivity() * std::sqrt(variance) && stats.sum != 0;
}

bool term_passes_termfreq(std::uint32_t term, const TermStats &stats,
                          const ClassData &data) {
  return term_frequency(term, stats, data) >=
         params.selectivity() * double(data.nr_terms) / double(data.nr_docs);
}

bool term_passes_docfreq(std::uint32_t term, const TermStats &stats,
                         const ClassData &data) {
  return document_frequency(term, stats, data) >=
         params.selectivity() * double(data.nr_docs);
}

bool term_passes_tfidf(std::uint32_t term, const TermStats &stats,
                       const ClassData &data) {
  return term_frequency(term, stats, data) /
             document_frequency(term, stats, data) >=
         params.selectivity() * double(data.nr_docs);
}

bool term_passes_infogain(std::uint32_t term, const TermStats &stats,
                          const ClassData &data, std::size_t vocabulary_size) {
  const double share =
      term_frequency(term, stats, data) / double(data.nr_terms);
  return share * std::log(double(vocabulary_size) * share *
                          double(class_table.size())) >=
         params.selectivity();
}

void select_terms(ClassData &data, std::size_t vocabulary_size,
                  TermSet &active) {
  const bool all_pass = params.selectivity() == 0.0;
  for (const auto &[term, stats] : data.term_stats) {
    if (all_pass || term_passes(term, stats, data, vocabulary_size)) {
      active.insert(term);
    }
  }
}

void ClassTable::update_profiles() {
  std::size_t vocabulary_size = 0;
  for (std::uint32_t id = 0; id < size(); ++id) {
    collect_statistics(get_data(id));
    if (id == 0)
      vocabulary_size = count_terms(get_data(0));
  }
  for (std::uint32_t id = 0; id < size(); ++id) {
    select_terms(get_data(id), vocabulary_size, active_terms);
  }
  remove_inactive_terms(active_terms);
}

void ClassTable::collect_statistics(ClassData &data) {
  for (ClassData *son_P : data.sons) {
    son_P->nr_others = static_cast<std::uint32_t>(data.train_docs.size() -
                                                  son_P->train_docs.size());
  }
  data.nr_docs = static_cast<std::uint32_t>(data.train_docs.size());
  data.term_stats.set_nr_terms(term_table.size());
  DocProfile profile;
  for (const auto &[name, classes] : data.train_docs) {
    profile.clear();
    data_base.read_profile(name, profile);
    profile.update_statistics(data);
  }
  data.term_stats.settle();
  logf_always(2, "Collected statistics for <%s>", get_name(data.id).c_str());
}

void ClassTable::remove_inactive_terms(const TermSet &active) {
  for (std::uint32_t id = 0; id < size(); ++id) {
    ClassData &data = get_data(id);
    data.term_stats.keep_if([&](const TermStatsTable::Slot &slot) {
      if (active.contains(slot.term))
        return true;
      data.nr_terms -= data.profile.tf(slot.term) + slot.stats.tf;
      data.profile.erase(slot.term);
      return false;
    });
    data.profile.reserve(std::max(data.profile.size(), data.term_stats.size()));
    // Sorted, so that the profile need not be.
    for (const auto &[term, stats] : data.term_stats) {
      ClassProfileEntry &entry = data.profile[term];
      entry.tf += stats.tf;
      entry.df += stats.df;
      entry.promotions = 0;
      entry.demotions = 0;
    }
    data.term_stats = {};
  }
}

}  // namespace vek

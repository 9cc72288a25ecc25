#include "classes/selection.h"

#include <cmath>

#include "intake/docprof.h"
#include "params/params.h"
#include "run/log.h"
#include "store/database.h"
#include "vocabulary/termtab.h"

namespace vek {
namespace {

// tf >= (s * T) / N.
bool term_passes_termfreq(std::uint32_t term, const ClassData &data) {
  return double(data.profile.tf(term)) >=
         params.selectivity() * double(data.nr_terms) / double(data.nr_docs);
}

// df >= s * N.
bool term_passes_docfreq(std::uint32_t term, const ClassData &data) {
  return double(data.profile.df(term)) >=
         params.selectivity() * double(data.nr_docs);
}

bool term_passes(std::uint32_t term, const TermStats &stats,
                 const ClassData &data, std::size_t vocabulary_size) {
  switch (params.term_selection()) {
    case TermSelection::none:
      return true;
    case TermSelection::uncertainty:
      return term_passes_uncertainty(stats, data.nr_docs);
    case TermSelection::termfreq:
      return term_passes_termfreq(term, data);
    case TermSelection::docfreq:
      return term_passes_docfreq(term, data);
    case TermSelection::tfidf:
      return term_passes_tfidf(term, data);
    case TermSelection::infogain:
      return term_passes_infogain(term, data, vocabulary_size);
  }
  return true;
}

}  // namespace

bool term_passes_uncertainty(const TermStats &stats, std::uint32_t nr_docs) {
  const double n = nr_docs;
  const double mean = double(stats.sum) / n;
  const double variance = double(stats.sum_of_squares) / n - mean * mean;
  // The root of a negative number compares false.
  return mean > params.selectivity() * std::sqrt(variance) && stats.sum != 0;
}

bool term_passes_tfidf(std::uint32_t term, const ClassData &data) {
  const ClassProfileEntry *entry_P = data.profile.find(term);
  if (entry_P == nullptr)
    return false;
  return double(entry_P->tf) / double(entry_P->df) >=
         params.selectivity() * double(data.nr_docs);
}

bool term_passes_infogain(std::uint32_t term, const ClassData &data,
                          std::size_t vocabulary_size) {
  const double share = double(data.profile.tf(term)) / double(data.nr_terms);
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
      vocabulary_size = get_profile(0).size();
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
  data.profile.prepare(term_table.size());
  for (const auto &[name, classes] : data.train_docs) {
    DocProfile profile;
    data_base.read_profile(name, profile);
    profile.update_statistics(data);
  }
  logf_always(2, "Collected statistics for <%s>", get_name(data.id).c_str());
}

void ClassTable::remove_inactive_terms(const TermSet &active) {
  for (std::uint32_t id = 0; id < size(); ++id) {
    ClassData &data = get_data(id);
    for (const auto &[term, stats] : data.term_stats) {
      if (active.contains(term))
        continue;
      data.nr_terms -= data.profile.tf(term);
      data.profile.erase(term);
    }
    data.term_stats = {};
  }
}

}  // namespace vek

#include "learning/heldout.h"

#include <tsl/robin_map.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <limits>
#include <memory>
#include <new>
#include <numeric>
#include <sstream>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

#include "classes/termset.h"
#include "evaluation/scorer.h"
#include "learning/training.h"

namespace vek {
namespace {

class MemoryDocuments : public Documents {
 public:
  MemoryDocuments(const TrainingSet &set, const TermSet &active_terms)
      : Documents(active_terms), set_(set) {}
  void read_profile(const std::string &name, DocProfile &profile) override {
    // Documents are mostly asked for in the order of their names.
    const auto &all = set_.documents();
    if (++last_ >= all.size() || *all[last_].name_P != name)
      last_ = set_.place_of(name);
    profile = all[last_].profile;
  }

 private:
  const TrainingSet &set_;
  std::size_t last_ = 0;
};

// The same classes with the same ids, and of the training documents those for
// which `is_kept`.
template <class IsKept>
void copy_classes(const ClassTable &from, IsKept is_kept, ClassTable &to) {
  for (std::uint32_t id = 0; id < from.size(); ++id) {
    const ClassData *const father_P = from.get_data(id).father;
    to.enter(from.get_name(id), father_P == nullptr ? 0 : father_P->id);
  }
  for (std::uint32_t id = 0; id < from.size(); ++id) {
    ClassData &copy = to.get_data(id);
    for (const auto &[name, classes] : from.get_data(id).train_docs) {
      if (!is_kept(name))
        continue;
      for (const ClassData *class_P : classes)
        copy.train_docs.add(name, &to.get_data(class_P->id));
    }
  }
}

// A number that is as good as drawn by chance (the finaliser of MurmurHash3).
std::uint64_t mixed(std::uint64_t x) {
  x = (x ^ (x >> 33)) * 0xFF51AFD7ED558CCD;
  x = (x ^ (x >> 33)) * 0xC4CEB9FE1A85EC53;
  return x ^ (x >> 33);
}

// For each document the first one of its group, where two that share a band of
// minima are of one group. Of two documents with a share s of common terms
// that happens with the probability 1 - (1 - s^3)^6: 0.99 for 0.8, 0.15 for
// 0.3.
std::vector<std::size_t> group_alike(const TrainingSet &set) {
  constexpr std::size_t nr_bands = 6;
  constexpr std::size_t nr_rows = 3;
  constexpr std::size_t nr_minima = nr_bands * nr_rows;
  std::vector<std::size_t> leaders(set.documents().size());
  std::iota(leaders.begin(), leaders.end(), std::size_t{0});
  const auto leader_of = [&](std::size_t i) {
    while (leaders[i] != i)
      i = leaders[i] = leaders[leaders[i]];
    return i;
  };
  std::array<tsl::robin_map<std::uint64_t, std::size_t>, nr_bands> seen;
  for (std::size_t i = 0; i < leaders.size(); ++i) {
    std::array<std::uint64_t, nr_minima> minima = {};
    minima.fill(~std::uint64_t{0});
    for (const DocProfileEntry &entry : set.documents()[i].profile) {
      std::uint64_t hash = entry.term;
      for (std::uint64_t &minimum : minima) {
        hash = mixed(hash + 0x9E3779B97F4A7C15);
        minimum = std::min(minimum, hash);
      }
    }
    // Documents without terms are alike, and yet tell nothing of each other.
    if (set.documents()[i].profile.size() == 0)
      continue;
    for (std::size_t band = 0; band < nr_bands; ++band) {
      std::uint64_t key = 0;
      for (std::size_t row = 0; row < nr_rows; ++row)
        key = mixed(key ^ minima[band * nr_rows + row]);
      const auto [place, is_new] = seen[band].try_emplace(key, i);
      if (is_new)
        continue;
      const std::size_t a = leader_of(place->second);
      const std::size_t b = leader_of(i);
      leaders[std::max(a, b)] = std::min(a, b);
    }
  }
  for (std::size_t i = 0; i < leaders.size(); ++i)
    leaders[i] = leader_of(i);
  return leaders;
}

// FNV-1a.
std::uint64_t hash_of(std::string_view name) {
  std::uint64_t hash = 0xCBF29CE484222325;
  for (const char character : name)
    hash = (hash ^ static_cast<unsigned char>(character)) * 0x100000001B3;
  return hash;
}

}  // namespace

TrainingSet::TrainingSet(const ClassTable &classes, Documents &documents) {
  if (classes.size() == 0)
    return;
  const ClassData &top = classes.get_data(0);
  documents_.reserve(top.train_docs.size());
  for (const auto &[name, sons] : top.train_docs) {
    documents_.push_back({&name, {}, {}});
    documents.read_profile(name, documents_.back().profile);
  }
  for (std::uint32_t id = 0; id < classes.size(); ++id) {
    const ClassData &data = classes.get_data(id);
    // A document that was filed here lists the class itself.
    std::size_t place = 0;
    for (const auto &[name, holders] : data.train_docs) {
      const auto nr_filed = std::ranges::count(holders, &data);
      if (nr_filed == 0)
        continue;
      place = place_of(name);
      documents_[place].filed_in.insert(documents_[place].filed_in.end(),
                                        std::size_t(nr_filed), id);
    }
  }
}

std::size_t TrainingSet::place_of(const std::string &name) const {
  const auto place = std::ranges::lower_bound(
      documents_, name, {},
      [](const Document &document) -> const std::string & {
        return *document.name_P;
      });
  return place == documents_.end() || *place->name_P != name
             ? documents_.size()
             : std::size_t(place - documents_.begin());
}

std::vector<std::uint32_t> deal_to_parts(const ClassTable &classes,
                                         const TrainingSet &set,
                                         std::uint32_t nr_parts) {
  std::vector<std::vector<std::size_t>> members(classes.size());
  for (std::size_t i = 0; i < set.documents().size(); ++i) {
    const std::vector<std::uint32_t> &ids = set.documents()[i].filed_in;
    if (ids.empty())
      continue;
    members[*std::ranges::min_element(ids, {}, [&](std::uint32_t id) {
      return classes.get_data(id).train_docs.size();
    })].push_back(i);
  }
  std::vector<std::uint32_t> parts(set.documents().size());
  const std::vector<std::size_t> groups = group_alike(set);
  constexpr std::uint32_t nowhere = 0xFFFFFFFF;
  std::vector<std::uint32_t> part_of_group(groups.size(), nowhere);
  // How many documents of the class at hand, and of all, each part has.
  std::vector<std::pair<std::size_t, std::size_t>> sizes(nr_parts);
  for (const std::vector<std::size_t> &places : members) {
    std::vector<std::pair<std::uint64_t, std::size_t>> order;
    for (const std::size_t place : places)
      order.emplace_back(hash_of(*set.documents()[place].name_P), place);
    std::ranges::sort(order);
    for (auto &[nr_of_class, nr_of_all] : sizes)
      nr_of_class = 0;
    // No group may take a class away from most parts, as it would where all
    // texts of a class are alike: the class could not be learnt there.
    const std::size_t share = places.size() / nr_parts;
    const std::size_t largest = share + share / 2 + 1;
    for (const auto &[hash, place] : order) {
      std::uint32_t &part = part_of_group[groups[place]];
      if (part == nowhere || sizes[part].first >= largest) {
        part = static_cast<std::uint32_t>(std::ranges::min_element(sizes) -
                                          sizes.begin());
      }
      parts[place] = part;
      ++sizes[part].first;
      ++sizes[part].second;
    }
  }
  return parts;
}

namespace {

// Trains without one part and scores it.
void score_part(const ClassTable &classes, const TrainingSet &set,
                const std::vector<std::uint32_t> &parts, std::uint32_t part,
                const Classifier &classifier, const Params &params,
                std::size_t nr_terms, ScoreMatrix &matrix) {
  ClassTable others;
  copy_classes(
      classes,
      [&](const std::string &name) {
        return parts[set.place_of(name)] != part;
      },
      others);
  TermSet active_terms;
  MemoryDocuments documents(set, active_terms);
  std::ostringstream no_scores;
  Messages no_messages;
  const Training training = {others, documents, active_terms,
                             params, no_scores, no_messages};
  update_profiles(training, nr_terms);
  classifier.train(training);
  documents.clear_cache();
  DocProfile profile;
  std::vector<WeightType> scores;
  for (auto &[key, father] : others) {
    if (father.sons.empty())
      continue;
    const ClassScorer scorer(father.sons, classifier.scoring, params);
    for (std::size_t i = 0; i < parts.size(); ++i) {
      if (parts[i] != part)
        continue;
      profile = set.documents()[i].profile;
      profile.select_active(active_terms);
      profile.weigh(father, params);
      scorer.find_evidence(profile, scores);
      for (std::size_t son = 0; son < father.sons.size(); ++son)
        matrix.row(i)[father.sons[son]->id] = scores[son];
    }
  }
}

}  // namespace

ScoreMatrix held_out_scores(const ClassTable &classes, const TrainingSet &set,
                            const std::vector<std::uint32_t> &parts,
                            std::uint32_t nr_parts,
                            const Classifier &classifier, const Params &params,
                            std::size_t nr_terms, unsigned nr_threads) {
  ScoreMatrix matrix{classes.size(), {}};
  matrix.scores.resize(set.documents().size() * classes.size());
  const auto score = [&](std::uint32_t part) {
    score_part(classes, set, parts, part, classifier, params, nr_terms, matrix);
  };
  // No part knows of another, and each has rows of its own: the result is the
  // same in any order and with any number of threads.
  std::vector<std::uint8_t> is_done(nr_parts);
  std::atomic<std::uint32_t> next = 0;
  const auto help = [&] {
    try {
      for (std::uint32_t part = next++; part < nr_parts; part = next++) {
        score(part);
        is_done[part] = 1;
      }
    } catch (const std::bad_alloc &) {
      // The part is left to the caller's thread.
    }
  };
  const std::size_t nr_helpers = std::min<std::size_t>(nr_threads, nr_parts);
  if (nr_helpers > 1) {
    std::vector<std::jthread> helpers;
    helpers.reserve(nr_helpers);
    try {
      while (helpers.size() < nr_helpers)
        helpers.emplace_back(help);
    } catch (const std::system_error &) {
      // There is no room for another.
    }
  }
  // Alone: should memory end the run here, nobody is at work on what exit()
  // takes away.
  for (std::uint32_t part = 0; part < nr_parts; ++part) {
    if (is_done[part] == 0)
      score(part);
  }
  return matrix;
}

}  // namespace vek

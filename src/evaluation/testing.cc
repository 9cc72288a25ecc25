#include "evaluation/testing.h"

#include <array>
#include <boost/unordered/unordered_flat_map.hpp>
#include <cassert>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <vector>

#include "evaluation/scorer.h"
#include "params/params.h"
#include "run/log.h"
#include "run/options.h"
#include "run/output_file.h"
#include "run/progress.h"
#include "store/database.h"

namespace vek {
namespace {

using Scorers =
    boost::unordered_flat_map<const ClassData *, std::unique_ptr<ClassScorer>>;

Scorers &scorers() {
  static Scorers instance;
  return instance;
}

const ClassScorer &scorer_of_sons(const ClassData *class_data_P) {
  std::unique_ptr<ClassScorer> &scorer = scorers()[class_data_P];
  if (scorer == nullptr) {
    scorer = std::make_unique<ClassScorer>(class_data_P->sons);
  }
  return *scorer;
}

// What a score must exceed.
WeightType decision_threshold(const ClassData &data) {
  return params.scaling() ? 1.0 : data.profile.threshold();
}

// What a ranking must reach to stay, where the sons of a class are judged:
// their thresholds, and 0.0 for what comes from further down.
WeightType staying_threshold(const ClassData *father_P, const ClassData &data) {
  return data.father == father_P ? decision_threshold(data) : 0.0;
}

// Cuts a sorted list: by the thresholds down to MinRanks, then by length.
void cut_ranks(Ranks &ranks, const ClassData *father_P) {
  while (ranks.size() > params.min_ranks() &&
         ranks.back().score <
             staying_threshold(father_P, *ranks.back().class_data_P)) {
    ranks.pop_back();
  }
  while (ranks.size() > params.max_ranks())
    ranks.pop_back();
}

// One step of the way down the hierarchy: the scores of a class's sons, and
// which of them comes next.
struct Level {
  const ClassData *class_data_P;
  Ranks scores;
  std::size_t next;
};

Level level_below(ClassData *class_data_P, DocProfile &doc) {
  Level level{class_data_P, {}, 0};
  score_sons(class_data_P, doc, level.scores);
  level.scores.sort();
  return level;
}

// Removes the first ranking of a class; false if there is none.
bool take_ranking(Ranks &ranks, const ClassData *class_data_P) {
  for (auto ranking = ranks.begin(); ranking != ranks.end(); ++ranking) {
    if (ranking->class_data_P != class_data_P)
      continue;
    ranks.erase(ranking);
    return true;
  }
  return false;
}

const char *algorithm_name() {
  switch (params.algorithm()) {
    case Algorithm::winnow:
      break;
    case Algorithm::rocchio:
      return "Rocchio";
    case Algorithm::sbc:
      return "SBC";
  }
  return "Winnow";
}

}  // namespace

WeightType scoring_weight(const ClassProfileEntry &entry) {
  if (params.algorithm() == Algorithm::winnow &&
      params.winnow().negative_weights()) {
    return entry.pos_weight - entry.neg_weight;
  }
  return entry.pos_weight;
}

WeightType score_document(const ClassProfile &profile, const DocProfile &doc) {
  const bool is_product = params.algorithm() == Algorithm::sbc;
  WeightType score = is_product ? 1.0 : 0.0;
  for (const DocProfileEntry &entry : doc) {
    const ClassProfileEntry *entry_P = profile.find(entry.term);
    if (is_product) {
      score *= entry_P == nullptr ? unknown_term_factor : entry_P->pos_weight;
    } else if (entry_P != nullptr) {
      score += scoring_weight(*entry_P) * entry.weight;
    }
  }
  return score;
}

WeightType scaled_score(WeightType score, WeightType threshold) {
  if (!params.scaling())
    return score;
  return threshold > 0.0 ? score / threshold : 1.0 + (score - threshold);
}

void clear_scorers() {
  scorers().clear();
}

void score_sons(ClassData *class_data_P, DocProfile &doc, Ranks &scores) {
  doc.weigh(class_data_P->id);
  std::vector<WeightType> unscaled;
  scorer_of_sons(class_data_P).score(doc, unscaled);
  for (std::size_t i = 0; i < unscaled.size(); ++i) {
    ClassData *son_P = class_data_P->sons[i];
    scores.add(son_P, scaled_score(unscaled[i], son_P->profile.threshold()));
  }
}

bool classify_document(ClassData *class_data_P, DocProfile &doc,
                       const Ranks &scores, Ranks &ranks) {
  assert(class_data_P != 0);
  assert(class_data_P->sons.size() > 0);
  bool significant = false;
  // Not by recursion: a stored hierarchy can be deeper than the stack.
  std::vector<Level> levels{{class_data_P, scores, 0}};
  while (!levels.empty()) {
    Level &level = levels.back();
    if (level.next == level.scores.size()) {
      ranks.sort();
      cut_ranks(ranks, level.class_data_P);
      levels.pop_back();
      continue;
    }
    const Ranking &ranking = level.scores[level.next++];
    ClassData *son_P = ranking.class_data_P;
    if (ranking.score > decision_threshold(*son_P))
      significant = true;
    if (son_P->sons.empty()) {
      ranks.push_back(ranking);
    } else {
      levels.push_back(level_below(son_P, doc));
    }
  }
  return significant;
}

void test_document(ClassData *class_data_P, const std::string &name,
                   const DocumentMap::ClassList &classes,
                   ConfusionMatrix &matrix, std::ostream &file) {
  DocProfile &doc = *data_base.get(name);
  logf_if_verbose(4, "testing document `%s'", name.c_str());
  Ranks scores;
  score_sons(class_data_P, doc, scores);
  scores.sort();
  scores.print(name, file);
  Ranks ranks;
  const bool significant = classify_document(class_data_P, doc, scores, ranks);
  for (const ClassData *filed_P : classes) {
    if (significant && take_ranking(ranks, filed_P)) {
      matrix.enterRS(filed_P->id);
    } else {
      matrix.enterRNS(filed_P->id);
    }
  }
  if (!significant)
    return;
  for (const Ranking &ranking : ranks) {
    matrix.enterNRS(ranking.class_data_P->id);
  }
}

void test_class(ClassData *class_data_P, std::ostream &file) {
  ConfusionMatrix matrix;
  const DocumentMap &docs = class_data_P->test_docs;
  Progress progress("Testing", class_table.get_name(class_data_P->id),
                    docs.size());
  for (const auto &[name, classes] : docs) {
    test_document(class_data_P, name, classes, matrix, file);
    progress.count();
  }
  matrix.report(3);
}

void test_classes() {
  if (class_table.size() == 0)
    return;
  ClassData &top = class_table.get_data(0);
  if (top.sons.empty() || top.test_docs.empty())
    return;
  RankFile file(RankFile::Announce::no);
  logf_always(1, "testing %s on `%s' with %d documents...", algorithm_name(),
              class_table.get_name(0).c_str(),
              static_cast<int>(top.test_docs.size()));
  test_class(&top, file.stream());
  file.finish();
}

RankFile::RankFile(Announce announce) {
  std::array<char, 4095> buffer = {};
  next_rank_file_name(buffer.data(), buffer.size());
  name_ = buffer.data();
  temporary_path_ = Path(options.examples_directory(), name_, ".tmp");
  if (announce == Announce::yes) {
    logf_always(1, "writing output to file `%s'", temporary_path_.c_str());
  }
  stream_.open(temporary_path_, OutputFile::Mode::truncate);
  if (!stream_.is_open()) {
    report_file_error(temporary_path_, FileError::open_for_writing);
    abort_run();
  }
}

void RankFile::finish() {
  stream_.close();
  // The lines reach the disk no later than here.
  if (!stream_)
    abort_run();
  const Path path(options.examples_directory(), name_, ".dat");
  logf_always(1, "renaming output file to `%s'", path.c_str());
  if (std::rename(temporary_path_.c_str(), path.c_str()) != 0) {
    error("cannot rename file `%s' to `%s'", temporary_path_.c_str(),
          path.c_str());
    abort_run();
  }
}

}  // namespace vek

#include "evaluation/testing.h"

#include <algorithm>
#include <sstream>

#include "base/progress.h"
#include "evaluation/predictions.h"

namespace vek {
namespace {

// Removes the first ranking of a class; false if there is none.
bool take_ranking(std::vector<Ranking> &ranks, std::uint32_t class_id) {
  const auto place = std::ranges::find(
      ranks, class_id,
      [](const Ranking &ranking) { return ranking.class_data_P->id; });
  if (place == ranks.end())
    return false;
  ranks.erase(place);
  return true;
}

}  // namespace

void count_decision(std::vector<Ranking> assigned,
                    const std::vector<std::uint32_t> &filed_in,
                    ConfusionMatrix &matrix) {
  // Each class found is taken out of the ranks, so that only the wrong ones
  // remain. A document that is filed twice in a class is found there once and
  // missed once.
  for (const std::uint32_t id : filed_in) {
    if (take_ranking(assigned, id)) {
      matrix.enterRS(id);
    } else {
      matrix.enterRNS(id);
    }
  }
  for (const Ranking &ranking : assigned)
    matrix.enterNRS(ranking.class_data_P->id);
}

bool test_document(const Testing &testing, const std::string &name,
                   const DocumentMap::ClassList &filed_in,
                   ConfusionMatrix &matrix, std::ostream &rank_file) {
  DocProfile &doc = *testing.documents.get(name);
  if (testing.messages.wants(4))
    testing.messages.detail(4,
                            formatted("testing document `%s'", name.c_str()));
  Answer answer;
  testing.judge.judge(doc, answer);
  rank_file << answer.scores.line(name, testing.classes);
  if (!answer.scores.empty() && !rank_file)
    return false;
  if (testing.predictions_P != nullptr) {
    *testing.predictions_P << prediction_line(name, filed_in, answer,
                                              testing.judge, testing.classes);
    if (!*testing.predictions_P)
      return false;
  }
  const std::span<const Ranking> assigned = testing.judge.assigned(answer);
  std::vector<std::uint32_t> ids;
  for (const ClassData *filed_P : filed_in)
    ids.push_back(filed_P->id);
  count_decision({assigned.begin(), assigned.end()}, ids, matrix);
  return true;
}

bool test_top_class(const Testing &testing, std::ostream &rank_file) {
  const ClassData &top = testing.classes.get_data(0);
  ConfusionMatrix matrix(testing.classes);
  Progress progress(testing.messages, "Testing", testing.classes.get_name(0),
                    top.test_docs.size());
  for (const auto &[name, filed_in] : top.test_docs) {
    if (!test_document(testing, name, filed_in, matrix, rank_file))
      return false;
    progress.count();
  }
  std::ostringstream text;
  matrix.print(text, testing.params.f_parameter);
  testing.messages.note(3, text.view());
  return true;
}

}  // namespace vek

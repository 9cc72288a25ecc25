#include "evaluation/testing.h"

#include <algorithm>
#include <sstream>

#include "base/progress.h"

namespace vek {
namespace {

// Removes the first ranking of a class; false if there is none.
bool take_ranking(Ranks &ranks, const ClassData *class_data_P) {
  const auto place =
      std::ranges::find(ranks, class_data_P, &Ranking::class_data_P);
  if (place == ranks.end())
    return false;
  ranks.erase(place);
  return true;
}

}  // namespace

bool test_document(const Testing &testing, const std::string &name,
                   const DocumentMap::ClassList &filed_in,
                   ConfusionMatrix &matrix, std::ostream &rank_file) {
  const ClassData &top = testing.classes.get_data(0);
  DocProfile &doc = *testing.documents.get(name);
  if (testing.messages.wants(4))
    testing.messages.detail(4,
                            formatted("testing document `%s'", name.c_str()));
  Ranks scores;
  testing.walk.score_sons(top, doc, scores);
  // The rank file has all scores of the top level, before anything is cut.
  rank_file << scores.line(name, testing.classes);
  if (!scores.empty() && !rank_file)
    return false;
  Ranks ranks;
  const bool significant = testing.walk.classify(top, doc, scores, ranks);
  // Each class found is taken out of the ranks, so that only the wrong ones
  // remain. A document that is filed twice in a class is found there once and
  // missed once. An insignificant document counts as assigned to no class.
  for (const ClassData *filed_P : filed_in) {
    if (significant && take_ranking(ranks, filed_P)) {
      matrix.enterRS(filed_P->id);
    } else {
      matrix.enterRNS(filed_P->id);
    }
  }
  if (significant) {
    for (const Ranking &ranking : ranks)
      matrix.enterNRS(ranking.class_data_P->id);
  }
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

#include "evaluation/ranks.h"

#include <algorithm>
#include <cmath>

#include "base/textio.h"
#include "intake/lists.h"

namespace vek {
namespace {

constexpr int score_precision = 5;

// A strict weak order, also where a score is not a number: such scores are
// equal to each other and come after all others. A comparison by > alone would
// be none, and the sort could then do anything.
bool comes_before(const Ranking &a, const Ranking &b) {
  if (std::isnan(a.score))
    return false;
  return std::isnan(b.score) || a.score > b.score;
}

}  // namespace

void Ranks::sort() {
  // In a flat hierarchy the second sorting finds what the first has left.
  if (!std::is_sorted(begin(), end(), comes_before))
    std::stable_sort(begin(), end(), comes_before);
}

std::string Ranks::line(const std::string &name,
                        const ClassTable &classes) const {
  std::string line = name;
  line += document_suffix;
  for (const Ranking &ranking : *this) {
    line += ' ';
    line += classes.full_name(ranking.class_data_P->id);
    line += ':';
    append_real(line, ranking.score, score_precision);
  }
  // A line without classes keeps the blank behind the name.
  if (empty())
    line += ' ';
  line += '\n';
  return line;
}

}  // namespace vek

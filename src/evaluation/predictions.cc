#include "evaluation/predictions.h"

#include <algorithm>
#include <span>
#include <vector>

#include "base/escapes.h"
#include "base/textio.h"

namespace vek {
namespace {

// A cell with a member for each element, behind a tab.
template <class List, class Append>
void append_cell(std::string &line, const List &list, Append append) {
  line += '\t';
  bool is_first = true;
  for (const auto &element : list) {
    if (!is_first)
      line += ' ';
    is_first = false;
    append(element);
  }
}

}  // namespace

std::string prediction_line(const std::string &name,
                            const DocumentMap::ClassList &filed_in,
                            const Answer &answer, const Judge &judge,
                            const ClassTable &classes) {
  std::string line = escaped(name);
  const auto path = [&](const ClassData *class_P) {
    line += escaped(classes.full_name(class_P->id));
  };
  const auto score = [&](const Ranking &one) { append_real(line, one.score); };
  const auto threshold = [&](const Ranking &one) {
    append_real(line, judge.threshold(*one.class_data_P));
  };
  const std::span<const Ranking> assigned = judge.assigned(answer);
  append_cell(line, filed_in, path);
  append_cell(line, assigned,
              [&](const Ranking &one) { path(one.class_data_P); });
  append_cell(line, assigned, score);
  append_cell(line, assigned, threshold);
  append_cell(line, judge.has_probabilities() ? assigned : assigned.first(0),
              score);
  std::vector<Ranking> candidates(
      answer.leaves.begin(),
      answer.leaves.begin() +
          std::ptrdiff_t(std::min(answer.leaves.size(), nr_candidates)));
  std::vector<std::size_t> true_places;
  append_cell(line, filed_in, [&](const ClassData *class_P) {
    const auto place =
        std::ranges::find(answer.leaves, class_P, &Ranking::class_data_P);
    const auto index = std::size_t(place - answer.leaves.begin());
    const bool is_leaf = place != answer.leaves.end();
    append_number(line, is_leaf ? index + 1 : 0);
    if (is_leaf && index >= nr_candidates)
      true_places.push_back(index);
  });
  line += answer.significant ? "\t1" : "\t0";
  // A document can be filed twice in a class.
  std::ranges::sort(true_places);
  true_places.erase(std::unique(true_places.begin(), true_places.end()),
                    true_places.end());
  for (const std::size_t place : true_places)
    candidates.push_back(answer.leaves[place]);
  append_cell(line, candidates, [&](const Ranking &one) {
    path(one.class_data_P);
    line += ':';
    score(one);
  });
  append_cell(line, candidates, threshold);
  line += '\n';
  return line;
}

}  // namespace vek

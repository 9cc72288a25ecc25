#include "evaluation/thresholds.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <iterator>

#include "base/textio.h"
#include "evaluation/radixsort.h"
#include "evaluation/scorer.h"

namespace vek {
namespace {

// Scores held at a time while leaves are scored together (256 MB).
constexpr std::size_t largest_nr_scores = std::size_t{1} << 25;

// Past this many leaves, the sums for one document do not fit into the
// processor's cache beside the rows that are added to them.
constexpr std::size_t largest_nr_leaves = 512;

std::vector<ClassData *> all_leaves(ClassTable &classes) {
  std::vector<ClassData *> leaves;
  for (auto &[key, data] : classes) {
    if (data.sons.empty())
      leaves.push_back(&data);
  }
  return leaves;
}

// The places in `names`, which are ascending, of the class's training
// documents.
std::vector<std::size_t> member_places(
    const ClassData &data, const std::vector<const std::string *> &names) {
  std::vector<std::size_t> places;
  // Both lists ascend, so that each search starts where the last one ended.
  auto from = names.begin();
  for (const auto &[name, classes] : data.train_docs) {
    from = std::lower_bound(
        from, names.end(), name,
        [](const std::string *a_P, const std::string &b) { return *a_P < b; });
    // A training document without a profile in the cache has no score.
    if (from != names.end() && **from == name) {
      places.push_back(std::size_t(from - names.begin()));
    }
  }
  return places;
}

// Moves the scores at the places, which are ascending, from `neg` to `pos`.
void take_members(const std::vector<std::size_t> &places, ScoreTable &table) {
  auto next = places.begin();
  std::size_t nr_left = 0;
  for (std::size_t i = 0; i < table.neg.size(); ++i) {
    if (next != places.end() && *next == i) {
      table.pos.push_back(table.neg[i]);
      ++next;
    } else {
      table.neg[nr_left++] = table.neg[i];
    }
  }
  table.neg.resize(nr_left);
}

// Fills a table for each class, in one walk over the documents.
std::vector<ScoreTable> collect_scores(const std::vector<ClassData *> &classes,
                                       const ClassScorer &scorer,
                                       const Documents::Cache &documents) {
  std::vector<ScoreTable> tables(classes.size());
  std::vector<const std::string *> names;
  // All scores go to `neg`, in the order of the documents, and the members are
  // then moved: cheaper than to ask of each document and class whether it is
  // one.
  for (ScoreTable &table : tables)
    table.neg.reserve(documents.size());
  ScoreTable::Scores values;
  for (const auto &[name, profile] : documents) {
    names.push_back(&name);
    scorer.score(*profile, values);
    for (std::size_t i = 0; i < classes.size(); ++i)
      tables[i].neg.push_back(values[i]);
  }
  for (std::size_t i = 0; i < classes.size(); ++i) {
    take_members(member_places(*classes[i], names), tables[i]);
    tables[i].complete();
  }
  return tables;
}

// A score that is not a number has no place in an order: it goes last.
void sort_scores(ScoreTable::Scores &values) {
  const auto end = std::partition(values.begin(), values.end(),
                                  [](WeightType x) { return !std::isnan(x); });
  radix_sort({values.begin(), end});
}

// Writes the scores, each followed by a blank, and the line end. Equal ones are
// next to each other, and often many: all documents without any term of the
// class score 0.
void write_scores(std::ostream &os, const ScoreTable::Scores &values) {
  char piece[16384];  // NOLINT: clearing it would take longer than filling it
  char *out_P = piece;
  char *last_P = nullptr;  // the text of the score before, if it is there
  for (std::size_t i = 0; i < values.size(); ++i) {
    // Room for one more number is certain behind this, and for the line end
    // behind the last one.
    if (out_P > std::end(piece) - 2 * real_room) {
      os.write(piece, out_P - piece);
      out_P = piece;
      last_P = nullptr;
    }
    char *const start_P = out_P;
    // Equal numbers have equal texts, but for 0.0 and -0.0.
    if (last_P != nullptr && values[i] == values[i - 1] && values[i] != 0.0) {
      out_P = std::copy(last_P, start_P, start_P);
    } else {
      out_P = put_real(out_P, values[i]);
      *out_P++ = ' ';
    }
    last_P = start_P;
  }
  *out_P++ = '\n';
  os.write(piece, out_P - piece);
}

}  // namespace

void ScoreTable::complete() {
  sort_scores(pos);
  sort_scores(neg);
}

void ScoreTable::write(std::ostream &os, const std::string &class_name) const {
  os << class_name << " + ";
  write_scores(os, pos);
  os << class_name << " - ";
  write_scores(os, neg);
}

int count_scores(const ScoreTable::Scores &values, WeightType low,
                 WeightType high) {
  if (low > high)
    return 0;
  const auto first = std::lower_bound(values.begin(), values.end(), low);
  const auto last = std::lower_bound(first, values.end(), high);
  return static_cast<int>(last - first);
}

// For edge i, from 0 to n: how many `pos` scores lie under it, and how many
// `neg` scores at or over it.
struct ScoreTable::Grid {
  WeightType width;
  std::vector<unsigned> below;
  std::vector<unsigned> above;
  // The bin in which `above` falls under `below`.
  unsigned first;
  unsigned last;

  double excess_above() const { return double(above[first] - below[first]); }
  double excess_below() const { return double(below[last] - above[last]); }
  // Otherwise there is no crossing to interpolate.
  bool has_excess() const { return excess_above() + excess_below() != 0.0; }
  WeightType threshold() const {
    const double a = excess_above();
    const double b = excess_below();
    // Where the straight lines through the two excesses at both edges of the
    // bin cross 0, in bins from the origin.
    const double x = first + a / (a + b);
    return width * x / double(below.size() - 1);
  }
};

ScoreTable::Grid ScoreTable::make_grid() const {
  // As many bins as the class has documents. Both lists are sorted, and a count
  // is two binary searches.
  const std::size_t n = pos.size();
  const WeightType max_score = std::max(pos.back(), neg.back());
  const WeightType min_score = std::min(pos.front(), neg.front());
  const WeightType width = max_score - min_score;
  const auto edge = [&](std::size_t i) {
    return double(i) * width / double(n);
  };
  Grid grid{width, std::vector<unsigned>(n + 1), std::vector<unsigned>(n + 1),
            0, static_cast<unsigned>(n)};
  WeightType low = min_score;
  for (std::size_t i = 1; i <= n; ++i) {
    // DBL_MIN vanishes in a sum with any score of ordinary size, so this last
    // edge is the highest score itself, and a bin excludes its upper edge.
    const WeightType high = i < n ? edge(i) : max_score + DBL_MIN;
    grid.below[i] =
        grid.below[i - 1] + static_cast<unsigned>(count_scores(pos, low, high));
    low = high;
  }
  WeightType high = max_score;
  for (std::size_t i = n; i-- > 0;) {
    low = i > 0 ? edge(i) : min_score - DBL_MIN;
    grid.above[i] =
        grid.above[i + 1] + static_cast<unsigned>(count_scores(neg, low, high));
    high = low;
  }
  // `below` never falls from edge to edge and `above` never rises. At `first`
  // there are at least as many above as below, at `last` the other way round,
  // so that neither excess can wrap, and a bisection finds the crossing.
  while (grid.last - grid.first > 1) {
    const unsigned middle = (grid.first + grid.last) / 2;
    if (grid.above[middle] > grid.below[middle]) {
      grid.first = middle;
    } else {
      grid.last = middle;
    }
  }
  return grid;
}

std::optional<WeightType> ScoreTable::threshold() const {
  if (pos.empty() || neg.empty())
    return std::nullopt;
  // Weights can grow past all bounds, and then scores do.
  for (const WeightType score :
       {pos.front(), pos.back(), neg.front(), neg.back()}) {
    if (!std::isfinite(score))
      return std::nullopt;
  }
  // The interpolation may still overflow where scores are near the largest
  // double.
  const Grid grid = make_grid();
  if (!grid.has_excess() || !std::isfinite(grid.threshold()))
    return std::nullopt;
  return grid.threshold();
}

void set_leaf_thresholds(ClassTable &classes, const Documents::Cache &documents,
                         const Scoring &scoring, const Params &params,
                         std::ostream &scores, Messages &messages) {
  const std::vector<ClassData *> leaves = all_leaves(classes);
  // In blocks of leaves: all scores of a block are in memory together, and a
  // block is one walk over the documents. Blocks change no result.
  const std::size_t nr_docs = std::max<std::size_t>(documents.size(), 1);
  const std::size_t step = std::clamp<std::size_t>(largest_nr_scores / nr_docs,
                                                   1, largest_nr_leaves);
  for (std::size_t start = 0; start < leaves.size(); start += step) {
    const std::size_t end = std::min(start + step, leaves.size());
    const std::vector<ClassData *> block(leaves.begin() + std::ptrdiff_t(start),
                                         leaves.begin() + std::ptrdiff_t(end));
    const ClassScorer scorer(block, scoring, params);
    const std::vector<ScoreTable> tables =
        collect_scores(block, scorer, documents);
    for (std::size_t i = 0; i < block.size(); ++i) {
      ClassProfile &profile = block[i]->profile;
      const std::string &name = classes.get_name(block[i]->id);
      tables[i].write(scores, name);
      profile.set_threshold(
          tables[i].threshold().value_or(profile.threshold()));
      messages.note(2, formatted("Class %s threshhold %f", name.c_str(),
                                 profile.threshold()));
    }
  }
}

}  // namespace vek

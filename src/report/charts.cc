#include "report/charts.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vek::reporting {
namespace {

struct Score {
  double value = 0;
  bool is_member = false;
};

bool is_filed_in(const Prediction &doc, std::uint32_t id) {
  return std::ranges::find(doc.filed_in, id) != doc.filed_in.end();
}

// Steps of a curve that is drawn a few hundred pixels wide.
constexpr double least_step = 0.01;

void draw_curve(const std::vector<Score> &scores, std::uint64_t nr_members,
                ScoreChart &chart) {
  double nr_found = 0;
  double nr_seen = 0;
  bool is_complete = scores.empty();
  for (std::size_t i = 0; !is_complete;) {
    const double before = nr_found;
    const double value = scores[i].value;
    for (; i < scores.size() && scores[i].value == value; ++i) {
      nr_found += scores[i].is_member;
      ++nr_seen;
    }
    const ScoreChart::Point point = {nr_found / double(nr_members),
                                     nr_found / nr_seen};
    chart.average_precision +=
        (nr_found - before) / double(nr_members) * point.precision;
    is_complete = nr_found == double(nr_members) || i == scores.size();
    if (chart.curve.empty() || is_complete ||
        point.recall - chart.curve.back().recall >= least_step)
      chart.curve.push_back(point);
  }
}

void fill_bins(const std::vector<Score> &scores, ScoreChart &chart) {
  std::vector<double> finite;
  for (const Score &score : scores) {
    if (std::isfinite(score.value))
      finite.push_back(score.value);
  }
  if (finite.empty())
    return;
  // From the highest down; a two hundredth may lie outside on either side.
  const std::size_t outside = finite.size() / 200;
  chart.high = finite[outside];
  chart.low = finite[finite.size() - 1 - outside];
  const double width = chart.high - chart.low;
  for (const Score &score : scores) {
    const double place =
        width > 0 && std::isfinite(width)
            ? (score.value - chart.low) / width * ScoreChart::nr_bins
            : 0;
    const auto bin = static_cast<std::size_t>(
        std::clamp(place, 0.0, double(ScoreChart::nr_bins - 1)));
    ++(score.is_member ? chart.members : chart.others)[bin];
  }
}

// Finds or makes the nodes of paths.
class TreeBuilder {
 public:
  std::vector<TreeNode> nodes;

  std::uint32_t enter(std::string_view path) {
    constexpr int most_levels = 64;
    std::uint32_t father = TreeNode::none;
    std::size_t start = 0;
    for (int level = 1;; ++level) {
      // Slashes at either end of the path belong to the name there.
      const std::size_t slash =
          path.find('/', path.find_first_not_of('/', start));
      const bool is_last =
          level == most_levels || slash == std::string_view::npos ||
          path.find_first_not_of('/', slash) == std::string_view::npos;
      father = enter(is_last ? path : path.substr(0, slash), start, father);
      if (is_last)
        return father;
      start = path.find_first_not_of('/', slash);
    }
  }

 private:
  // The node of a path whose last component begins at `start`.
  std::uint32_t enter(std::string_view path, std::size_t start,
                      std::uint32_t father) {
    const auto [place, is_new] =
        ids_.emplace(path, static_cast<std::uint32_t>(nodes.size()));
    if (is_new)
      nodes.push_back({path.substr(start), father, TreeNode::none, {}});
    return place->second;
  }

  tsl::robin_map<std::string_view, std::uint32_t> ids_;
};

// Counts documents at nodes. A node carries the number of the document that was
// there last.
class BranchCounter {
 public:
  explicit BranchCounter(std::vector<TreeNode> &nodes)
      : nodes_(nodes), filed_(nodes.size()), got_(nodes.size()) {}

  void count(const std::vector<std::uint32_t> &filed_in,
             const std::vector<std::uint32_t> &got) {
    ++number_;
    for (const std::uint32_t node : filed_in)
      climb(node, filed_, [](Counts &counts) { ++counts.missed; });
    for (const std::uint32_t node : got) {
      climb(node, got_, [](Counts &counts) { ++counts.wrong; });
    }
  }

 private:
  // What is in both was counted as missed and now as wrong: it is correct.
  template <typename Count>
  void climb(std::uint32_t node, std::vector<std::uint64_t> &marks,
             Count count) {
    for (; node != TreeNode::none && marks[node] != number_;
         node = nodes_[node].father) {
      marks[node] = number_;
      Counts &counts = nodes_[node].counts;
      if (&marks == &got_ && filed_[node] == number_) {
        --counts.missed;
        ++counts.correct;
      } else {
        count(counts);
      }
    }
  }

  std::vector<TreeNode> &nodes_;
  std::vector<std::uint64_t> filed_;
  std::vector<std::uint64_t> got_;
  std::uint64_t number_ = 0;
};

}  // namespace

std::vector<ScoreChart> chart_scores(const Predictions &predictions,
                                     std::uint32_t nr_classes) {
  std::vector<std::vector<Score>> scores(nr_classes);
  std::vector<std::uint64_t> nr_members(nr_classes);
  for (const Prediction &doc : predictions.documents) {
    if (!doc.is_judged())
      continue;
    std::vector<std::uint32_t> filed_in = doc.filed_in;
    std::ranges::sort(filed_in);
    filed_in.erase(std::unique(filed_in.begin(), filed_in.end()),
                   filed_in.end());
    for (const std::uint32_t id : filed_in)
      ++nr_members[id];
    for (const Scored &candidate : doc.candidates) {
      if (!std::isnan(candidate.score)) {
        scores[candidate.class_id].push_back(
            {candidate.score,
             std::ranges::binary_search(filed_in, candidate.class_id)});
      }
    }
  }
  std::vector<ScoreChart> charts(nr_classes);
  for (std::uint32_t id = 0; id < nr_classes; ++id) {
    std::ranges::sort(scores[id], std::greater{}, &Score::value);
    if (nr_members[id] > 0)
      draw_curve(scores[id], nr_members[id], charts[id]);
    fill_bins(scores[id], charts[id]);
  }
  return charts;
}

std::vector<double> find_thresholds(const Predictions &predictions,
                                    std::uint32_t nr_classes) {
  std::vector<double> thresholds(nr_classes,
                                 std::numeric_limits<double>::quiet_NaN());
  const auto look_at = [&](const Scored &scored) {
    if (std::isnan(thresholds[scored.class_id]))
      thresholds[scored.class_id] = scored.threshold;
  };
  for (const Prediction &doc : predictions.documents) {
    std::ranges::for_each(doc.candidates, look_at);
    std::ranges::for_each(doc.assigned, look_at);
  }
  return thresholds;
}

Reliability measure_reliability(const Predictions &predictions) {
  Reliability reliability;
  for (const Prediction &doc : predictions.documents) {
    if (!doc.is_judged())
      continue;
    for (std::size_t i = 0; i < doc.probabilities.size(); ++i) {
      const double probability = doc.probabilities[i];
      if (!(probability >= 0 && probability <= 1))
        continue;
      ReliabilityBin &bin = reliability.bins[std::min<std::size_t>(
          static_cast<std::size_t>(probability * Reliability::nr_bins),
          Reliability::nr_bins - 1)];
      ++bin.nr_assigned;
      bin.nr_correct += is_filed_in(doc, doc.assigned[i].class_id);
      bin.sum += probability;
      ++reliability.nr_assigned;
    }
  }
  for (const ReliabilityBin &bin : reliability.bins) {
    reliability.error +=
        std::abs(bin.sum - double(bin.nr_correct)) /
        double(std::max<std::uint64_t>(reliability.nr_assigned, 1));
  }
  return reliability;
}

std::vector<TreeNode> build_tree(const ClassNames &names,
                                 const Predictions &predictions) {
  TreeBuilder builder;
  std::vector<std::uint32_t> node_of_class;
  for (std::uint32_t id = 0; id < names.size(); ++id) {
    node_of_class.push_back(builder.enter(names[id]));
    builder.nodes[node_of_class.back()].class_id = id;
  }
  BranchCounter counter(builder.nodes);
  std::vector<std::uint32_t> filed_in;
  std::vector<std::uint32_t> got;
  for (const Prediction &doc : predictions.documents) {
    if (!doc.is_judged())
      continue;
    filed_in.clear();
    got.clear();
    for (const std::uint32_t id : doc.filed_in)
      filed_in.push_back(node_of_class[id]);
    for (const Scored &scored : doc.assigned)
      got.push_back(node_of_class[scored.class_id]);
    counter.count(filed_in, got);
  }
  return std::move(builder.nodes);
}

}  // namespace vek::reporting

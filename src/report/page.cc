#include "report/page.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <vector>

#include "report/charts.h"
#include "report/excerpt.h"
#include "report/json_writer.h"
#include "report/page_frame.h"
#include "report/page_sources.h"

namespace vek::reporting {
namespace {

// What keeps the page quick: bytes of documents and of their texts, pairs, and
// classes with charts.
constexpr std::size_t most_document_bytes = 11'000'000;
constexpr std::size_t most_text_bytes = 4'000'000;
constexpr std::size_t longest_text = 1500;
constexpr std::size_t shortest_text = 200;
constexpr std::size_t most_pairs = 5000;
constexpr std::size_t most_charts = 1000;
constexpr std::size_t most_changes = 5000;

class PageData {
 public:
  explicit PageData(const PageInput &input)
      : input_(input),
        run_(input.run),
        nr_classes_(run_.names.size()),
        thresholds_(find_thresholds(run_.predictions, nr_classes_)) {}

  std::string write() {
    json_.open('{');
    json_.key("file");
    json_.text(run_.predictions.file);
    write_summary();
    write_classes();
    write_charts();
    write_tree();
    write_pairs();
    write_reliability();
    write_documents();
    if (input_.comparison_P != nullptr)
      write_comparison(*input_.comparison_P);
    json_.close('}');
    return json_.take();
  }

 private:
  void write_member(const char *name, std::uint64_t value) {
    json_.key(name);
    json_.count(value);
  }

  // The elements alone.
  void write_figures(const Counts &counts) {
    json_.count(counts.correct);
    json_.count(counts.missed);
    json_.count(counts.wrong);
  }

  void write_summary() {
    const Figures &figures = run_.figures;
    json_.key("summary");
    json_.open('{');
    write_member("documents", figures.nr_documents);
    write_member("fresh", figures.nr_new);
    write_member("right", figures.nr_right);
    write_member("partly", figures.nr_partly);
    write_member("nothing", figures.nr_without);
    write_member("firstRight", figures.nr_first_right);
    write_member("counted", figures.nr_counted);
    write_member("correct", figures.total.correct);
    write_member("missed", figures.total.missed);
    write_member("wrong", figures.total.wrong);
    json_.key("reciprocalRank");
    json_.real(figures.mean_reciprocal_rank, full_precision);
    json_.key("macro");
    json_.list(std::array{figures.macro_precision, figures.macro_recall,
                          figures.macro_f1},
               [this](double value) { json_.real(value, full_precision); });
    json_.close('}');
  }

  void write_classes() {
    json_.key("classes");
    json_.open('[');
    for (std::uint32_t id = 0; id < nr_classes_; ++id) {
      const auto &[counts, nr_agreeing] = run_.figures.classes[id];
      json_.open('[');
      json_.text(run_.names[id]);
      write_figures(counts);
      json_.count(nr_agreeing);
      json_.real(thresholds_[id]);
      json_.close(']');
    }
    json_.close(']');
  }

  // Those of the largest classes.
  void write_charts() {
    std::vector<std::uint32_t> ids;
    for (std::uint32_t id = 0; id < nr_classes_; ++id) {
      if (run_.figures.classes[id].counts.f1())
        ids.push_back(id);
    }
    std::ranges::stable_sort(ids, std::greater{}, [this](std::uint32_t id) {
      return run_.figures.classes[id].counts.support();
    });
    ids.resize(std::min(ids.size(), most_charts));
    const std::vector<ScoreChart> charts =
        chart_scores(run_.predictions, nr_classes_);
    json_.key("charts");
    json_.open('{');
    for (const std::uint32_t id : ids) {
      const ScoreChart &chart = charts[id];
      json_.key(std::to_string(id));
      json_.open('[');
      json_.list(chart.curve, [this](const ScoreChart::Point &point) {
        json_.real(point.recall, 4);
        json_.real(point.precision, 4);
      });
      json_.real(chart.average_precision, full_precision);
      json_.real(chart.low);
      json_.real(chart.high);
      json_.counts(chart.members);
      json_.counts(chart.others);
      json_.close(']');
    }
    json_.close('}');
  }

  void write_tree() {
    const std::vector<TreeNode> nodes =
        build_tree(run_.names, run_.predictions);
    json_.key("tree");
    json_.open('[');
    // Flat collections have no fathers, and the table says it all.
    const bool is_flat = std::ranges::all_of(nodes, [](const TreeNode &node) {
      return node.father == TreeNode::none;
    });
    for (const TreeNode &node : nodes) {
      if (is_flat)
        break;
      json_.open('[');
      json_.text(node.name);
      for (const std::uint32_t id : {node.father, node.class_id}) {
        if (id == TreeNode::none)
          json_.count(-1);
        else
          json_.count(id);
      }
      write_figures(node.counts);
      json_.close(']');
    }
    json_.close(']');
  }

  void write_pairs() {
    bool is_complete = true;
    std::vector<Confusion> pairs =
        find_confusions(run_.predictions, run_.verdicts, is_complete);
    pairs.resize(std::min(pairs.size(), most_pairs));
    json_.key("pairs");
    json_.list(pairs, [this](const Confusion &pair) {
      json_.open('[');
      json_.count(pair.filed_in);
      if (pair.got == Confusion::no_class)
        json_.count(-1);
      else
        json_.count(pair.got);
      json_.count(pair.nr_documents);
      json_.close(']');
    });
  }

  void write_reliability() {
    const Reliability reliability = measure_reliability(run_.predictions);
    if (reliability.nr_assigned == 0)
      return;
    json_.key("reliability");
    json_.open('{');
    json_.key("error");
    json_.real(reliability.error);
    json_.key("bins");
    json_.list(reliability.bins, [this](const ReliabilityBin &bin) {
      json_.open('[');
      json_.count(bin.nr_assigned);
      json_.count(bin.nr_correct);
      json_.real(bin.sum);
      json_.close(']');
    });
    json_.close('}');
  }

  // The misjudged ones first, with all that decided and their text: if there is
  // no room for all, others are left out.
  void write_documents() {
    const std::uint64_t nr_misjudged =
        run_.figures.nr_documents - run_.figures.nr_right;
    text_size_ =
        std::clamp(most_text_bytes / std::max<std::size_t>(nr_misjudged, 1),
                   shortest_text, longest_text);
    const std::size_t start = json_.size();
    std::uint64_t nr_omitted = 0;
    json_.key("documents");
    json_.open('[');
    for (const bool is_misjudged : {true, false}) {
      for (std::size_t i = 0; i < run_.verdicts.size(); ++i) {
        const Verdict &verdict = run_.verdicts[i];
        const bool has_fault =
            !verdict.missed.empty() || !verdict.wrong.empty();
        if (has_fault != is_misjudged)
          continue;
        if (json_.size() - start < most_document_bytes)
          write_document(run_.predictions.documents[i], has_fault);
        else
          ++nr_omitted;
      }
    }
    json_.close(']');
    write_member("omitted", nr_omitted);
  }

  void write_document(const Prediction &doc, bool has_fault) {
    json_.open('[');
    json_.text(doc.name);
    json_.counts(doc.filed_in);
    json_.counts(doc.ranks);
    write_scores(doc.assigned);
    json_.list(doc.probabilities,
               [this](double value) { json_.real(value, 3); });
    json_.count(int{doc.is_significant});
    write_scores(has_fault || !doc.is_judged() ? doc.candidates
                                               : std::vector<Scored>());
    if (!input_.files.empty() && (has_fault || !doc.is_judged()))
      json_.text(excerpt(input_.files, doc.name, text_size_));
    json_.close(']');
  }

  // Ids, scores, and thresholds unless they are those of the classes.
  void write_scores(const std::vector<Scored> &scores) {
    json_.list(scores,
               [this](const Scored &scored) { json_.count(scored.class_id); });
    json_.list(scores,
               [this](const Scored &scored) { json_.real(scored.score, 4); });
    const bool is_usual =
        std::ranges::all_of(scores, [this](const Scored &scored) {
          return scored.threshold == thresholds_[scored.class_id];
        });
    if (is_usual) {
      json_.count(0);
    } else {
      json_.list(scores, [this](const Scored &scored) {
        json_.real(scored.threshold, 4);
      });
    }
  }

  void write_comparison(const Comparison &comparison) {
    json_.key("comparison");
    json_.open('{');
    json_.key("file");
    json_.text(input_.other_P->file);
    json_.key("summary");
    json_.raw(json_of(compared_summary(comparison)));
    json_.key("note");
    json_.text(compared_summary(comparison).note);
    json_.key("conclusion");
    json_.text(conclusion(comparison));
    json_.key("test");
    json_.raw(json_of(test_table(comparison)));
    json_.key("classes");
    json_.raw(json_of(compared_classes(comparison, run_.names)));
    Table changes = changed_documents(comparison, run_.predictions,
                                      *input_.other_P, run_.names);
    write_member("changed", changes.rows.size());
    changes.rows.resize(std::min(changes.rows.size(), most_changes));
    json_.key("documents");
    json_.raw(json_of(changes));
    json_.close('}');
  }

  static constexpr int full_precision = 17;

  const PageInput &input_;
  const Judged &run_;
  const std::uint32_t nr_classes_;
  const std::vector<double> thresholds_;
  std::size_t text_size_ = 0;  // bytes of each text
  JsonWriter json_;
};

}  // namespace

std::string make_page(const PageInput &input) {
  const std::string data = without_markup(PageData(input).write());
  return filled(page_html, {{"@STYLE_HASH@", hash_of(page_css)},
                            {"@SCRIPT_HASH@", hash_of(page_js)},
                            {"@STYLE@", page_css},
                            {"@DATA@", data},
                            {"@SCRIPT@", page_js}});
}

}  // namespace vek::reporting

#include "report/tables.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

#include "base/messages.h"

namespace vek::reporting {
namespace {

Names class_list(const ClassNames &names,
                 const std::vector<std::uint32_t> &ids) {
  Names list;
  for (const std::uint32_t id : ids)
    list.push_back(names[id]);
  return list;
}

Names assigned_list(const ClassNames &names, const Prediction &doc) {
  Names list;
  for (const Scored &scored : doc.assigned)
    list.push_back(names[scored.class_id]);
  return list;
}

// By name, of equally large classes.
std::vector<std::uint32_t> by_size(const Judged &run) {
  std::vector<std::uint32_t> ids;
  for (std::uint32_t id = 0; id < run.names.size(); ++id)
    ids.push_back(id);
  std::ranges::sort(ids, [&](std::uint32_t a, std::uint32_t b) {
    const std::uint64_t size_a = run.figures.classes[a].counts.support();
    const std::uint64_t size_b = run.figures.classes[b].counts.support();
    return size_a != size_b ? size_a > size_b : run.names[a] < run.names[b];
  });
  return ids;
}

// Whether a stands before b in the usual order of a column of such cells.
bool comes_before(const Cell &a, const Cell &b) {
  if (const auto *share_P = std::get_if<Share>(&a))
    return share_P->value < std::get<Share>(b).value;
  if (const auto *count_P = std::get_if<std::uint64_t>(&a))
    return *count_P > std::get<std::uint64_t>(b);
  return std::get<std::string>(a) < std::get<std::string>(b);
}

struct Measure {
  const char *name;
  Share (*of)(const Figures &figures);
};
const Measure measures[] = {
    {"micro_precision",
     [](const Figures &f) { return Share{f.total.precision().value_or(0)}; }},
    {"micro_recall",
     [](const Figures &f) { return Share{f.total.recall().value_or(0)}; }},
    {"micro_f1",
     [](const Figures &f) { return Share{f.total.f1().value_or(0)}; }},
    {"macro_precision",
     [](const Figures &f) { return Share{f.macro_precision}; }},
    {"macro_recall", [](const Figures &f) { return Share{f.macro_recall}; }},
    {"macro_f1", [](const Figures &f) { return Share{f.macro_f1}; }},
    {"exactly_right",
     [](const Figures &f) { return Share{f.share(f.nr_right)}; }},
    {"first_class_right",
     [](const Figures &f) { return Share{f.share(f.nr_first_right)}; }},
    {"mean_reciprocal_rank",
     [](const Figures &f) { return Share{f.mean_reciprocal_rank}; }},
};

std::string signed_points(double value) {
  return formatted("%+.2f", value * 100);
}

std::string sentence(const char *what, const Difference &difference) {
  return std::string(what) + ' ' + signed_points(difference.value) +
         " points, 95 % of the resamples from " +
         signed_points(difference.low) + " to " +
         signed_points(difference.high) +
         (difference.is_certain() ? "." : ": it may be chance.");
}

}  // namespace

void Judged::judge() {
  verdicts = judge_all(predictions);
  figures = count_figures(predictions, verdicts, names.size());
}

Table summary_table(const Judged &run) {
  const Figures &figures = run.figures;
  Table table{"summary", {"measure", "value"}, {}, true};
  const auto add = [&](const char *name, Cell cell) {
    table.rows.push_back({std::string(name), std::move(cell)});
  };
  add("file", run.predictions.file);
  if (figures.nr_documents == 0) {
    add("documents", figures.nr_documents);
    add("new_documents", figures.nr_new);
    table.note = "No document is in a class: there is nothing to measure.";
    return table;
  }
  add("documents", figures.nr_documents);
  if (figures.nr_new > 0)
    add("new_documents", figures.nr_new);
  add("without_a_class", figures.nr_without);
  add("classes", std::uint64_t{run.names.size()});
  add("classes_counted", std::uint64_t{figures.nr_counted});
  add("filed", figures.total.support());
  add("assigned", figures.total.assigned());
  add("correct", figures.total.correct);
  for (const Measure &measure : measures)
    add(measure.name, measure.of(figures));
  return table;
}

const std::vector<std::string> class_columns = {
    "class",     "support", "correct", "missed",  "wrong",
    "precision", "recall",  "f1",      "accuracy"};

Table class_table(const Judged &run, const std::string &sort_column,
                  Order order) {
  Table table{"classes", class_columns, {}};
  for (const std::uint32_t id : by_size(run)) {
    const auto &[counts, nr_agreeing] = run.figures.classes[id];
    table.rows.push_back(
        {run.names[id], counts.support(), counts.correct, counts.missed,
         counts.wrong, share_or_none(counts.precision()),
         share_or_none(counts.recall()), share_or_none(counts.f1()),
         Share{run.figures.share(nr_agreeing)}});
  }
  const auto column = static_cast<std::size_t>(
      std::ranges::find(class_columns, sort_column) - class_columns.begin());
  std::ranges::stable_sort(
      table.rows, [&](const std::vector<Cell> &a, const std::vector<Cell> &b) {
        if (a[column].index() == 0 || b[column].index() == 0)
          return a[column].index() > b[column].index();
        return order == Order::usual ? comes_before(a[column], b[column])
                                     : comes_before(b[column], a[column]);
      });
  return table;
}

Table pair_table(const Judged &run) {
  Table table{"pairs", {"documents", "true", "got"}, {}};
  bool is_complete = true;
  for (const Confusion &pair :
       find_confusions(run.predictions, run.verdicts, is_complete)) {
    table.rows.push_back(
        {pair.nr_documents, run.names[pair.filed_in],
         pair.got == Confusion::no_class ? Cell() : Cell(run.names[pair.got])});
  }
  if (table.rows.empty())
    table.note = "No document was misjudged.";
  if (!is_complete)
    table.note = "There are more pairs than could be counted or told.";
  return table;
}

Table document_table(const Judged &run) {
  Table table{"documents", {"document", "outcome", "rank", "true", "got"}, {}};
  for (const Outcome outcome :
       {Outcome::wrong, Outcome::nothing, Outcome::partly, Outcome::right,
        Outcome::is_new}) {
    for (std::size_t i = 0; i < run.verdicts.size(); ++i) {
      const Prediction &doc = run.predictions.documents[i];
      if (outcome_of(doc, run.verdicts[i]) != outcome)
        continue;
      const std::uint32_t rank = best_rank(doc);
      table.rows.push_back({doc.name, std::string(name_of(outcome)),
                            rank == 0 ? Cell() : Cell(std::uint64_t{rank}),
                            class_list(run.names, doc.filed_in),
                            assigned_list(run.names, doc)});
    }
  }
  return table;
}

Table candidate_table(const Judged &run, const Prediction &doc) {
  Table table{"candidates", {"class", "score", "threshold", "true", "got"}, {}};
  const auto mark = [](bool is_so) {
    return std::string(is_so ? "yes" : "no");
  };
  for (const Scored &candidate : doc.candidates) {
    const std::uint32_t id = candidate.class_id;
    table.rows.push_back(
        {run.names[id], candidate.score, candidate.threshold,
         mark(std::ranges::count(doc.filed_in, id) > 0),
         mark(std::ranges::count(doc.assigned, id, &Scored::class_id) > 0)});
  }
  const Names filed = class_list(run.names, doc.filed_in);
  std::string classes;
  for (const std::string &name : filed)
    classes += ' ' + shown_name(name);
  const Verdict verdict = verdict_on(doc);
  table.note = doc.is_judged() ? std::string("outcome: ") +
                                     name_of(outcome_of(doc, verdict)) +
                                     "; filed in" + classes
                               : "a new document";
  table.note += doc.is_significant ? "" : "; no score is above its threshold";
  return table;
}

Table compared_summary(const Comparison &comparison) {
  Table table{"summary", {"measure", "first", "second", "difference"}, {}};
  const auto add = [&](const char *name, Cell first, Cell second,
                       Cell difference) {
    table.rows.push_back({std::string(name), std::move(first),
                          std::move(second), std::move(difference)});
  };
  add("documents", comparison.nr_common, comparison.nr_common, {});
  add("without_a_class", comparison.first.nr_without,
      comparison.second.nr_without, {});
  for (const Measure &measure : measures) {
    const Share first = measure.of(comparison.first);
    const Share second = measure.of(comparison.second);
    add(measure.name, first, second, Share{second.value - first.value});
  }
  const auto tell = [&](std::uint64_t count, const char *what) {
    if (count > 0) {
      table.note += (table.note.empty() ? "" : "\n") +
                    ("Not compared: " + std::to_string(count) + what);
    }
  };
  tell(comparison.nr_only_first, " documents of the first run alone.");
  tell(comparison.nr_only_second, " documents of the second run alone.");
  tell(comparison.nr_refiled, " documents that are filed differently.");
  return table;
}

Table compared_classes(const Comparison &comparison, const ClassNames &names) {
  Table table{"classes",
              {"class", "support", "first_f1", "second_f1", "difference"},
              {}};
  std::vector<std::pair<double, std::uint32_t>> differences;
  for (std::uint32_t id = 0; id < names.size(); ++id) {
    const auto first = comparison.first.classes[id].counts.f1();
    const auto second = comparison.second.classes[id].counts.f1();
    if (first || second)
      differences.emplace_back(second.value_or(0) - first.value_or(0), id);
  }
  std::ranges::sort(differences, [&](const auto &a, const auto &b) {
    const double size_a = std::abs(a.first);
    const double size_b = std::abs(b.first);
    return size_a != size_b ? size_a > size_b
                            : names[a.second] < names[b.second];
  });
  for (const auto &[difference, id] : differences) {
    const Counts &first = comparison.first.classes[id].counts;
    const Counts &second = comparison.second.classes[id].counts;
    table.rows.push_back({names[id], first.support(), share_or_none(first.f1()),
                          share_or_none(second.f1()), Share{difference}});
  }
  return table;
}

Table changed_documents(const Comparison &comparison, const Predictions &first,
                        const Predictions &second, const ClassNames &names) {
  Table table{
      "documents", {"document", "change", "true", "first", "second"}, {}};
  for (const Change change : {Change::worse, Change::better, Change::other}) {
    for (const ChangedDocument &doc : comparison.changed) {
      if (doc.change != change)
        continue;
      const Prediction &before = first.documents[doc.first];
      table.rows.push_back(
          {before.name, std::string(name_of(change)),
           class_list(names, before.filed_in), assigned_list(names, before),
           assigned_list(names, second.documents[doc.second])});
    }
  }
  if (table.rows.empty())
    table.note = "No document got other classes.";
  return table;
}

Table test_table(const Comparison &comparison) {
  Table table{"test", {"measure", "value"}, {}, true};
  const auto add = [&](const char *name, Cell cell) {
    table.rows.push_back({std::string(name), std::move(cell)});
  };
  add("changed_documents", std::uint64_t{comparison.changed.size()});
  add("right_in_the_first_alone", comparison.nr_first_alone_right);
  add("right_in_the_second_alone", comparison.nr_second_alone_right);
  add("mcnemar_probability", comparison.mcnemar);
  add("micro_f1_difference", Share{comparison.micro_f1.value});
  add("micro_f1_low", Share{comparison.micro_f1.low});
  add("micro_f1_high", Share{comparison.micro_f1.high});
  add("macro_f1_difference", Share{comparison.macro_f1.value});
  add("macro_f1_low", Share{comparison.macro_f1.low});
  add("macro_f1_high", Share{comparison.macro_f1.high});
  table.note = conclusion(comparison);
  return table;
}

std::string conclusion(const Comparison &comparison) {
  if (comparison.nr_common == 0)
    return "The runs have no document in common.";
  const std::uint64_t first = comparison.nr_first_alone_right;
  const std::uint64_t second = comparison.nr_second_alone_right;
  std::string text;
  if (comparison.changed.empty())
    return "All documents got the same classes.";
  if (comparison.mcnemar >= 0.05) {
    text = "Neither run is shown to get more documents exactly right";
  } else {
    text = second > first ? "The second run gets more documents exactly right"
                          : "The first run gets more documents exactly right";
  }
  return text + formatted(" (p = %.2g).\n", comparison.mcnemar) +
         sentence("Micro F1", comparison.micro_f1) + '\n' +
         sentence("Macro F1", comparison.macro_f1);
}

}  // namespace vek::reporting

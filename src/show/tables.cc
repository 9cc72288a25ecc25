#include "show/tables.h"

#include <algorithm>
#include <cstdint>
#include <functional>

#include "answering/scratch_file.h"
#include "data/names.h"
#include "show/confusions.h"

namespace vek::showing {
namespace {

using reporting::Cell;
using reporting::Names;
using reporting::Table;

std::uint64_t wide(std::uint32_t number) {
  return number;
}

bool has_updates(const KeptModel &model) {
  return model.classifier().files.columns == ProfileColumns::updates;
}

WeightType weight_of(const KeptModel &model, const ClassProfileEntry &entry) {
  return model.classifier().scoring.weight(entry, model.params());
}

// What stands behind the term or the class in a line about the two.
void add_weight_columns(const KeptModel &model, Table &table) {
  table.columns.emplace_back("weight");
  if (has_updates(model)) {
    for (const char *name :
         {"positive", "negative", "promotions", "demotions"}) {
      table.columns.emplace_back(name);
    }
  }
  table.columns.emplace_back("documents");
  table.columns.emplace_back("frequency");
}

void add_weights(const KeptModel &model, const ClassProfileEntry &entry,
                 std::vector<Cell> &row) {
  row.emplace_back(weight_of(model, entry));
  if (has_updates(model)) {
    row.emplace_back(entry.pos_weight);
    row.emplace_back(entry.neg_weight);
    row.emplace_back(wide(static_cast<std::uint32_t>(entry.promotions)));
    row.emplace_back(wide(static_cast<std::uint32_t>(entry.demotions)));
  }
  row.emplace_back(wide(entry.df));
  row.emplace_back(wide(entry.tf));
}

Names names_of(const KeptModel &model, const std::vector<ClassData *> &list) {
  Names names;
  for (const ClassData *const class_P : list)
    names.push_back(model.model().classes().full_name(class_P->id));
  return names;
}

Table record(const char *name) {
  Table table{name, {"measure", "value"}, {}};
  table.is_record = true;
  return table;
}

Table class_table(const KeptModel &model, const ClassData &data,
                  const Confusions &confusions) {
  Table table = record("class");
  const auto add = [&](const char *name, Cell value) {
    table.rows.push_back({std::string(name), std::move(value)});
  };
  const ClassTable &classes = model.model().classes();
  add("class", classes.full_name(data.id));
  add("classifier", std::string(model.classifier().name));
  add("documents", wide(data.nr_docs));
  add("documents_of_father", wide(data.father->nr_docs));
  add("terms", std::uint64_t{data.profile.size()});
  add("occurrences", wide(data.nr_terms));
  add("brothers", std::uint64_t{data.father->sons.size() - 1});
  if (!data.sons.empty())
    add("sons", names_of(model, data.sons));
  if (model.classifier().has_thresholds)
    add("threshold", data.profile.threshold());
  if (model.classifier().files.columns == ProfileColumns::exact_weight)
    add("bias", data.profile.bias());
  if (has_updates(model)) {
    std::uint64_t nr_promotions = 0;
    std::uint64_t nr_demotions = 0;
    for (const ClassProfile::Slot &slot : data.profile) {
      nr_promotions += static_cast<std::uint32_t>(slot.entry.promotions);
      nr_demotions += static_cast<std::uint32_t>(slot.entry.demotions);
    }
    add("promotions_of_terms", nr_promotions);
    add("demotions_of_terms", nr_demotions);
  }
  const Judging &judging = model.model().judging();
  if (data.id < judging.classes.size()) {
    const ClassJudging &judged = judging.classes[data.id];
    const Calibration &calibration = judged.calibration;
    add("held_out_parts", wide(judging.nr_parts));
    if (data.sons.empty())
      add("threshold_of_probability", judged.threshold);
    add("calibration_factor", calibration.factor);
    add("calibration_offset", calibration.offset);
    add("calibration_slope_low", calibration.slopes[0]);
    add("calibration_slope_middle", calibration.slopes[1]);
    add("calibration_slope_high", calibration.slopes[2]);
    add("calibration_intercept", calibration.intercept);
    add("calibration_inclusion", calibration.inclusion);
  }
  if (!confusions.file.empty())
    add("predictions", confusions.file);
  return table;
}

Table weight_table(const KeptModel &model, const ClassData &data,
                   bool is_against) {
  struct Weighed {
    WeightType weight;
    const ClassProfile::Slot *slot_P;
  };
  std::vector<Weighed> list;
  for (const ClassProfile::Slot &slot : data.profile) {
    const WeightType weight = weight_of(model, slot.entry);
    if ((weight < 0.0) == is_against)
      list.push_back({is_against ? -weight : weight, &slot});
  }
  std::ranges::stable_sort(list, std::greater{}, &Weighed::weight);
  Table table{is_against ? "against" : "terms", {"term"}, {}};
  add_weight_columns(model, table);
  for (const Weighed &weighed : list) {
    std::vector<Cell> row = {model.model().term_text(weighed.slot_P->term)};
    add_weights(model, weighed.slot_P->entry, row);
    table.rows.push_back(std::move(row));
  }
  return table;
}

Table confusion_table(const Confusions &confusions) {
  Table table{
      "confusions", {"class", "its_own_went_there", "came_from_there"}, {}};
  for (const Confused &confused : confusions.pairs) {
    table.rows.push_back({confused.with.empty() ? Cell() : Cell(confused.with),
                          confused.nr_lost, confused.nr_won});
  }
  return table;
}

std::string joined(const std::vector<std::string> &words) {
  std::string text;
  for (const std::string &word : words)
    text += (text.empty() ? "" : " ") + word;
  return text;
}

// As the words are: an atom may have blanks in it, and each blank may part
// modifier and head.
std::vector<std::uint32_t> find_literally(const Model &model,
                                          const std::string &text) {
  std::vector<std::uint32_t> found;
  const auto add = [&](std::uint32_t head, std::uint32_t mod) {
    if (head == EmptyAtom)
      return;
    const std::uint32_t term = model.terms().find(head, mod);
    if (term != EmptyAtom)
      found.push_back(term);
  };
  add(model.atoms().find(text), EmptyAtom);
  for (std::size_t blank = text.find(' '); blank != std::string::npos;
       blank = text.find(' ', blank + 1)) {
    const std::uint32_t mod = model.atoms().find(text.substr(0, blank));
    if (mod != EmptyAtom)
      add(model.atoms().find(text.substr(blank + 1)), mod);
  }
  return found;
}

// As the analyser has them. False only if it fails.
bool find_analysed(KeptModel &model, const std::string &text,
                   std::vector<std::uint32_t> &found, Failure &failure) {
  ScratchFile file;
  DocProfile profile;
  KeptModel::Cause cause{};
  if (!file.write(text, failure))
    return false;
  if (!model.profile_file(file.path(), profile, failure, cause)) {
    failure.file = "the words `" + text + "'";
    return false;
  }
  for (const DocProfileEntry &entry : profile) {
    if (entry.term < model.model().terms().size())
      found.push_back(entry.term);
  }
  return true;
}

Table pair_table(const KeptModel &model,
                 const std::vector<std::uint32_t> &found) {
  const TermTable &terms = model.model().terms();
  const ClassProfile &top = model.model().classes().get_data(0).profile;
  std::vector<std::uint32_t> heads;
  for (const std::uint32_t term : found) {
    if (terms.mod(term) == EmptyAtom)
      heads.push_back(terms.head(term));
  }
  const auto is_one = [&](std::uint32_t atom) {
    return std::ranges::find(heads, atom) != heads.end();
  };
  std::vector<std::uint32_t> pairs;
  for (std::uint32_t term = 0; !heads.empty() && term < terms.size(); ++term) {
    const std::uint32_t mod = terms.mod(term);
    if (mod != EmptyAtom && (is_one(mod) || is_one(terms.head(term))))
      pairs.push_back(term);
  }
  std::ranges::stable_sort(pairs, std::greater{},
                           [&](std::uint32_t term) { return top.df(term); });
  Table table{"pairs", {"pair", "documents", "frequency"}, {}};
  for (const std::uint32_t term : pairs) {
    table.rows.push_back({model.model().term_text(term), wide(top.df(term)),
                          wide(top.tf(term))});
  }
  return table;
}

Table term_class_table(const KeptModel &model,
                       const std::vector<std::uint32_t> &found) {
  Table table{"classes", {"term", "class"}, {}};
  add_weight_columns(model, table);
  struct Line {
    WeightType weight;
    std::vector<Cell> row;
  };
  const ClassTable &classes = model.model().classes();
  for (const std::uint32_t term : found) {
    std::vector<Line> lines;
    for (std::uint32_t id = 1; id < classes.size(); ++id) {
      const ClassProfileEntry *const entry_P =
          classes.get_data(id).profile.find(term);
      if (entry_P == nullptr)
        continue;
      Line line{weight_of(model, *entry_P),
                {model.model().term_text(term), classes.full_name(id)}};
      add_weights(model, *entry_P, line.row);
      lines.push_back(std::move(line));
    }
    std::ranges::stable_sort(lines, std::greater{}, &Line::weight);
    for (Line &line : lines)
      table.rows.push_back(std::move(line.row));
  }
  return table;
}

}  // namespace

bool add_class_tables(const KeptModel &model, const std::string &path,
                      const std::string &place, std::vector<Table> &tables,
                      Failure &failure) {
  std::uint32_t id = 0;
  Confusions confusions;
  if (!model.model().find_class(path, id, failure) ||
      (!place.empty() && !find_confusions(place, path, confusions, failure))) {
    return false;
  }
  const ClassData &data = model.model().classes().get_data(id);
  tables.push_back(class_table(model, data, confusions));
  for (const bool is_against : {false, true})
    tables.push_back(weight_table(model, data, is_against));
  tables.push_back(confusion_table(confusions));
  return true;
}

bool add_term_tables(KeptModel &model, const std::vector<std::string> &words,
                     std::vector<Table> &tables, Failure &failure) {
  const std::string text = joined(words);
  std::vector<std::uint32_t> found = find_literally(model.model(), text);
  if (found.empty() && !find_analysed(model, text, found, failure))
    return false;
  if (found.empty()) {
    failure = {model.data_directory(), "", "there is no term `" + text + "'"};
    return false;
  }
  const ClassTable &classes = model.model().classes();
  const ClassProfile &top = classes.get_data(0).profile;
  Table &table = tables.emplace_back(
      Table{"term", {"term", "documents", "frequency", "classes"}, {}});
  for (const std::uint32_t term : found) {
    std::uint64_t nr_classes = 0;
    for (std::uint32_t id = 1; id < classes.size(); ++id)
      nr_classes += classes.get_data(id).profile.find(term) != nullptr ? 1 : 0;
    table.rows.push_back({model.model().term_text(term), wide(top.df(term)),
                          wide(top.tf(term)), nr_classes});
  }
  tables.push_back(term_class_table(model, found));
  tables.push_back(pair_table(model, found));
  return true;
}

bool add_document_tables(const KeptModel &model, const std::string &name,
                         std::vector<Table> &tables, Failure &failure) {
  DocProfile profile;
  const std::string stored = model.stored_name(name);
  if (!model.model().read_profile(stored.empty() ? name : stored, profile,
                                  failure)) {
    return false;
  }
  const ClassData &top = model.model().classes().get_data(0);
  profile.weigh(top, model.params());
  Table about = record("document");
  about.rows = {{std::string("document"), stored},
                {std::string("terms"), std::uint64_t{profile.size()}},
                {std::string("occurrences"), wide(profile.total())},
                {std::string("stored"),
                 keeping::date(model.model().documents().at(stored).time)}};
  tables.push_back(std::move(about));
  std::vector<DocProfileEntry> entries(profile.begin(), profile.end());
  std::ranges::stable_sort(entries, std::greater{}, &DocProfileEntry::weight);
  Table &table = tables.emplace_back(
      Table{"terms", {"term", "frequency", "weight", "documents"}, {}});
  for (const DocProfileEntry &entry : entries) {
    table.rows.push_back({model.model().term_text(entry.term), wide(entry.freq),
                          entry.weight, wide(top.profile.df(entry.term))});
  }
  return true;
}

void add_tree_table(const KeptModel &model, Reader reader,
                    std::vector<Table> &tables) {
  const ClassTable &classes = model.model().classes();
  const Judging &judging = model.model().judging();
  Table &table =
      tables.emplace_back(Table{"tree", {"class", "documents", "terms"}, {}});
  if (model.classifier().has_thresholds)
    table.columns.emplace_back("threshold");
  if (!judging.classes.empty())
    table.columns.emplace_back("threshold_of_probability");
  // Not by recursion: a stored hierarchy can be deeper than the stack.
  std::vector<std::pair<const ClassData *, std::size_t>> waiting;
  waiting.emplace_back(&classes.get_data(0), 0);
  while (!waiting.empty()) {
    const auto [class_P, depth] = waiting.back();
    waiting.pop_back();
    for (auto son = class_P->sons.rbegin(); son != class_P->sons.rend(); ++son)
      waiting.emplace_back(*son, depth + 1);
    const bool is_top = class_P->father == nullptr;
    std::vector<Cell> row = {
        reader == Reader::person
            ? std::string(2 * std::min<std::size_t>(depth, 40), ' ') +
                  (is_top ? "(all)" : classes.get_name(class_P->id))
        : is_top ? std::string()
                 : classes.full_name(class_P->id),
        wide(class_P->nr_docs), std::uint64_t{class_P->profile.size()}};
    if (model.classifier().has_thresholds)
      row.push_back(is_top ? Cell() : Cell(class_P->profile.threshold()));
    if (!judging.classes.empty()) {
      row.push_back(class_P->sons.empty() ? Cell(judging.threshold(class_P->id))
                                          : Cell());
    }
    table.rows.push_back(std::move(row));
  }
}

}  // namespace vek::showing

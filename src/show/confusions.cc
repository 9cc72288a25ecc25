#include "show/confusions.h"

#include <algorithm>
#include <map>

#include "base/helpers.h"
#include "report/figures.h"
#include "report/predictions.h"

namespace vek::showing {
namespace {

using reporting::ClassNames;
using reporting::Prediction;
using reporting::Predictions;
using reporting::Scored;

bool is_below(const std::string &path, const std::string &father) {
  return father.empty() ||
         (path.size() > father.size() && path.starts_with(father) &&
          path[father.size()] == '/');
}

// The class itself or the brother in which a class lies, or else that class.
std::string seen_from(const std::string &class_path, const std::string &path) {
  const std::size_t slash = class_path.rfind('/');
  const std::string father =
      slash == std::string::npos ? "" : class_path.substr(0, slash);
  if (path == class_path || is_below(path, class_path))
    return class_path;
  if (!is_below(path, father))
    return path;
  return path.substr(0, path.find('/', father.empty() ? 0 : father.size() + 1));
}

// The predictions with the classes as they are seen from one.
class View {
 public:
  View(const ClassNames &names, const std::string &class_path)
      : own_id(seen.enter(class_path)) {
    for (std::uint32_t id = 0; id < names.size(); ++id)
      ids_.push_back(seen.enter(seen_from(class_path, names[id])));
  }

  void apply(Prediction &doc) const {
    for (std::uint32_t &id : doc.filed_in)
      id = ids_[id];
    for (Scored &scored : doc.assigned)
      scored.class_id = ids_[scored.class_id];
    std::ranges::sort(doc.filed_in);
    doc.filed_in.erase(std::unique(doc.filed_in.begin(), doc.filed_in.end()),
                       doc.filed_in.end());
    const auto same = [](const Scored &a, const Scored &b) {
      return a.class_id == b.class_id;
    };
    std::ranges::stable_sort(doc.assigned, {}, &Scored::class_id);
    doc.assigned.erase(
        std::unique(doc.assigned.begin(), doc.assigned.end(), same),
        doc.assigned.end());
  }

  ClassNames seen;
  const std::uint32_t own_id;

 private:
  std::vector<std::uint32_t> ids_;
};

}  // namespace

bool has_predictions(const std::string &place) {
  if (!is_directory(place))
    return file_exists(place);
  Directory entries(place);
  std::string entry;
  while (!entries.failed() && entries.read(entry)) {
    if (entry.starts_with("predictions") && entry.ends_with(".tsv"))
      return true;
  }
  return false;
}

bool find_confusions(const std::string &place, const std::string &class_path,
                     Confusions &confusions, Failure &failure) {
  confusions = {};
  ClassNames names;
  Predictions predictions;
  if (!reporting::find_predictions(place, names, predictions, failure))
    return false;
  confusions.file = predictions.file;
  const View view(names, class_path);
  for (Prediction &doc : predictions.documents)
    view.apply(doc);
  bool is_complete = true;
  std::map<std::string, Confused> by_class;
  for (const reporting::Confusion &pair : reporting::find_confusions(
           predictions, reporting::judge_all(predictions), is_complete)) {
    const bool is_lost = pair.filed_in == view.own_id;
    if (!is_lost && pair.got != view.own_id)
      continue;
    const std::uint32_t other = is_lost ? pair.got : pair.filed_in;
    const std::string name =
        other == reporting::Confusion::no_class ? "" : view.seen[other];
    Confused &confused = by_class[name];
    confused.with = name;
    (is_lost ? confused.nr_lost : confused.nr_won) += pair.nr_documents;
  }
  for (auto &[name, confused] : by_class)
    confusions.pairs.push_back(std::move(confused));
  std::ranges::stable_sort(confusions.pairs, std::greater{},
                           [](const Confused &confused) {
                             return confused.nr_lost + confused.nr_won;
                           });
  return true;
}

}  // namespace vek::showing

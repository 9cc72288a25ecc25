#include "data/contents.h"

#include <algorithm>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <vector>

#include "answering/manifest.h"
#include "base/helpers.h"
#include "base/progress_line.h"
#include "data/class_files.h"
#include "data/files.h"
#include "data/names.h"
#include "model/model.h"
#include "params/resources.h"
#include "store/datafiles.h"
#include "store/filestore.h"
#include "store/storeio.h"

namespace vek::keeping {
namespace {

// Objects keep the order in which their members came.
using Json = nlohmann::ordered_json;

constexpr std::uint32_t term_size = 8;

std::string line_of(const Json &value) {
  return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::uint64_t bytes_of(const std::string &path) {
  return static_cast<std::uint64_t>(std::max<std::int64_t>(file_size(path), 0));
}

bool add_sizes(const std::string &directory, const StoreReader::Blocks &blocks,
               Json &info, Failure &failure) {
  std::vector<std::string> names;
  if (!list_directory(directory, names, failure))
    return false;
  std::uint64_t all = 0;
  for (const std::string &name : names)
    all += bytes_of(Path(directory, name, ""));
  std::uint64_t dead = 0;
  const std::string base = profile_store_path(directory);
  for (guint32 id = 0; id < MAX_NR_STORES; ++id)
    dead += bytes_of(repository_path(base.c_str(), id));
  info["bytes"] = all;
  info["repository_bytes"] = dead;
  for (const auto &[name, block] : blocks)
    dead -= std::min<std::uint64_t>(dead, block.size);
  info["dead_bytes"] = dead;
  return true;
}

// Of a model that has been read. A threshold that nobody has set is 1.
void add_judging(const Model &model, Json &info) {
  info["classes_with_threshold"] =
      std::ranges::count_if(model.classes(), [](const auto &entry) {
        return entry.second.profile.threshold() != 1.0;
      });
  const Judging &judging = model.judging();
  if (judging.classes.empty())
    return;
  info["heldout_parts"] = judging.nr_parts;
  info["shared_probabilities"] = judging.share;
}

// Without class files there is no class.
bool add_classes(const std::string &directory, Model &model, Json &info,
                 Failure &failure) {
  ClassFiles files;
  ClassTable classes;
  if (!files.open(directory, failure))
    return false;
  const Presence presence = files.presence("classes");
  if (presence == Presence::unknown)
    return fails(files.path("classes"), failure);
  const bool has_table = presence == Presence::there;
  if (has_table && !files.read_table(classes, failure))
    return false;
  info["classes"] = classes.size();
  info["classes_with_documents"] = std::ranges::count_if(
      classes, [](const auto &entry) { return entry.second.nr_docs != 0; });
  Failure unknown;
  const Classifier *const classifier_P =
      has_table ? model.find_classifier(unknown) : nullptr;
  info["classifier"] = nullptr;
  info["classes_with_threshold"] = nullptr;
  info["heldout_parts"] = nullptr;
  info["shared_probabilities"] = nullptr;
  if (classifier_P == nullptr)
    return true;
  info["classifier"] = classifier_P->name;
  if (!model.read_classes(*classifier_P, failure))
    return false;
  add_judging(model, info);
  return true;
}

void add_dates(const StoreReader::Blocks &blocks, Json &info) {
  info["first_stored"] = nullptr;
  info["last_stored"] = nullptr;
  if (blocks.empty())
    return;
  const auto [first, last] = std::ranges::minmax_element(
      blocks, {}, [](const auto &entry) { return entry.second.time; });
  info["first_stored"] = date(first->second.time);
  info["last_stored"] = date(last->second.time);
}

void add_figures(const std::string &kind,
                 const std::optional<Manifest::Figures> &figures, Json &info) {
  const auto add = [&](const char *name, const auto &value) {
    info[kind + name] = figures ? Json(value) : Json();
  };
  const Manifest::Figures values = figures.value_or(Manifest::Figures());
  add("_documents", values.documents);
  add("_precision", values.precision);
  add("_recall", values.recall);
  add("_f", values.f);
  add("_fallout", values.fallout);
}

bool add_manifest(const std::string &directory, Json &info, Failure &failure) {
  Manifest manifest;
  Params params;
  if (!manifest.read(directory, failure) ||
      !read_resources(directory, "", params, failure)) {
    return false;
  }
  info["packed"] = manifest.date;
  info["packed_by"] = "vek " + manifest.version;
  info["analyser"] = params.analyser;
  info["learnt_documents"] = manifest.documents;
  add_figures("test", manifest.test, info);
  add_figures("heldout", manifest.held_out, info);
  return true;
}

}  // namespace

bool print_info(const std::string &place, Format format, std::ostream &out,
                Failure &failure) {
  Model model;
  Json info;
  std::string directory = place;
  if (is_packed_model(place)) {
    directory = Path(place, packed_data, "");
    if (!add_manifest(place, info, failure))
      return false;
  }
  if (!model.open(directory, failure))
    return false;
  const StoreReader::Blocks &blocks = model.documents();
  info["documents"] = blocks.size();
  info["documents_without_terms"] =
      std::ranges::count_if(blocks, [](const auto &entry) {
        return entry.second.size <= empty_profile_size;
      });
  info["terms"] = model.terms().size();
  info["atoms"] = model.atoms().size();
  if (!add_classes(directory, model, info, failure) ||
      !add_sizes(directory, blocks, info, failure)) {
    return false;
  }
  add_dates(blocks, info);
  if (format == Format::json) {
    out << line_of(info) << '\n';
    return true;
  }
  for (const auto &[key, value] : info.items()) {
    out << key << '\t';
    if (value.is_null())
      out << '-';
    else if (value.is_string())
      out << escaped(value.get_ref<const std::string &>());
    else
      out << value;
    out << '\n';
  }
  return true;
}

bool print_list(const std::string &directory, Which which, Format format,
                std::ostream &out, Failure &failure) {
  StoreReader store;
  if (!store.open(profile_store_path(directory), failure))
    return false;
  for (const auto &[name, block] : store.blocks()) {
    if (which == Which::empty && block.size > empty_profile_size)
      continue;
    const std::uint32_t nr_terms =
        (std::max(block.size, empty_profile_size) - empty_profile_size) /
        term_size;
    if (format == Format::json) {
      out << line_of({{"name", name},
                      {"terms", nr_terms},
                      {"bytes", block.size},
                      {"date", date(block.time)}});
    } else {
      out << escaped(name) << '\t' << nr_terms << '\t' << block.size << '\t'
          << date(block.time);
    }
    out << '\n';
  }
  return true;
}

bool print_profiles(const std::string &directory, Format format,
                    std::ostream &out, Failure &failure) {
  Model model;
  if (!model.open(directory, failure))
    return false;
  // The lines themselves are progress enough where they go to the terminal.
  ProgressLine progress("vek-data", ProgressLine::Shown::on_terminal,
                        model.documents().size());
  DocProfile profile;
  for (const auto &[name, block] : model.documents()) {
    profile.clear();
    if (!model.read_profile(name, profile, failure))
      return false;
    Json terms = Json::array();
    for (const DocProfileEntry &entry : profile) {
      const std::string term = model.term_text(entry.term);
      if (format == Format::json) {
        terms.push_back({{"term", term}, {"frequency", entry.freq}});
      } else {
        out << escaped(name) << '\t' << escaped(term) << '\t' << entry.freq
            << '\n';
      }
    }
    if (format == Format::json)
      out << line_of({{"name", name}, {"terms", terms}}) << '\n';
    progress.count();
  }
  progress.finish();
  return true;
}

}  // namespace vek::keeping

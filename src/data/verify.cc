#include "data/verify.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>
#include <vector>

#include "base/helpers.h"
#include "base/input_file.h"
#include "base/progress_line.h"
#include "data/files.h"
#include "evaluation/judging.h"
#include "store/datafiles.h"

namespace vek::keeping {
namespace {

constexpr char new_directory[] =
    "take a copy of the directory, or analyse all documents into a new one";
constexpr char forget_it[] =
    "`vek-data forget' it, and the next run analyses it anew";
constexpr char learn_again[] = "learn again with `save on'";

std::string profile_of(const std::string &name) {
  return "the profile of document `" + name + "'";
}

}  // namespace

std::string Verification::path(const std::string &name) const {
  return Path(directory_, name, "");
}

bool Verification::is_there(const std::string &name) const {
  return std::ranges::binary_search(names_, name);
}

void Verification::damage(const Failure &failure, const std::string &remedy) {
  has_damage_ = true;
  report_({failure, remedy});
}

void Verification::note(const std::string &name, const std::string &text) {
  report_({{path(name), "", text}, ""});
}

bool Verification::run(Failure &failure) {
  if (!check_names(failure))
    return false;
  // What is no file cannot be read, and some of it would be waited for.
  if (has_damage_)
    return true;
  check_vocabulary();
  check_store();
  check_classes();
  return true;
}

// Of the files with names of vek's, of what kind they are, whether they may be
// read, and which of them are left by a broken-off run.
bool Verification::check_names(Failure &failure) {
  if (!list_directory(directory_, names_, failure))
    return false;
  for (const std::string &name : names_) {
    if (!is_own_file(name))
      continue;
    struct stat status = {};
    if (stat(path(name).c_str(), &status) != 0 && errno != ENOENT)
      return fails(path(name), failure);
    if (!S_ISREG(status.st_mode)) {
      damage({path(name), "", "no regular file"}, "move it away");
      continue;
    }
    failure = {path(name), "", ""};
    const int fd = open_input(path(name), failure.reason);
    if (fd < 0)
      return false;
    close(fd);
    if (is_temporary_file(name))
      note(name, "left by a broken-off run; it can be removed");
  }
  if (is_there("profile-store.new"))
    note("profile-store.new",
         "the index was being written; the next run completes that");
  return true;
}

void Verification::check_vocabulary() {
  Failure failure;
  const bool is_good = model_.open(directory_, failure);
  for (const char *name : {"atoms.dat", "terms.dat", "journal.dat"}) {
    if (!is_good && failure.file == path(name)) {
      damage(failure, new_directory);
      return;
    }
  }
  nr_terms_ = model_.terms().size();
  if (!is_there("atoms.dat") && !is_there("journal.dat") &&
      is_there("terms.dat") && file_size(path("terms.dat")) != 0) {
    damage({path("terms.dat"), "", "there is no atoms.dat to it"},
           new_directory);
  }
}

void Verification::check_store() {
  StoreReader store;
  Failure failure;
  const std::string index = "profile-store.idx";
  if (!is_there(index) && !is_there("profile-store.new")) {
    damage({path(index), "", "it is missing"}, new_directory);
    return;
  }
  if (is_there(index) && file_size(path(index)) == 0 &&
      is_there("profile-store.000")) {
    note(index, "empty: the first run was broken off before it was written");
  }
  if (!store.open(profile_store_path(directory_), failure)) {
    damage(failure, new_directory);
    return;
  }
  check_overlaps(store);
  if (depth_ == Depth::quick)
    return;
  ProgressLine progress("vek-data", ProgressLine::Shown::on_terminal,
                        store.blocks().size());
  for (const auto &[name, block] : store.blocks()) {
    check_profile(store, name, block);
    progress.count();
  }
  progress.finish();
}

void Verification::check_overlaps(const StoreReader &store) {
  using Place = std::pair<std::uint32_t, std::int64_t>;
  std::vector<std::pair<Place, const std::string *>> blocks;
  for (const auto &[name, block] : store.blocks()) {
    // An empty one overlaps nothing.
    if (block.size != 0)
      blocks.push_back({{block.repository_id, block.offset}, &name});
  }
  std::ranges::sort(blocks);
  Place end;
  const std::string *before_P = nullptr;
  for (const auto &[place, name_P] : blocks) {
    if (before_P != nullptr && place < end) {
      damage({path("profile-store.idx"), profile_of(*name_P),
              "it overlaps that of `" + *before_P + "'"},
             "`vek-data forget' both, and the next run analyses them anew");
    }
    const Place own_end = {
        place.first, place.second + store.blocks().find(*name_P)->second.size};
    if (before_P == nullptr || own_end > end) {
      end = own_end;
      before_P = name_P;
    }
  }
}

void Verification::check_profile(const StoreReader &store,
                                 const std::string &name,
                                 const StoreReader::Block &block) {
  std::string bytes;
  Failure failure;
  if (!store.read(block, bytes, failure)) {
    damage({failure.file, profile_of(name), failure.reason}, forget_it);
    return;
  }
  const std::string file =
      path("profile-store.00" + std::to_string(block.repository_id));
  const auto damage_profile = [&](const std::string &reason) {
    damage({file, profile_of(name), reason}, forget_it);
  };
  DocProfile profile;
  if (bytes.size() < sizeof(std::uint32_t) ||
      !profile.read(bytes.data(), static_cast<unsigned>(bytes.size()))) {
    damage_profile("its length is wrong");
    return;
  }
  std::vector<std::uint32_t> terms;
  for (const DocProfileEntry &entry : profile)
    terms.push_back(entry.term);
  std::ranges::sort(terms);
  if (std::ranges::adjacent_find(terms) != terms.end())
    damage_profile("a term is there twice");
  else if (!terms.empty() && terms.back() >= nr_terms_)
    damage_profile("it has terms that are not known");
}

void Verification::check_classes() {
  ClassFiles files;
  ClassTable classes;
  Failure failure;
  if (!files.open(directory_, failure)) {
    damage(failure, "remove it and all class files, and learn again");
    return;
  }
  if (files.are_waiting())
    note("class-files.dat",
         "class files were being replaced; the next run completes that");
  if (files.presence("classes") != Presence::missing &&
      !files.read_table(classes, failure)) {
    damage(failure, learn_again);
    return;
  }
  const Classifier *const classifier_P = find_classifier(files, classes);
  for (const auto &[key, data] : classes) {
    check_class(
        files, data,
        classifier_P == nullptr ? classifiers().front() : *classifier_P);
  }
  check_judging(files, classes);
  check_spare_class_files(classes);
}

// The one whose profiles are of the form that the first class profile with a
// term has. Without any term nobody can tell.
const Classifier *Verification::find_classifier(
    const ClassFiles &files, const ClassTable &classes) const {
  for (const auto &[key, data] : classes) {
    std::string text;
    Failure ignored;
    if (!files.read(class_file_name(data.id, class_profile_suffix), text,
                    ignored))
      continue;
    for (const Classifier &classifier : classifiers()) {
      ClassProfile profile;
      std::uint32_t nr_terms = 0;
      if (profile.parse(text, nr_terms, classifier.files.columns) &&
          profile.size() != 0)
        return &classifier;
    }
  }
  return nullptr;
}

void Verification::check_class(const ClassFiles &files, const ClassData &data,
                               const Classifier &classifier) {
  const std::string name = class_file_name(data.id, class_profile_suffix);
  std::string text;
  Failure failure;
  ClassProfile profile;
  std::uint32_t nr_terms = 0;
  if (!files.read(name, text, failure)) {
    damage(failure, learn_again);
    return;
  }
  LineFault fault;
  if (!profile.parse(text, nr_terms, classifier.files.columns, nr_terms_,
                     fault)) {
    damage({path(name), fault.place(),
            std::string("no class profile of ") + classifier.name + ": " +
                fault.reason},
           learn_again);
    return;
  }
  if (nr_terms != data.nr_terms) {
    damage({path(name), "line 1", "it does not belong to the class table"},
           learn_again);
  }
  if (classifier.files.weights_suffix == nullptr)
    return;
  const std::string weights =
      class_file_name(data.id, classifier.files.weights_suffix);
  if (!files.read(weights, text, failure)) {
    damage(failure, learn_again);
  } else if (!classifier.files.parse_weights(text, profile)) {
    damage({path(weights), "", "the weights do not fit the class profile"},
           learn_again);
  }
}

// A model that was kept without held-out documents has none, or an empty one
// where there had been one.
void Verification::check_judging(const ClassFiles &files,
                                 const ClassTable &classes) {
  if (classes.size() == 0 || files.presence(judging_name) == Presence::missing)
    return;
  std::string text;
  Failure failure;
  Judging judging;
  if (!files.read(judging_name, text, failure)) {
    damage(failure, learn_again);
  } else if (!text.empty() && !judging.parse(text, classes)) {
    damage({path(judging_name), "",
            "format error, or of another number of classes"},
           learn_again);
  }
}

void Verification::check_spare_class_files(const ClassTable &classes) {
  for (const std::string &name : names_) {
    if (!is_class_file(name) || name == "classes")
      continue;
    if (classes.size() == 0) {
      damage({path(name), "", "there is no class table to it"}, learn_again);
      continue;
    }
    if (name == judging_name)
      continue;
    const std::string number = name.substr(5, name.size() - 9);
    if (number.size() >= 10 || std::stoul(number) >= classes.size())
      note(name, "of no class; it can be removed");
  }
}

}  // namespace vek::keeping

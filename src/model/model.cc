#include "model/model.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <vector>

#include "base/helpers.h"
#include "base/input_file.h"
#include "base/textio.h"
#include "store/datafiles.h"
#include "store/filesetformat.h"
#include "store/journalformat.h"

namespace vek {
namespace {

bool read(const std::string &path, std::string &text, Failure &failure) {
  const KeepErrno keep;
  failure = {path, "", ""};
  return read_file(path, text, failure.reason) == ReadResult::ok;
}

// False, with `failure` filled in, if the system fails to say.
bool look_for(const std::string &path, bool &is_there, Failure &failure) {
  const KeepErrno keep;
  const Presence presence = presence_of(path);
  if (presence == Presence::unknown)
    failure = {path, "", std::strerror(errno)};
  is_there = presence == Presence::there;
  return presence != Presence::unknown;
}

Failure failure_at(const std::string &path, const LineFault &fault) {
  return {path, fault.place(), fault.reason};
}

// How many tabs the first line has, and how many end the fields of a line with
// those columns.
struct NrTabs {
  std::size_t first;
  std::size_t other;
  bool operator==(const NrTabs &) const = default;
};

NrTabs nr_tabs(ProfileColumns columns) {
  switch (columns) {
    case ProfileColumns::frequencies:
      break;
    case ProfileColumns::weight:
      return {2, 4};
    case ProfileColumns::exact_weight:
      return {3, 4};
    case ProfileColumns::updates:
      return {2, 5};
  }
  return {2, 3};
}

std::size_t count_tabs(std::string_view line) {
  return static_cast<std::size_t>(std::ranges::count(line, '\t'));
}

}  // namespace

bool Model::open(const std::string &directory, Failure &failure) {
  directory_ = directory;
  if (!is_directory(directory)) {
    failure = {directory, "", "there is no such directory"};
    return false;
  }
  // The vocabulary first: read_profile() checks terms against it.
  return read_vocabulary(failure) &&
         store_.open(profile_store_path(directory), failure) &&
         read_class_set(failure);
}

// A directory without atoms.dat counts as new, except for what the journal has.
//
// The journal is written before either table grows and removed when both have
// grown. While it is there, each table counts up to the length that it gives,
// and what was to be appended is taken from the journal itself.
bool Model::read_vocabulary(Failure &failure) {
  const std::string paths[] = {atoms_path(directory_), terms_path(directory_)};
  const std::string path_of_journal = journal_path(directory_);
  bool has_journal = false;
  bool is_there[2] = {};
  if (!look_for(path_of_journal, has_journal, failure) ||
      !look_for(paths[0], is_there[0], failure) ||
      !look_for(paths[1], is_there[1], failure)) {
    return false;
  }
  std::string journal_text;
  JournalContent journal;
  if (has_journal) {
    if (!read(path_of_journal, journal_text, failure))
      return false;
    if (!parse_journal(journal_text, journal)) {
      failure = {path_of_journal, "", "format error"};
      return false;
    }
  }
  const std::uint64_t sizes[] = {journal.atoms_size, journal.terms_size};
  const std::size_t nr_pending[] = {journal.new_atoms.size(),
                                    journal.new_terms.size()};
  std::string texts[2];
  for (std::size_t i = 0; i < 2; ++i) {
    const bool is_wanted = has_journal ? is_there[i] : is_there[0];
    if (is_wanted && !read(paths[i], texts[i], failure))
      return false;
    if (!has_journal)
      continue;
    if (!fits_journal(texts[i], sizes[i], nr_pending[i])) {
      failure = {path_of_journal, "", "it does not fit " + paths[i]};
      return false;
    }
    // A part of the pending lines may be there already, and the last may be
    // cut.
    texts[i].resize(sizes[i]);
  }
  if (!atoms_.parse(texts[0])) {
    failure = failure_at(paths[0], atoms_.fault(texts[0]));
    return false;
  }
  // After the atoms, on which its terms depend; and both before the journal,
  // whose ids follow theirs.
  if (!terms_.parse(texts[1], atoms_.size())) {
    failure = failure_at(paths[1], terms_.fault(texts[1], atoms_.size()));
    return false;
  }
  if (has_journal && !enter_journal(journal, atoms_, terms_)) {
    failure = {path_of_journal, "", "it does not fit the tables"};
    return false;
  }
  return true;
}

// Class files that a run had begun to replace are complete in one file.
bool Model::read_class_set(Failure &failure) {
  const Path path(directory_, class_set_name, ".dat");
  bool is_there = false;
  if (!look_for(path, is_there, failure))
    return false;
  if (!is_there)
    return true;
  std::string text;
  if (!read(path, text, failure))
    return false;
  std::vector<FileSetMember> members;
  if (!parse_file_set(text, members)) {
    failure = {path, "", "format error"};
    return false;
  }
  for (const FileSetMember &member : members)
    waiting_class_files_[std::string(member.name)] = member.content;
  return true;
}

bool Model::read_class_file(const std::string &name, std::string &text,
                            Failure &failure) const {
  // A complete set that waits is newer than any file in place, of which some
  // may be cut.
  const auto place = waiting_class_files_.find(name);
  if (place == waiting_class_files_.end())
    return read(Path(directory_, name, ""), text, failure);
  text = place->second;
  return true;
}

bool Model::read_classes(const Classifier &classifier, Failure &failure) {
  std::string text;
  if (!read_class_file("classes", text, failure))
    return false;
  if (classes_.parse(text) != ClassTable::Parsed::good) {
    failure = {classes_path(directory_),
               // The first line has the number of classes.
               "line " + std::to_string(classes_.size() + 2), "format error"};
    return false;
  }
  for (auto &[key, data] : classes_) {
    const std::string name = class_file_name(data.id, class_profile_suffix);
    if (!read_class_file(name, text, failure))
      return false;
    LineFault fault;
    if (!data.profile.parse(text, data.nr_terms, classifier.files.columns,
                            terms_.size(), fault)) {
      fault.reason = std::string("no class profile of ") + classifier.name +
                     ": " + fault.reason;
      failure = failure_at(Path(directory_, name, ""), fault);
      return false;
    }
    if (classifier.files.weights_suffix == nullptr)
      continue;
    const std::string weights =
        class_file_name(data.id, classifier.files.weights_suffix);
    if (!read_class_file(weights, text, failure))
      return false;
    if (!classifier.files.parse_weights(text, data.profile)) {
      failure = {Path(directory_, weights, ""), "",
                 "the weights do not fit the class profile"};
      return false;
    }
  }
  if (classifier.restore_weights != nullptr)
    classifier.restore_weights(classes_);
  if (!read_judging(failure))
    return false;
  // As in a run of vek: what another classifier's scores stand for says
  // nothing.
  if (judging_.is_of_another(classifier.algorithm))
    judging_ = {};
  return true;
}

bool Model::read_judging(Failure &failure) {
  const Path path(directory_, judging_name, "");
  bool is_there = waiting_class_files_.contains(judging_name);
  if (!is_there && !look_for(path, is_there, failure))
    return false;
  std::string text;
  if (!is_there)
    return true;
  if (!read_class_file(judging_name, text, failure))
    return false;
  if (text.empty() || judging_.parse(text, classes_))
    return true;
  failure = {path, "", "format error"};
  return false;
}

const Classifier *Model::find_classifier(Failure &failure) const {
  for (std::uint32_t id = 0;; ++id) {
    std::string text;
    const std::string name = class_file_name(id, class_profile_suffix);
    if (!read_class_file(name, text, failure))
      return nullptr;
    std::string_view rest = text;
    std::string_view first;
    std::string_view line;
    // The second line is the first entry. A class may have none; the last class
    // is followed by a file that is missing, which ends the search.
    if (!take_line(rest, first) || !take_line(rest, line))
      continue;
    const NrTabs tabs = {count_tabs(first), count_tabs(line)};
    for (const Classifier &classifier : classifiers()) {
      if (nr_tabs(classifier.files.columns) == tabs)
        return &classifier;
    }
    failure = {Path(directory_, name, ""), "line 2", "of no known classifier"};
    return nullptr;
  }
}

std::string Model::term_text(std::uint32_t term_id) const {
  std::string text;
  const std::uint32_t mod = terms_.mod(term_id);
  if (mod != EmptyAtom) {
    text += atoms_.text(mod);
    text += ' ';
  }
  text += atoms_.text(terms_.head(term_id));
  return text;
}

bool Model::find_class(const std::string &path, std::uint32_t &id,
                       Failure &failure) const {
  for (std::uint32_t i = 1; i < classes_.size(); ++i) {
    if (classes_.full_name(i) == path) {
      id = i;
      return true;
    }
  }
  failure = {classes_path(directory_), "", "there is no class `" + path + "'"};
  return false;
}

bool Model::read_profile(const std::string &name, DocProfile &profile,
                         Failure &failure) const {
  const auto place = documents().find(name);
  if (place == documents().end()) {
    failure = {directory_, "",
               "there is no profile of document `" + name + "'"};
    return false;
  }
  std::string bytes;
  if (!store_.read(place->second, bytes, failure))
    return false;
  const std::string what = "the profile of document `" + name + "'";
  // Checked here, as DocProfile::read() takes a shorter block for a programming
  // error and would end the process.
  if (bytes.size() < sizeof(std::uint32_t) ||
      !profile.read(bytes.data(), static_cast<unsigned>(bytes.size()))) {
    failure = {directory_, what, "its length is wrong"};
    return false;
  }
  if (profile.drop_unknown(terms_.size()) != 0) {
    failure = {directory_, what, "it has terms that are not known"};
    return false;
  }
  return true;
}

}  // namespace vek

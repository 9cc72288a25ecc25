#include "answering/kept_model.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <vector>

#include "answering/manifest.h"
#include "base/helpers.h"
#include "base/messages.h"
#include "intake/DocParser.h"
#include "intake/lists.h"
#include "intake/textfile.h"
#include "params/resources.h"
#include "store/directorylock.h"

namespace vek {
namespace {

// Of the atoms of one text, those of the vocabulary where it has them; the
// others have ids behind it.
std::vector<std::uint32_t> known_ids(const AtomTable &atoms,
                                     const AtomTable &vocabulary) {
  std::vector<std::uint32_t> ids(atoms.size());
  std::uint32_t next_id = vocabulary.size();
  for (std::uint32_t id = 0; id < atoms.size(); ++id) {
    const std::uint32_t known = vocabulary.find(atoms.text(id));
    ids[id] = known != EmptyAtom ? known : next_id++;
  }
  return ids;
}

}  // namespace

KeptModel::~KeptModel() {
  process_.end();
}

bool KeptModel::open(const Place &place, Failure &failure) {
  directory_ = place.directory;
  if (!directory_.empty() && !is_directory(directory_)) {
    failure = {directory_, "", "there is no such directory"};
    return false;
  }
  if (!check_packed_model(directory_, failure))
    return false;
  if (!read_resources(directory_, place.resource_file, params_, failure))
    return false;
  if (place.algorithm)
    params_.algorithm = *place.algorithm;
  if (!place.data_directory.empty())
    params_.data_directory = place.data_directory;
  data_directory_ = path_from(directory_, params_.data_directory);
  DirectoryLock lock;
  if (lock.take(data_directory_, DirectoryLock::Mode::shared) ==
      DirectoryLock::Outcome::held) {
    failure = {data_directory_, "", "a run is using it"};
    return false;
  }
  // Where it cannot be locked, the model says why, or there are no locks.
  if (!model_.open(data_directory_, failure) ||
      !model_.read_classes(classifier(), failure)) {
    return false;
  }
  if (model_.classes().size() < 2) {
    failure = {data_directory_, "", "the model has no classes"};
    return false;
  }
  judge_.emplace(model_.classes(), classifier().scoring, params_,
                 model_.judging());
  return true;
}

std::string KeptModel::text_path(const std::string &name) const {
  return Path(path_from(directory_, params_.file_directory), name,
              document_suffix);
}

std::string KeptModel::stored_name(const std::string &name) const {
  if (model_.documents().contains(name))
    return name;
  std::string stripped;
  strip_suffix(stripped, name, document_suffix);
  return model_.documents().contains(stripped) ? stripped : "";
}

bool KeptModel::profile(std::string_view analysis, DocProfile &profile,
                        Failure &failure) const {
  profile.clear();
  StringPool pool;
  AtomTable atoms(pool);
  TermBag bag;
  Messages no_messages;
  DocParser parser(atoms, bag, analysis, "", no_messages);
  const std::uint64_t nr_atoms =
      parser.parse() ? std::uint64_t{atoms.size()} + model_.atoms().size()
                     : EmptyAtom;
  if (nr_atoms >= EmptyAtom ||
      bag.size() >= EmptyAtom - model_.terms().size()) {
    failure = {data_directory_, "", "no more words can be numbered"};
    return false;
  }
  // In the order of the ids that vek would give to the words and pairs: it is
  // that of the sums.
  const std::vector<std::uint32_t> ids = known_ids(atoms, model_.atoms());
  std::vector<TermBagEntry> entries(bag.begin(), bag.end());
  for (auto &[pair, count] : entries) {
    pair.head = ids[pair.head];
    if (pair.mod != EmptyAtom)
      pair.mod = ids[pair.mod];
  }
  std::ranges::sort(entries, {}, &TermBagEntry::pair);
  std::uint32_t next_id = model_.terms().size();
  for (const auto &[pair, count] : entries) {
    const std::uint32_t term = model_.terms().find(pair.head, pair.mod);
    profile.add_term(term != EmptyAtom ? term : next_id++, count);
  }
  return true;
}

bool KeptModel::analyse_file(const std::string &path, std::string &analysis,
                             Failure &failure, Cause &cause) {
  const KeepErrno keep;
  cause = Cause::text;
  const TextFile file(path);
  failure = {path, "", file.problem()};
  if (!file.problem().empty())
    return false;
  if (params_.analyser.empty()) {
    if (!read_analysis(file, analysis)) {
      failure.reason = std::strerror(errno);
      return false;
    }
  } else {
    // The analyser works in another directory.
    std::error_code error;
    const std::string place =
        directory_.empty() ? path
                           : std::filesystem::absolute(path, error).string();
    if (error)
      failure.reason = error.message();
    else if (place.find('\n') != std::string::npos)
      failure.reason = "a line end in its name";
    if (!failure.reason.empty())
      return false;
    cause = Cause::analyser;
    if (!ask(place, analysis, failure)) {
      process_.end();
      return false;
    }
  }
  cut_at_nul(analysis);
  return true;
}

bool KeptModel::ask(const std::string &path, std::string &analysis,
                    Failure &failure) {
  const std::string who = "analyser `" + params_.analyser + "' ";
  AnalyserProcess::Fault fault;
  using Kind = AnalyserProcess::Fault::Kind;
  if (!process_.is_running() &&
      !process_.start(params_.analyser, fault, directory_)) {
    failure.reason =
        fault.kind == Kind::command
            ? who + fault.reason
            : who + "cannot be started: " + fault.reason +
                  (fault.kind == Kind::execution
                       ? "; give its full path with `analyser', it is not "
                         "looked for on the PATH"
                       : "");
    return false;
  }
  if (process_.ask(path, std::chrono::seconds(params_.analyser_timeout),
                   analysis, fault)) {
    return true;
  }
  failure.reason = who + "failed: " + fault.reason;
  const std::string end =
      fault.kind == Kind::ended ? process_.how_it_ended() : "";
  if (!end.empty())
    failure.reason += "; " + end;
  return false;
}

bool KeptModel::profile_file(const std::string &path, DocProfile &profile,
                             Failure &failure, Cause &cause) {
  std::string analysis;
  if (!analyse_file(path, analysis, failure, cause))
    return false;
  cause = Cause::text;
  return this->profile(analysis, profile, failure);
}

std::optional<Algorithm> algorithm_of_letter(char letter) {
  for (const Classifier &classifier : classifiers()) {
    if (classifier.option_letter == letter)
      return classifier.algorithm;
  }
  return std::nullopt;
}

}  // namespace vek

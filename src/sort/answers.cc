#include "sort/answers.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "answering/manifest.h"
#include "base/helpers.h"
#include "base/input_file.h"
#include "data/class_files.h"
#include "data/files.h"
#include "import/directory.h"
#include "import/naming.h"
#include "params/resources.h"
#include "sort/folders.h"
#include "sort/placing.h"
#include "sort/text_reader.h"
#include "store/datafiles.h"

namespace vek::sorting {
namespace {

// A text that no analyser fails on, to tell whether it fails on all.
constexpr char harmless_text[] = "word\n";

}  // namespace

Answers::~Answers() {
  if (memory_ >= 0)
    close(memory_);
}

// All that an answer depends on, but for the vocabulary, which only grows.
std::vector<std::string> Answers::files() const {
  std::vector<std::string> files = {
      directory_ + '/' + importing::resource_file,
      directory_ + '/' + importing::settings_file};
  std::vector<std::string> names;
  Failure ignored;
  keeping::list_directory(data_directory_, names, ignored);
  for (const std::string &name : names) {
    if (is_class_file(name) || name == std::string(class_set_name) + ".dat")
      files.push_back(data_directory_ + '/' + name);
  }
  return files;
}

// Of a model that was copied here in the midst of being read, the rest may come
// last: a manifest, the vocabulary.
std::string Answers::find_state() const {
  std::string state;
  std::vector<std::string> all = files();
  all.push_back(directory_ + '/' + manifest_name);
  if (has_failed_) {
    all.push_back(data_directory_ + "/atoms.dat");
    all.push_back(data_directory_ + "/terms.dat");
  }
  for (const std::string &file : all) {
    struct stat status = {};
    if (stat(file.c_str(), &status) != 0)
      continue;
    const Identity identity = identity_of(status);
    state += file + ' ' + std::to_string(identity.inode) + ' ' +
             std::to_string(identity.size) + ' ' +
             std::to_string(identity.modified) + '\n';
  }
  return state;
}

bool Answers::find_id(std::string &id, Failure &failure) const {
  std::uint64_t hash = 0;
  std::string bytes;
  std::string reason;
  for (const std::string &file : files()) {
    if (read_file(file, bytes, reason) == ReadResult::ok) {
      hash = importing::hash_of(last_part(file), hash);
      hash = importing::hash_of(bytes, hash);
    } else if (presence_of(file) != Presence::missing) {
      failure = {file, "", reason};
      return false;
    }
  }
  id = importing::hexadecimal(hash);
  return true;
}

Locked Answers::open(std::chrono::seconds patience, Failure &failure) {
  Params params;
  convert::Settings conversion;
  if (!read_resources(directory_, "", params, failure) ||
      !read_conversion(directory_, conversion, failure))
    return Locked::failed;
  data_directory_ = path_from(directory_, params.data_directory);
  if (!is_directory(data_directory_)) {
    failure = {data_directory_, "", std::strerror(errno)};
    return Locked::failed;
  }
  Failure ignored;
  keeping::ClassFiles kept;
  if (kept.open(data_directory_, ignored) &&
      kept.presence("classes") == Presence::missing) {
    failure = {data_directory_, "",
               "no model is kept here; vek keeps one with `save on'"};
    return Locked::failed;
  }
  DirectoryLock lock;
  const Locked locked = take_lock(
      lock, data_directory_, DirectoryLock::Mode::shared, patience, failure);
  if (locked != Locked::yes)
    return locked;
  auto model = std::make_unique<KeptModel>();
  state_ = find_state();
  if (!model->open({directory_, "", "", std::nullopt}, failure) ||
      !find_id(id_, failure))
    return Locked::failed;
  model_ = std::move(model);
  conversion_ = std::move(conversion);
  return Locked::yes;
}

bool Answers::has_changed() {
  const Clock::time_point now = Clock::now();
  if (now - looked_at_ < std::chrono::seconds(1))
    return false;
  looked_at_ = now;
  return find_state() != state_;
}

Locked Answers::reload(Failure &failure) {
  const std::string old_id = id_;
  const bool had_failed = std::exchange(has_failed_, false);
  const Locked opened = open(std::chrono::seconds(0), failure);
  if (opened == Locked::in_use) {
    has_failed_ = had_failed;
  } else if (opened == Locked::failed) {
    has_failed_ = true;
    id_ = old_id;
    state_ = find_state();
  }
  return opened;
}

// The file keeps its size from text to text as far as it can.
bool Answers::put_text(const std::string &text, std::string &reason) {
  if (memory_ < 0)
    memory_ = memfd_create("vek-sort", MFD_CLOEXEC);
  std::size_t done = 0;
  ssize_t count = memory_ < 0 ? -1 : 1;
  while (count > 0 && done < text.size()) {
    count = retry([&] {
      return pwrite(memory_, text.data() + done, text.size() - done,
                    static_cast<off_t>(done));
    });
    done += count > 0 ? static_cast<std::size_t>(count) : 0;
  }
  if (count <= 0 ||
      (memory_size_ != text.size() &&
       ftruncate(memory_, static_cast<off_t>(text.size())) != 0)) {
    reason = std::string("memory for the text: ") + std::strerror(errno);
    memory_size_ = 0;
    return false;
  }
  memory_size_ = text.size();
  return true;
}

Answers::Result Answers::answer(const std::string &text, Verdict &verdict,
                                std::string &reason) {
  Failure failure;
  KeptModel::Cause cause = KeptModel::Cause::text;
  const auto ask = [&](const std::string &what) {
    if (!put_text(what, failure.reason))
      return false;
    // Whoever has another process open it has no name for it but this.
    const std::string path =
        "/proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(memory_);
    return model_->profile_file(path, profile_, failure, cause);
  };
  // After a failure the analyser is started again.
  if (!ask(text) && !ask(text)) {
    reason = failure.reason;
    return ask(harmless_text) ? Result::text : Result::system;
  }
  Judge &judge = model_->judge();
  judge.judge(profile_, answer_);
  verdict.is_sure = answer_.significant && !answer_.ranks.empty();
  verdict.has_probabilities = judge.has_probabilities();
  verdict.choices.clear();
  for (const Ranking &one : answer_.ranks) {
    verdict.choices.push_back(
        {model_->model().classes().full_name(one.class_data_P->id), one.score});
  }
  return Result::answered;
}

}  // namespace vek::sorting

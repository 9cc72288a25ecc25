#include "check/data_check.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include "base/helpers.h"
#include "data/directory_lock.h"
#include "data/files.h"
#include "store/datafiles.h"

namespace vek::checking {
namespace {

void stop(const std::string &file, const std::string &text,
          Findings &findings) {
  findings.add(file, 0, Severity::stop, text);
}

std::string words_of(const Failure &failure) {
  return (failure.place.empty() ? "" : failure.place + ": ") + failure.reason;
}

// One level of it can be made.
void check_missing(std::string directory, Findings &findings) {
  while (directory.size() > 1 && directory.back() == '/')
    directory.pop_back();
  if (presence_of(directory) == Presence::there) {
    stop(directory, "it is no directory", findings);
  } else if (access(keeping::parent_of(directory).c_str(), W_OK | X_OK) != 0) {
    stop(directory,
         std::string("it cannot be created: ") + std::strerror(errno),
         findings);
  }
}

// vek opens these for writing in every run.
void check_rights(const std::string &directory, Findings &findings) {
  if (access(directory.c_str(), W_OK | X_OK) != 0)
    stop(directory, std::strerror(errno), findings);
  for (const std::string &path :
       {atoms_path(directory), terms_path(directory),
        index_path(profile_store_path(directory).c_str())}) {
    if (access(path.c_str(), W_OK) != 0 && errno != ENOENT)
      stop(path, std::strerror(errno), findings);
  }
}

// Only a run that goes on reads class files, but for those that wait; and it
// learns anew how to judge.
Severity severity_of(const Params &settings, const Failure &failure) {
  const std::string name = failure.file.substr(failure.file.rfind('/') + 1);
  const bool is_read =
      !is_class_file(name) || (settings.incremental && name != judging_name);
  // Without an index vek begins a new one, and a profile that is wrong in it
  // goes unnoticed.
  const bool is_let_pass = name == "profile-store.idx" &&
                           (!failure.place.empty() ||
                            presence_of(failure.file) == Presence::missing);
  return is_read && !is_let_pass ? Severity::stop : Severity::warning;
}

}  // namespace

void check_data(const Params &settings, keeping::Verification &verification,
                Findings &findings) {
  const std::string &directory = settings.data_directory;
  if (!is_directory(directory)) {
    check_missing(directory, findings);
    return;
  }
  DirectoryLock lock;
  std::string warning;
  Failure failure;
  std::vector<std::string> names;
  if (!keeping::take_lock(lock, directory, DirectoryLock::Mode::shared, warning,
                          failure) ||
      !keeping::list_directory(directory, names, failure)) {
    stop(failure.file, words_of(failure), findings);
    return;
  }
  // A run that begins now is not to be sent away.
  lock.release();
  check_rights(directory, findings);
  Failure ignored;
  if (!keeping::is_data_directory(directory, ignored))
    return;
  if (!verification.run(failure))
    stop(failure.file, words_of(failure), findings);
}

void add_damage(const Params &settings, const keeping::Finding &damage,
                Findings &findings) {
  if (!damage.is_damage())
    return;
  const Failure &failure = damage.failure;
  findings.add(failure.file, 0, severity_of(settings, failure),
               words_of(failure) + "; " + damage.remedy);
}

void check_log(Findings &findings) {
  const std::string log = "vek.log";
  const bool is_there = presence_of(log) != Presence::missing;
  if (is_directory(log))
    stop(log, std::strerror(EISDIR), findings);
  else if (access(is_there ? log.c_str() : ".", W_OK) != 0)
    stop(log, std::strerror(errno), findings);
}

}  // namespace vek::checking

#include "store/atomicfiles.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <iterator>

#include "base/helpers.h"
#include "log/log.h"
#include "store/filesetformat.h"

namespace vek {
namespace {

[[noreturn]] void fail(const std::string &path, FileError code) {
  report_file_error(path, code);
  abort_run();
}

}  // namespace

void AtomicFiles::set_place(const std::string &directory,
                            const std::string &name) {
  directory_ = directory;
  path_ = Path(directory, name, ".dat");
  temporary_path_ = Path(directory, name, ".tmp");
}

void AtomicFiles::recover() {
  {
    const KeepErrno keep;
    if (!file_is_there(path_))
      return;
  }
  // The file has its name, so it was complete and synced.
  log_always(1, "completing the files of " + path_);
  write_all_in_place();
}

void AtomicFiles::begin() {
  names_.clear();
  file_.open(temporary_path_, OutputFile::Mode::truncate);
  if (!file_.is_open())
    fail(temporary_path_, FileError::open_for_writing);
  write(file_set_begin);
}

void AtomicFiles::add(const std::string &name, std::string_view content) {
  names_.push_back(name);
  write(file_set_line(name, content.size()));
  write(content);
}

void AtomicFiles::write(std::string_view text) {
  if (!file_.write(text.data(), std::ssize(text)))
    give_up_writing();
}

void AtomicFiles::give_up_writing() {
  report_file_error(temporary_path_, FileError::write);
  {
    const KeepErrno keep;
    unlink(temporary_path_.c_str());
  }
  abort_run();
}

// A file that cannot be opened for writing must be found while all files are
// the old ones; found later, it would stop each later run in recover().
void AtomicFiles::check_places() {
  for (const std::string &name : names_) {
    const Path path(directory_, name, "");
    const int fd = retry([&] {
      // Neither created nor cut, and without waiting should it be a pipe.
      return ::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NONBLOCK);
    });
    if (fd >= 0) {
      ::close(fd);
      continue;
    }
    // It will be created, or is a pipe without a reader (ENXIO), for which the
    // write will wait.
    if (errno == ENOENT || errno == ENXIO)
      continue;
    {
      const KeepErrno keep;
      unlink(temporary_path_.c_str());
    }
    fail(path, FileError::open_for_writing);
  }
}

void AtomicFiles::replace() {
  check_places();
  // The order is what makes it safe: content and last line on the disk, then
  // the name, then the directory that holds the name, and only then the files.
  write(file_set_end);
  if (!file_.sync_to_disk())
    give_up_writing();
  file_.close();
  if (!file_.good() ||
      std::rename(temporary_path_.c_str(), path_.c_str()) != 0) {
    give_up_writing();
  }
  // A directory that may not be read cannot be synced by name.
  if (!sync_path(directory_) && errno != EACCES && errno != EINVAL)
    fail(path_, FileError::write);
  write_all_in_place();
}

void AtomicFiles::write_all_in_place() {
  std::string text;
  // From the disk and not from memory, so that a run and recover() take the
  // same way.
  must_read(path_, text);
  std::vector<FileSetMember> members;
  if (!parse_file_set(text, members)) {
    report_file_error(path_, FileError::format, "it is damaged");
    abort_run(no_cause);
  }
  for (const FileSetMember &member : members)
    write_in_place(Path(directory_, member.name, ""), member.content);
  // Removed only when all files are on the disk, or a crash could lose some.
  sync_files();
  if (unlink(path_.c_str()) != 0)
    fail(path_, FileError::remove);
}

void AtomicFiles::write_in_place(const std::string &path,
                                 std::string_view content) {
  OutputFile file;
  file.open(path, OutputFile::Mode::truncate);
  if (!file.is_open())
    fail(path, FileError::open_for_writing);
  file.write(content.data(), std::ssize(content));
  // The last bytes leave the buffer only here.
  file.close();
  if (file)
    return;
  report_file_error(path, FileError::write);
  logf_if_verbose(0, "deleting file `%s'", path.c_str());
  if (unlink(path.c_str()) != 0)
    report_file_error(path, FileError::remove);
  abort_run();
}

// One call for all of them: an fsync() for each would take seconds where there
// are many classes.
void AtomicFiles::sync_files() const {
  const int fd =
      retry([this] { return ::open(path_.c_str(), O_RDONLY | O_CLOEXEC); });
  if (fd < 0 || retry([=] { return syncfs(fd); }) != 0)
    fail(directory_, FileError::write);
  ::close(fd);
}

}  // namespace vek

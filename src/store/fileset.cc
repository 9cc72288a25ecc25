#include "store/fileset.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <fstream>
#include <iterator>

#include "run/helpers.h"
#include "run/log.h"
#include "run/textio.h"

namespace vek {
namespace {

constexpr std::string_view first_line = "vek files 1";
constexpr std::string_view last_line = "end";

[[noreturn]] void fail(const std::string &path, FileError code) {
  report_file_error(path, code);
  abort_run();
}

// Longer than any line in front of a file.
constexpr std::size_t line_room = 64;

bool read_line(std::istream &is, std::string &line) {
  std::array<char, line_room> buffer = {};
  if (!is.getline(buffer.data(), buffer.size()))
    return false;
  line = buffer.data();
  return true;
}

// "classes", or "class", a number, and ".cpf" or ".cwt". Nothing else is ever
// written from the file, whoever has laid it there.
bool is_class_file(std::string_view name) {
  if (name == "classes")
    return true;
  if (!name.starts_with("class") ||
      (!name.ends_with(".cpf") && !name.ends_with(".cwt"))) {
    return false;
  }
  name = name.substr(5, name.size() - 9);
  return !name.empty() &&
         name.find_first_not_of("0123456789") == std::string_view::npos;
}

// The line in front of each file: its name, which has no blank, and length.
bool parse_line(const std::string &line, std::string &name,
                std::uint64_t &size) {
  std::string rest;
  if (!split_word(line, ' ', name, rest) || !is_class_file(name))
    return false;
  FieldReader fields(rest);
  return fields.read(size) && fields.at_end();
}

// Goes from file to file to the end of a stream of that length. Nothing may be
// written before all of it is known to be there.
bool is_whole(std::istream &is, std::uint64_t length) {
  std::string line;
  std::string name;
  std::uint64_t size = 0;
  if (!read_line(is, line) || line != first_line)
    return false;
  while (read_line(is, line) && line != last_line) {
    if (!parse_line(line, name, size) || size > length)
      return false;
    is.seekg(static_cast<std::streamoff>(size), std::ios::cur);
    if (!is || static_cast<std::uint64_t>(is.tellg()) > length)
      return false;
  }
  return is && is.peek() == std::istream::traits_type::eof();
}

}  // namespace

void FileSet::set_place(const std::string &directory, const std::string &name) {
  directory_ = directory;
  path_ = Path(directory, name, ".dat");
  temporary_path_ = Path(directory, name, ".tmp");
}

void FileSet::recover() {
  {
    const KeepErrno keep;
    if (!file_is_there(path_))
      return;
  }
  log_always(1, "completing the files of " + path_);
  write_all_in_place();
}

void FileSet::begin() {
  names_.clear();
  file_.open(temporary_path_, OutputFile::Mode::truncate);
  if (!file_.is_open())
    fail(temporary_path_, FileError::open_for_writing);
  write(first_line);
  write("\n");
}

void FileSet::add(const std::string &name, std::string_view content) {
  names_.push_back(name);
  std::string line = name + ' ';
  append_number(line, content.size());
  line += '\n';
  write(line);
  write(content);
}

void FileSet::write(std::string_view text) {
  if (!file_.write(text.data(), std::ssize(text)))
    give_up_writing();
}

void FileSet::give_up_writing() {
  report_file_error(temporary_path_, FileError::write);
  {
    const KeepErrno keep;
    unlink(temporary_path_.c_str());
  }
  abort_run();
}

// A file that cannot be opened must be known while all are the old ones, and
// must not stop each later run.
void FileSet::check_places() {
  for (const std::string &name : names_) {
    const Path path(directory_, name, "");
    const int fd = retry([&] {
      return ::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NONBLOCK);
    });
    if (fd >= 0) {
      ::close(fd);
      continue;
    }
    if (errno == ENOENT || errno == ENXIO)
      continue;
    {
      const KeepErrno keep;
      unlink(temporary_path_.c_str());
    }
    fail(path, FileError::open_for_writing);
  }
}

void FileSet::replace() {
  check_places();
  write(last_line);
  write("\n");
  if (!file_.sync_to_disk())
    give_up_writing();
  file_.close();
  if (!file_.good() ||
      std::rename(temporary_path_.c_str(), path_.c_str()) != 0) {
    give_up_writing();
  }
  // Who may not look into the directory can have its names synced by nobody.
  if (!sync_path(directory_) && errno != EACCES && errno != EINVAL)
    fail(path_, FileError::write);
  write_all_in_place();
}

void FileSet::write_all_in_place() {
  std::ifstream stream(path_, std::ios::in | std::ios::binary);
  if (!stream)
    fail(path_, FileError::open_for_reading);
  const std::int64_t length = file_size(path_);
  if (length < 0 || !is_whole(stream, static_cast<std::uint64_t>(length)))
    fail(path_, stream.bad() ? FileError::read : FileError::format);
  stream.clear();
  stream.seekg(0);
  std::string line;
  std::string name;
  std::uint64_t size = 0;
  read_line(stream, line);
  while (read_line(stream, line) && line != last_line) {
    if (!parse_line(line, name, size))
      fail(path_, FileError::format);
    write_in_place(Path(directory_, name, ""), size, stream);
  }
  if (!stream)
    fail(path_, stream.bad() ? FileError::read : FileError::format);
  sync_files();
  if (unlink(path_.c_str()) != 0)
    fail(path_, FileError::remove);
}

void FileSet::write_in_place(const std::string &path, std::uint64_t size,
                             std::istream &is) {
  OutputFile file;
  file.open(path, OutputFile::Mode::truncate);
  if (!file.is_open())
    fail(path, FileError::open_for_writing);
  std::array<char, 65536> piece = {};
  while (size > 0 && file) {
    const auto part = std::min<std::uint64_t>(size, piece.size());
    if (!is.read(piece.data(), static_cast<std::streamsize>(part)))
      fail(path_, is.bad() ? FileError::read : FileError::format);
    file.write(piece.data(), static_cast<std::streamsize>(part));
    size -= part;
  }
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
void FileSet::sync_files() const {
  const int fd =
      retry([this] { return ::open(path_.c_str(), O_RDONLY | O_CLOEXEC); });
  if (fd < 0 || retry([=] { return syncfs(fd); }) != 0)
    fail(directory_, FileError::write);
  ::close(fd);
}

}  // namespace vek

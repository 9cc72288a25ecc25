#include "sort/known_texts.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <set>
#include <string_view>

#include "base/helpers.h"
#include "base/input_file.h"
#include "base/output_file.h"
#include "base/textio.h"
#include "data/names.h"
#include "import/directory.h"
#include "import/naming.h"
#include "sort/folders.h"

namespace vek::sorting {
namespace {

using importing::hash_of;

// A smaller file is not worth being cleaned.
constexpr std::size_t small_size = std::size_t{4} << 20;

std::string line_of(const std::string &path, const Identity &identity) {
  std::string line;
  append_number(line, std::int64_t{identity.size});
  line += '\t';
  append_number(line, identity.modified);
  return line + '\t' + keeping::escaped(path);
}

// Calls `take` for each whole line of a text.
template <class Take>
void for_each_line(std::string_view text, Take take) {
  for (std::size_t end = text.find('\n'); end != std::string_view::npos;
       end = text.find('\n')) {
    take(text.substr(0, end));
    text.remove_prefix(end + 1);
  }
}

// What stands behind `begin`, up to the last line end.
bool read_tail(const std::string &path, off_t begin, off_t &end,
               std::string &tail) {
  std::string reason;
  const int descriptor = open_input(path, reason);
  if (descriptor < 0)
    return false;
  tail.resize(static_cast<std::size_t>(std::max(off_t{0}, end - begin)));
  std::size_t size = 0;
  ssize_t count = 1;
  while (size < tail.size() && count > 0) {
    count = retry([&] {
      return pread(descriptor, tail.data() + size, tail.size() - size,
                   begin + static_cast<off_t>(size));
    });
    size += count > 0 ? static_cast<std::size_t>(count) : 0;
  }
  const KeepErrno keep;
  close(descriptor);
  tail.resize(size);
  tail.resize(tail.rfind('\n') + 1);
  end = begin + static_cast<off_t>(tail.size());
  return count >= 0;
}

}  // namespace

bool append_lines(const std::string &path, const std::string &header,
                  off_t begin, const std::vector<std::string> &lines,
                  Failure &failure) {
  const auto fail = [&] {
    failure = {path, "", std::strerror(errno)};
    return false;
  };
  const std::int64_t size = file_size(path);
  std::set<std::string, std::less<>> there;
  off_t end = size;
  if (size > 0) {
    std::string tail;
    if (!read_tail(path, std::min<off_t>(begin, size), end, tail))
      return fail();
    for_each_line(tail, [&](std::string_view line) { there.emplace(line); });
    if (end < size && truncate(path.c_str(), end) != 0)
      return fail();
  }
  OutputFile file;
  file.open(path, OutputFile::Mode::append);
  if (size <= 0 && !header.empty())
    file << header << '\n';
  for (const std::string &line : lines) {
    if (!there.contains(line))
      file << line << '\n';
  }
  // A device, as /dev/null, has no disk.
  if (!file.sync_to_disk() && !(file.good() && errno == EINVAL))
    return fail();
  file.close();
  return (file && (size >= 0 || sync_path(directory_of(path)))) || fail();
}

KnownTexts::KnownTexts(const std::string &target, const std::string &name)
    : target_(target), path_(target + '/' + state_folder + '/' + name) {}

// A file that is missing is empty.
bool KnownTexts::read(std::string &text, Failure &failure) const {
  std::string reason;
  text.clear();
  if (read_file(path_, text, reason) == ReadResult::ok)
    return true;
  failure = {path_, "", reason};
  return presence_of(path_) == Presence::missing;
}

bool KnownTexts::for_each(const Visit &visit, Failure &failure) const {
  std::string text;
  if (!read(text, failure))
    return false;
  for_each_line(text, [&](std::string_view line) {
    const auto fields = importing::fields_of(line);
    std::string path;
    Identity identity;
    const auto read_number = [](std::string_view field, auto &number) {
      return std::from_chars(field.data(), field.data() + field.size(), number)
                 .ec == std::errc();
    };
    if (fields.size() == 3 && read_number(fields[0], identity.size) &&
        read_number(fields[1], identity.modified) &&
        keeping::unescape(fields[2], path))
      visit(path, identity);
  });
  return true;
}

bool KnownTexts::open(Failure &failure) {
  std::string text;
  lines_.clear();
  if (!read(text, failure))
    return false;
  size_ = text.rfind('\n') + 1;  // a torn line does not count
  for_each_line(text,
                [&](std::string_view line) { lines_.insert(hash_of(line)); });
  return size_ <= small_size || clean(failure);
}

bool KnownTexts::has(const std::string &path, const Identity &identity) const {
  return lines_.contains(hash_of(line_of(path, identity)));
}

void KnownTexts::add(const std::string &path, const Identity &identity) {
  std::string line = line_of(path, identity);
  if (lines_.insert(hash_of(line)).second)
    new_lines_.push_back(std::move(line));
}

bool KnownTexts::save(Failure &failure) {
  std::vector<std::string> lines;
  lines.swap(new_lines_);
  if (lines.empty())
    return true;
  // Twice is as good as once, so only a torn line matters.
  const auto begin = static_cast<off_t>(size_);
  if (!append_lines(path_, "", begin, lines, failure))
    return false;
  size_ = static_cast<std::size_t>(std::max<std::int64_t>(0, file_size(path_)));
  return size_ <= std::max(small_size, 2 * size_cleaned_) || clean(failure);
}

bool KnownTexts::clean(Failure &failure) {
  const std::string next = path_ + ".new";
  OutputFile file;
  file.open(next, OutputFile::Mode::truncate);
  lines_.clear();
  const bool is_read = for_each(
      [&](const std::string &path, const Identity &identity) {
        Identity now;
        const std::string line = line_of(path, identity);
        if (identify(path.starts_with('/') ? path : target_ + '/' + path,
                     now) &&
            line == line_of(path, now) && lines_.insert(hash_of(line)).second)
          file << line << '\n';
      },
      failure);
  if (!is_read)
    return false;
  const bool is_written = file.sync_to_disk();
  file.close();
  if (!is_written || rename(next.c_str(), path_.c_str()) != 0 ||
      !sync_path(directory_of(path_))) {
    failure = {path_, "", std::strerror(errno)};
    return false;
  }
  size_ = size_cleaned_ =
      static_cast<std::size_t>(std::max<std::int64_t>(0, file_size(path_)));
  return true;
}

}  // namespace vek::sorting

#include "sort/target.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <optional>
#include <utility>

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

using importing::fields_of;
using importing::hash_of;
using importing::hexadecimal;
using keeping::escaped;
using keeping::unescape;

constexpr char journal_name[] = "journal";
constexpr char journal_mark[] = "vek-sort 1";
constexpr char log_header[] =
    "time\tname\tresult\tplaces\tclasses\tscores\tprobability\tmodel\treason";
// Of hints; without them names are found again, more slowly.
constexpr std::size_t most_numbers = 100000;

template <class... Numbers>
void append_fields(std::string &line, Numbers... numbers) {
  const auto append = [&line](auto number) {
    append_number(line, number);
    line += '\t';
  };
  (append(numbers), ...);
}

template <class Number>
bool read_number(std::string_view text, Number &number) {
  const char *end_P = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end_P, number);
  return result.ec == std::errc() && result.ptr == end_P;
}

template <class... Numbers>
bool read_fields(const std::vector<std::string_view> &fields, std::size_t first,
                 Numbers &...numbers) {
  std::size_t i = first;
  return fields.size() >= first + sizeof...(numbers) &&
         (read_number(fields[i++], numbers) && ...);
}

std::optional<Delivery> read_delivery(std::string_view line) {
  const auto fields = fields_of(line);
  Delivery delivery;
  Identity &identity = delivery.identity;
  if (fields.size() < 6 ||
      !read_fields(fields, 0, identity.device, identity.inode, identity.size,
                   identity.modified) ||
      !unescape(fields[4], delivery.log_line) ||
      !unescape(fields[5], delivery.source))
    return std::nullopt;
  for (std::size_t i = 6; i < fields.size(); ++i) {
    if (!unescape(fields[i], delivery.places.emplace_back()))
      return std::nullopt;
  }
  return delivery;
}

}  // namespace

Target::Target(std::string path, std::string log, Mode mode)
    : path_(std::move(path)),
      log_(std::move(log)),
      mode_(mode),
      known_(path_, known_name) {}

std::string Target::path_of(std::string_view file) const {
  return path_ + '/' + std::string(file);
}

std::string Target::state_path() const {
  return path_of(state_folder);
}

std::string Target::journal_path() const {
  return state_path() + '/' + journal_name;
}

bool Target::make(Failure &failure) {
  for (const std::string &directory : {path_, state_path()}) {
    const bool is_made = mkdir(directory.c_str(), 0777) == 0;
    if ((!is_made && errno != EEXIST) ||
        (is_made && !sync_path(directory_of(directory)))) {
      failure = {directory, "", std::strerror(errno)};
      return false;
    }
  }
  return true;
}

Target::LogEnd Target::find_log_end() const {
  struct stat status = {};
  if (stat(log_.c_str(), &status) != 0)
    return {};
  return {status.st_dev, status.st_ino, status.st_size};
}

bool Target::write_journal(const std::vector<Delivery> &batch,
                           const LogEnd &end, Failure &failure) const {
  std::string text = journal_mark;
  text += '\t';
  append_fields(text, static_cast<int>(mode_), end.device, end.inode, end.size);
  text.back() = '\n';
  for (const Delivery &delivery : batch) {
    const Identity &identity = delivery.identity;
    append_fields(text, identity.device, identity.inode, identity.size,
                  identity.modified);
    text += escaped(delivery.log_line) + '\t' + escaped(delivery.source);
    for (const std::string &place : delivery.places)
      text += '\t' + escaped(place);
    text += '\n';
  }
  const std::string path = journal_path();
  const bool is_new = presence_of(path) != Presence::there;
  OutputFile file;
  file.open(path, OutputFile::Mode::truncate);
  file << text << hexadecimal(hash_of(text)) << '\n';
  if (!file.sync_to_disk() || (is_new && !sync_path(state_path()))) {
    failure = {path, "", std::strerror(errno)};
    return false;
  }
  return true;
}

// False if there is nothing to be done: a journal that is not whole was killed
// before anything was.
bool Target::read_journal(Mode &mode, std::vector<Delivery> &batch,
                          LogEnd &end) const {
  std::string text;
  constexpr std::size_t sum_size = 17;
  if (read_file(journal_path(), text) != ReadResult::ok ||
      text.size() <= sum_size)
    return false;
  const std::string sum = text.substr(text.size() - sum_size);
  text.resize(text.size() - sum_size);
  if (sum != hexadecimal(hash_of(text)) + '\n')
    return false;
  std::string_view rest = text;
  int number = 0;
  for (bool is_first = true; !rest.empty(); is_first = false) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(rest.size(), line.size() + 1));
    if (is_first) {
      const auto fields = fields_of(line);
      if (fields[0] != journal_mark ||
          !read_fields(fields, 1, number, end.device, end.inode, end.size))
        return false;
      mode = static_cast<Mode>(number);
    } else if (std::optional<Delivery> delivery = read_delivery(line)) {
      batch.push_back(std::move(*delivery));
    } else {
      return false;
    }
  }
  return true;
}

std::set<std::string> Target::places_in_hand() const {
  Mode mode = mode_;
  std::vector<Delivery> batch;
  LogEnd end;
  std::set<std::string> places;
  if (read_journal(mode, batch, end)) {
    for (const Delivery &delivery : batch)
      places.insert(delivery.places.begin(), delivery.places.end());
  }
  return places;
}

bool Target::open(Failure &failure) {
  Mode mode = mode_;
  std::vector<Delivery> batch;
  LogEnd end;
  if (!known_.open(failure))
    return false;
  return !read_journal(mode, batch, end) ||
         complete(mode, batch, end, true, failure);
}

bool Target::deliver(std::vector<Delivery> &batch, Failure &failure) {
  const LogEnd end = find_log_end();
  given_.clear();
  return batch.empty() || (write_journal(batch, end, failure) &&
                           complete(mode_, batch, end, false, failure));
}

bool Target::complete(Mode mode, std::vector<Delivery> &batch,
                      const LogEnd &end, bool is_again, Failure &failure) {
  Unsynced files;
  Unsynced directories;
  std::vector<Placing> placings;
  placings.reserve(batch.size());
  for (const Delivery &delivery : batch) {
    placings.emplace_back(mode, delivery.source, delivery.identity, path_,
                          delivery.places, placings.size());
    placings.back().prepare(files, directories);
  }
  if (!files.sync(failure))
    return false;
  for (Placing &placing : placings)
    placing.place(directories);
  if (!directories.sync(failure))
    return false;
  for (Placing &placing : placings)
    placing.remove_source(directories);
  for (std::size_t i = 0; i < batch.size(); ++i) {
    placings[i].undo();
    batch[i].state = placings[i].state();
    batch[i].failure = placings[i].failure();
    // The last thing that happens to a source is that it goes; and then there
    // may be another one of its name, even with its inode.
    const bool is_gone = batch[i].state == Placing::State::gone;
    const bool is_other = is_gone || batch[i].state == Placing::State::changed;
    if (is_again && ((is_gone && mode == Mode::move) ||
                     (is_other && placings[i].has_place())))
      batch[i].state = Placing::State::done;
  }
  if (!directories.sync(failure) || !write_log(batch, end, failure) ||
      !add_known(mode, batch, failure))
    return false;
  // Should that not reach the disk, nothing happens that is not done already.
  const std::string journal = journal_path();
  if (truncate(journal.c_str(), 0) == 0)
    return true;
  failure = {journal, "", std::strerror(errno)};
  return false;
}

bool Target::write_log(const std::vector<Delivery> &batch, const LogEnd &end,
                       Failure &failure) const {
  const LogEnd now = find_log_end();
  const bool is_same = now.device == end.device && now.inode == end.inode;
  std::vector<std::string> lines;
  for (const Delivery &delivery : batch) {
    if (delivery.state == Placing::State::done)
      lines.push_back(delivery.log_line);
  }
  return lines.empty() ||
         append_lines(log_, log_header, is_same ? end.size : 0, lines, failure);
}

bool Target::add_known(Mode mode, const std::vector<Delivery> &batch,
                       Failure &failure) {
  for (const Delivery &delivery : batch) {
    if (delivery.state != Placing::State::done)
      continue;
    if (mode != Mode::move || delivery.places.empty())
      known_.add(delivery.source, delivery.identity);
    for (const std::string &place : delivery.places) {
      Identity identity;
      if (identify(path_of(place), identity))
        known_.add(place, identity);
    }
  }
  return known_.save(failure);
}

std::vector<std::string> Target::find_places(
    const std::vector<std::string> &folders, std::string_view name) {
  std::vector<std::string> places;
  // What cannot be looked at is left to those who try to use it.
  const auto is_free = [this](const std::string &place) {
    struct stat status = {};
    return !given_.contains(place) &&
           lstat(path_of(place).c_str(), &status) != 0;
  };
  const auto try_number = [&](unsigned number) {
    places.clear();
    for (const std::string &folder : folders)
      places.push_back(folder + '/' + choice_of_name(name, number));
    return std::all_of(places.begin(), places.end(), is_free);
  };
  if (!try_number(1)) {
    if (numbers_.size() > most_numbers)
      numbers_.clear();
    unsigned &number = numbers_[folders.front() + '/' + std::string(name)];
    number = std::max(number, 1U);
    while (!try_number(++number)) {
    }
  }
  given_.insert(places.begin(), places.end());
  return places;
}

}  // namespace vek::sorting

#include "import/staging.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>

#include "data/names.h"
#include "import/language_guess.h"
#include "import/resource.h"

namespace vek::importing {
namespace {

using keeping::escaped;

const char *list_of(Side side) {
  return side == Side::test ? "test" : "train";
}

}  // namespace

bool Staging::begin(const char *file, OutputFile &output,
                    Failure &failure) const {
  const std::string path = directory_.staged_path_of(file);
  output.open(path, OutputFile::Mode::truncate);
  if (!output)
    failure = {path, "", std::strerror(errno)};
  return output.good();
}

bool Staging::end(const char *file, OutputFile &output, Failure &failure) {
  output.close();
  if (!output)
    failure = {directory_.staged_path_of(file), "", std::strerror(errno)};
  else
    files_.emplace_back(file);
  return output.good();
}

// What a file had before, ended by a line end.
bool Staging::append_old(const char *file, OutputFile &output,
                         Failure &failure) const {
  std::ifstream old(directory_.path_of(file), std::ios::binary);
  std::string piece(std::size_t{1} << 20, '\0');
  char last = '\n';
  while (old) {
    old.read(piece.data(), static_cast<std::streamsize>(piece.size()));
    output.write(piece.data(), old.gcount());
    if (old.gcount() > 0)
      last = piece[static_cast<std::size_t>(old.gcount()) - 1];
  }
  if (last != '\n')
    output << '\n';
  if (old.bad())
    failure = {directory_.path_of(file), "", "it cannot be read"};
  return !old.bad();
}

// The same with the changed classes. A line begins with the name of a document,
// and has its classes behind so many separators: to the next tab, or the end.
bool Staging::append_changed(const char *file, char separator,
                             std::size_t field, OutputFile &output,
                             Failure &failure) const {
  if (changes_.empty())
    return append_old(file, output, failure);
  const auto take = [&](const std::string &line, std::size_t) {
    std::string_view name(line);
    name = name.substr(0, name.find(separator));
    if (name.size() > 4 && name.ends_with(".txt"))
      name.remove_suffix(4);
    const auto change = changes_.find(name);
    std::size_t begin = 0;
    for (std::size_t i = 0; i < field && begin != std::string::npos; ++i)
      begin = line.find(separator, begin + (i > 0 ? 1 : 0));
    if (change == changes_.end() || begin == std::string::npos) {
      output << line << '\n';
      return true;
    }
    const std::size_t end = line.find('\t', begin + 1);
    output << line.substr(0, begin + 1) << change->second
           << (end == std::string::npos ? "" : line.substr(end)) << '\n';
    return true;
  };
  return for_each_line(directory_.path_of(file), take, failure);
}

// The lists and the table of names have the old documents and the new ones.
bool Staging::documents(
    std::size_t nr_old,
    const std::function<void(const std::string &)> &withdraw,
    Failure &failure) {
  OutputFile names;
  OutputFile lists[2];
  if (!begin(names_file, names, failure) ||
      !begin("train", lists[0], failure) || !begin("test", lists[1], failure))
    return false;
  if (!directory_.has(names_file))
    names << names_header << '\n';
  if (!append_changed(names_file, '\t', 2, names, failure) ||
      !append_changed("train", ' ', 1, lists[0], failure) ||
      !append_old("test", lists[1], failure))
    return false;
  std::size_t place = nr_old;
  const auto take = [&](const std::string &line, std::size_t) {
    const Side side = examples_.documents[place++].side;
    const std::size_t tab = line.find('\t');
    const std::size_t end = line.find('\t', tab + 1);
    const std::string name = line.substr(0, tab);
    const std::string classes = line.substr(tab + 1, end - tab - 1);
    if (side == Side::none) {
      withdraw(line);
      return true;
    }
    names << name << '\t' << list_of(side) << line.substr(tab) << '\n';
    lists[side == Side::test] << name << ' ' << classes << '\n';
    return true;
  };
  if (!for_each_line(directory_.staged_path_of(new_names), take, failure))
    return false;
  has_new_names_ = true;
  return end(names_file, names, failure) && end("train", lists[0], failure) &&
         end("test", lists[1], failure);
}

bool Staging::classes(Failure &failure) {
  OutputFile output;
  if (!begin(classes_file, output, failure))
    return false;
  output << classes_header << '\n';
  for (const ClassNames::Entry &entry : examples_.classes.entries())
    output << entry.name << '\t' << escaped(entry.original) << '\n';
  return end(classes_file, output, failure);
}

bool Staging::settings(Failure &failure) {
  const nlohmann::json json = {{"version", settings_version},
                               {"test", examples_.test},
                               {"share", examples_.share},
                               {"sources", examples_.sources}};
  OutputFile output;
  if (!begin(settings_file, output, failure))
    return false;
  output << json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace)
         << '\n';
  return end(settings_file, output, failure);
}

bool Staging::numbers(Failure &failure) {
  OutputFile output;
  if (!begin(numbers_file, output, failure))
    return false;
  output << numbers_mark;
  std::string bytes;
  for (const Document &document : examples_.documents) {
    bytes.clear();
    append_numbers(bytes, document);
    output << bytes;
  }
  return end(numbers_file, output, failure);
}

bool Staging::near(const std::vector<NearPair> &pairs, Failure &failure) {
  std::map<std::uint32_t, std::string> names;
  for (const NearPair &pair : pairs) {
    names[pair.test];
    names[pair.train];
  }
  auto next = names.begin();
  const auto take = [&](const std::string &line, std::size_t number) {
    if (next != names.end() && number == next->first + std::size_t{2}) {
      next->second = line.substr(0, line.find('\t'));
      ++next;
    }
    return true;
  };
  OutputFile output;
  if (!for_each_line(directory_.staged_path_of(names_file), take, failure) ||
      !begin(near_file, output, failure))
    return false;
  output << near_header << '\n';
  for (const NearPair &pair : pairs) {
    char likeness[8];
    std::snprintf(likeness, sizeof likeness, "%.2f",
                  static_cast<double>(pair.nr_equal) / nr_minima);
    output << names[pair.test] << '\t' << names[pair.train] << '\t' << likeness
           << '\n';
  }
  return end(near_file, output, failure);
}

bool Staging::resource(Failure &failure) {
  const std::string names = has_new_names_
                                ? directory_.staged_path_of(names_file)
                                : directory_.path_of(names_file);
  LanguageGuess guess;
  // Enough to tell a language, from all over the collection.
  constexpr std::size_t nr_read = 2000;
  constexpr std::size_t size_read = 2000;
  const std::size_t step = examples_.documents.size() / nr_read + 1;
  const auto take = [&](const std::string &line, std::size_t number) {
    if (number < 2 || (number - 2) % step != 0)
      return true;
    std::ifstream file(directory_.path_of(
        "files/" + line.substr(0, line.find('\t')) + ".txt"));
    std::string text(size_read, '\0');
    file.read(text.data(), size_read);
    text.resize(static_cast<std::size_t>(file.gcount()));
    guess.add(text);
    return true;
  };
  OutputFile output;
  if (!for_each_line(names, take, failure) ||
      !begin(resource_file, output, failure))
    return false;
  // Two classes to a document are an exception, or the rule.
  const bool is_multiple =
      examples_.nr_with_several * 5 > examples_.documents.size();
  output << resource_text(guess.code(),
                          is_multiple ? examples_.most_classes : 1);
  return end(resource_file, output, failure);
}

bool Staging::rejects(Failure &failure) {
  OutputFile output;
  if (!begin(rejects_file, output, failure))
    return false;
  if (!directory_.has(rejects_file))
    output << rejects_header << '\n';
  const auto take = [&output](const std::string &line, std::size_t) {
    output << line << '\n';
    return true;
  };
  return append_old(rejects_file, output, failure) &&
         for_each_line(directory_.staged_path_of(new_rejects), take, failure) &&
         end(rejects_file, output, failure);
}

}  // namespace vek::importing

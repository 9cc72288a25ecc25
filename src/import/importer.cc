#include "import/importer.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <set>
#include <utility>

#include "base/bytes.h"
#include "base/command_line.h"
#include "base/helpers.h"
#include "convert/encoding.h"
#include "convert/source.h"
#include "data/names.h"
#include "import/dealing.h"
#include "import/language_guess.h"
#include "import/likeness.h"
#include "import/resource.h"

namespace vek::importing {
namespace {

using keeping::escaped;
using keeping::unescape;

constexpr char names_header[] = "name\tlist\tclasses\tsource\tplace\tkey";
constexpr char classes_header[] = "class\toriginal";
constexpr char rejects_header[] = "source\tplace\treason\tbegin";
constexpr char near_header[] = "test\ttrain\tlikeness";
constexpr char default_test[] = "0.3";
constexpr int settings_version = 1;

constexpr std::string_view numbers_mark = "vekimp1\n";
constexpr std::size_t number_size = 4 * 8 + 2 * nr_minima;  // bytes

// A line of vek's lists, without its end.
constexpr std::size_t longest_list_line = 2047;
// More than document_name() makes.
constexpr std::size_t longest_name = 128;
constexpr std::size_t shown_begin = 100;  // bytes of what is rejected
constexpr std::size_t most_shown = 10;    // rejects on standard error
constexpr std::size_t most_reasons = 20;  // that are counted apart

const char *list_of(Side side) {
  return side == Side::test ? "test" : "train";
}

// False if `test` is neither a share below 1 nor a number of documents.
bool is_test_value(const std::string &test) {
  double value = 0;
  const char *end_P = test.data() + test.size();
  const auto result = std::from_chars(test.data(), end_P, value);
  return result.ec == std::errc() && result.ptr == end_P && value >= 0 &&
         (value < 1 ||
          test.find_first_not_of("0123456789") == std::string::npos);
}

void append_uint64(std::string &out, std::uint64_t number) {
  append_uint32(out, static_cast<std::uint32_t>(number));
  append_uint32(out, static_cast<std::uint32_t>(number >> 32));
}

std::uint64_t get_uint64(const unsigned char *bytes_P) {
  return get_uint32(bytes_P) | std::uint64_t{get_uint32(bytes_P + 4)} << 32;
}

void append_numbers(std::string &out, const Document &document) {
  for (const std::uint64_t number :
       {document.key, document.content, document.text, document.group})
    append_uint64(out, number);
  for (const std::uint16_t minimum : document.minima) {
    out += static_cast<char>(minimum & 0xFF);
    out += static_cast<char>(minimum >> 8);
  }
}

void get_numbers(const unsigned char *bytes_P, Document &document) {
  document.key = get_uint64(bytes_P);
  document.content = get_uint64(bytes_P + 8);
  document.text = get_uint64(bytes_P + 16);
  document.group = get_uint64(bytes_P + 24);
  bytes_P += 32;
  for (std::uint16_t &minimum : document.minima) {
    minimum = static_cast<std::uint16_t>(bytes_P[0] | bytes_P[1] << 8);
    bytes_P += 2;
  }
}

// A text of which an error message or a table may hold the begin.
std::string shown(std::string_view begin) {
  std::string text(begin.substr(0, shown_begin));
  // A character may be cut in two as well.
  if (!convert::is_utf8(text)) {
    std::replace_if(
        text.begin(), text.end(),
        [](char character) { return (character & 0x80) != 0; }, '?');
  }
  return escaped(text);
}

// Of a list or table that may be missing. `take` returns false at a bad line.
template <class Take>
bool for_each_line(const std::string &path, Take take, Failure &failure) {
  std::ifstream file(path, std::ios::binary);
  std::string line;
  std::size_t number = 0;
  while (std::getline(file, line)) {
    ++number;
    if (!take(line, number)) {
      failure = {path, "line " + std::to_string(number), "it is damaged"};
      return false;
    }
  }
  if (file.bad()) {
    failure = {path, "", "it cannot be read"};
    return false;
  }
  return true;
}

}  // namespace

Importer::Importer(std::string program, bool is_quiet)
    : program_(program),
      progress_(std::move(program), is_quiet
                                        ? ProgressLine::Shown::never
                                        : ProgressLine::Shown::on_terminal),
      is_quiet_(is_quiet) {}

bool Importer::open(const std::string &examples, Failure &failure) {
  if (!directory_.open(examples, failure) || !load_settings(failure) ||
      !load_classes(failure) || !load_documents(failure) ||
      !load_list("train", failure) || !load_list("test", failure) ||
      !load_rejects(failure))
    return false;
  nr_old_classes_ = classes_.entries().size();
  for (auto [file, output_P] : {std::pair{"new-names", &new_names_},
                                std::pair{"new-rejects", &new_rejects_}}) {
    if (!begin_stage(file, *output_P, failure))
      return false;
  }
  return true;
}

bool Importer::load_settings(Failure &failure) {
  std::string text;
  if (read_file(directory_.path_of(settings_file), text) != ReadResult::ok)
    return true;
  try {
    const nlohmann::json json = nlohmann::json::parse(text);
    if (json.at("version") == settings_version) {
      json.at("test").get_to(test_);
      json.at("share").get_to(share_);
      json.at("sources").get_to(sources_);
      return true;
    }
  } catch (const nlohmann::json::exception &) {
    // Reported below.
  }
  failure = {directory_.path_of(settings_file), "",
             "no settings of this version"};
  return false;
}

bool Importer::load_classes(Failure &failure) {
  return for_each_line(
      directory_.path_of(classes_file),
      [this](const std::string &line, std::size_t number) {
        const auto fields = fields_of(line);
        std::string original;
        return number == 1 ||
               (fields.size() == 2 && unescape(fields[1], original) &&
                classes_.enter_known(std::string(fields[0]), original));
      },
      failure);
}

bool Importer::load_documents(Failure &failure) {
  const std::string path = directory_.path_of(numbers_file);
  std::ifstream numbers(path, std::ios::binary);
  std::string bytes(numbers_mark.size(), '\0');
  numbers.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  const bool has_mark = numbers.good() && bytes == numbers_mark;
  bytes.resize(number_size);
  bool fits = true;
  const auto take = [&](const std::string &line, std::size_t number) {
    if (number == 1)
      return true;
    const auto fields = fields_of(line);
    numbers.read(bytes.data(), number_size);
    fits = has_mark && numbers.good();
    if (fields.size() != 6 || !fits)
      return false;
    Document document;
    get_numbers(reinterpret_cast<const unsigned char *>(bytes.data()),
                document);
    const std::string_view first = fields[2].substr(0, fields[2].find(' '));
    document.class_id =
        static_cast<std::uint32_t>(classes_.find_name(std::string(first)));
    document.side = fields[1] == "test" ? Side::test : Side::train;
    if (document.class_id == ClassNames::most)
      return false;
    const auto nr_classes = static_cast<std::size_t>(
        std::count(fields[2].begin(), fields[2].end(), ' ') + 1);
    most_classes_ = std::max(most_classes_, nr_classes);
    nr_with_several_ += nr_classes > 1;
    const auto place = static_cast<std::uint32_t>(documents_.size());
    known_.emplace(document.key, place);
    known_.emplace(document.content, place);
    names_.insert(hash_of(fields[0]));
    documents_.push_back(document);
    return true;
  };
  if (!for_each_line(directory_.path_of(names_file), take, failure)) {
    if (!fits)
      failure = {path, "", "it does not belong to " + std::string(names_file)};
    return false;
  }
  return true;
}

// Names that somebody else has given are taken.
bool Importer::load_list(const char *file, Failure &failure) {
  return for_each_line(
      directory_.path_of(file),
      [this](const std::string &line, std::size_t) {
        std::string_view name(line);
        name = name.substr(0, name.find(' '));
        if (name.size() > 4 && name.ends_with(".txt"))
          name.remove_suffix(4);
        names_.insert(hash_of(name));
        return true;
      },
      failure);
}

bool Importer::load_rejects(Failure &failure) {
  return for_each_line(
      directory_.path_of(rejects_file),
      [this](const std::string &line, std::size_t) {
        reject_lines_.insert(hash_of(line));
        return true;
      },
      failure);
}

bool Importer::set_test(const std::string &test, Failure &failure) {
  if (!test.empty() && !is_test_value(test)) {
    failure = {"--test", "", "neither a share, as 0.3, nor a number: " + test};
    return false;
  }
  if (!test_.empty() && !test.empty() && test != test_) {
    failure = {directory_.path_of(settings_file), "",
               "the test list was begun with --test " + test_};
    return false;
  }
  if (test_.empty())
    test_ = test.empty() ? default_test : test;
  return true;
}

bool Importer::read_source(const std::string &path,
                           const convert::Settings &told, Failure &failure) {
  convert::Settings settings = told;
  const auto kept = sources_.find(path);
  if (kept != sources_.end()) {
    settings = kept->second;
    const nlohmann::json kept_json = settings;
    const nlohmann::json told_json = told;
    for (const auto &[name, value] : told_json.items()) {
      if (kept_json.find(name) == kept_json.end() || kept_json[name] != value) {
        failure = {path, "",
                   "it was imported before with other settings (" + name +
                       "); see " + directory_.path_of(settings_file)};
        return false;
      }
    }
  }
  if (!convert::find_out(path, settings, failure))
    return false;
  convert::Settings &entry = sources_[path];
  has_new_settings_ |= kept == sources_.end() || !(entry == settings);
  entry = settings;
  source_ = path;
  is_folder_ = is_directory(path);
  settings_P_ = &entry;
  if (!convert::read_source(path, entry, *this, failure))
    return false;
  if (has_failed_)
    failure = write_failure_;
  return !has_failed_;
}

std::uint64_t Importer::key_hash(const std::string &key, bool is_id) const {
  return hash_of(key, is_id ? 1 : hash_of(source_));
}

bool Importer::wants(const std::string &key, bool is_id) {
  const auto found = known_.find(key_hash(key, is_id));
  if (has_failed_)
    return false;
  if (found == known_.end() || documents_[found->second].is_new)
    return true;
  ++summary_.nr_known;
  progress_.count(true);
  return false;
}

void Importer::reject(const std::string &place, const std::string &reason,
                      std::string_view begin) {
  progress_.count(true);
  ++summary_.nr_rejects;
  const bool is_counted_apart = summary_.rejects.size() < most_reasons ||
                                summary_.rejects.contains(reason);
  ++summary_.rejects[is_counted_apart ? reason : "other reasons"];
  const std::string line = escaped(source_) + '\t' + escaped(place) + '\t' +
                           escaped(reason) + '\t' + shown(begin);
  if (!reject_lines_.insert(hash_of(line)).second)
    return;
  new_rejects_ << line << '\n';
  ++nr_new_rejects_;
  if (++nr_shown_ <= most_shown) {
    const char *between_P = place.empty() ? "" : is_folder_ ? "/" : ":";
    report(program_, escaped(source_) + between_P + escaped(place) + ": " +
                         escaped(reason));
  } else if (nr_shown_ == most_shown + 1) {
    report(program_, "more of them are only written to " +
                         directory_.path_of(rejects_file));
  }
}

bool Importer::set_classes(const convert::Record &record, Document &document,
                           std::string &fields) {
  const std::string path = record.has_folder_class ? "/" : settings_P_->path;
  std::set<std::size_t> ids;
  for (const std::string &original : record.classes) {
    const std::size_t id = classes_.enter(original, path);
    if (id == ClassNames::most) {
      reject(record.place,
             classes_.entries().size() == ClassNames::most
                 ? "more than 100000 classes: is that the right field?"
                 : "a class without a name",
             original);
      return false;
    }
    if (ids.empty())
      document.class_id = static_cast<std::uint32_t>(id);
    if (ids.insert(id).second)
      fields += (fields.empty() ? "" : " ") + classes_.entries()[id].name;
  }
  if (ids.empty())
    reject(record.place, "no class", record.text);
  return !ids.empty();
}

void Importer::count_known(const Document &known, const Document &document) {
  ++summary_.nr_known;
  summary_.nr_changed += known.text != document.text;
  progress_.count(true);
}

bool Importer::is_repeated(const convert::Record &record,
                           const Document &document) {
  for (const std::uint64_t hash : {document.key, document.content}) {
    const auto found = known_.find(hash);
    if (found == known_.end())
      continue;
    const Document &known = documents_[found->second];
    if (!known.is_new) {
      count_known(known, document);
    } else {
      reject(record.place,
             known.content == document.content
                 ? "the same words and classes as an earlier document"
                 : "the same key as an earlier document: " + record.key,
             record.text);
    }
    return true;
  }
  return false;
}

bool Importer::write_text(const convert::Record &record,
                          const Document &document, std::string &name) {
  for (unsigned attempt = 0;; ++attempt) {
    name = document_name(record.key, document.key, attempt);
    if (names_.contains(hash_of(name)))
      continue;
    const auto written =
        directory_.write_text(name, record.text, write_failure_);
    has_failed_ = written == ExamplesDirectory::Written::failed;
    if (written != ExamplesDirectory::Written::taken)
      return !has_failed_;
  }
}

void Importer::take(convert::Record &record) {
  if (has_failed_)
    return;
  const Fingerprint print = fingerprint_of(record.text);
  if (print.nr_words == 0) {
    reject(record.place, "empty", record.text);
    return;
  }
  Document document;
  std::string fields;
  if (!set_classes(record, document, fields))
    return;
  document.text = print.words;
  document.minima = print.minima;
  document.content = hash_of(fields, print.words);
  document.key = record.key.empty() ? document.content
                                    : key_hash(record.key, record.is_id);
  document.group = record.group.empty() ? print.words : hash_of(record.group);
  document.is_new = true;
  if (is_repeated(record, document))
    return;
  if (fields.size() + longest_name + 1 > longest_list_line) {
    reject(record.place, "more classes than a line of a list can hold", fields);
    return;
  }
  std::string name;
  if (!write_text(record, document, name))
    return;
  const auto place = static_cast<std::uint32_t>(documents_.size());
  known_.emplace(document.key, place);
  known_.emplace(document.content, place);
  names_.insert(hash_of(name));
  documents_.push_back(document);
  new_names_ << name << '\t' << fields << '\t' << escaped(source_) << '\t'
             << escaped(record.place) << '\t' << escaped(record.key) << '\n';
  const auto nr_classes = static_cast<std::size_t>(
      std::count(fields.begin(), fields.end(), ' ') + 1);
  most_classes_ = std::max(most_classes_, nr_classes);
  nr_with_several_ += nr_classes > 1;
  ++summary_.nr_new;
  progress_.count();
}

bool Importer::begin_stage(const char *file, OutputFile &output,
                           Failure &failure) {
  const std::string path = directory_.staged_path_of(file);
  output.open(path, OutputFile::Mode::truncate);
  if (!output)
    failure = {path, "", std::strerror(errno)};
  return output.good();
}

bool Importer::end_stage(const char *file, OutputFile &output,
                         Failure &failure) {
  output.close();
  if (!output)
    failure = {directory_.staged_path_of(file), "", std::strerror(errno)};
  else
    staged_.emplace_back(file);
  return output.good();
}

// What a file had before, ended by a line end.
bool Importer::append_old(const char *file, OutputFile &output,
                          Failure &failure) {
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

// The lists and the table of names have the old documents and the new ones.
bool Importer::stage_documents(Failure &failure) {
  OutputFile names;
  OutputFile lists[2];
  if (!begin_stage(names_file, names, failure) ||
      !begin_stage("train", lists[0], failure) ||
      !begin_stage("test", lists[1], failure))
    return false;
  if (!directory_.has(names_file))
    names << names_header << '\n';
  if (!append_old(names_file, names, failure) ||
      !append_old("train", lists[0], failure) ||
      !append_old("test", lists[1], failure))
    return false;
  std::size_t place = documents_.size() - summary_.nr_new;
  const auto take = [&](const std::string &line, std::size_t) {
    const Side side = documents_[place++].side;
    const std::size_t tab = line.find('\t');
    const std::size_t end = line.find('\t', tab + 1);
    const std::string name = line.substr(0, tab);
    const std::string classes = line.substr(tab + 1, end - tab - 1);
    if (side == Side::none) {
      const auto fields = fields_of(line);
      unescape(fields[2], source_);
      std::string record_place;
      unescape(fields[3], record_place);
      reject(record_place, "the same words as a document of the other list",
             name);
      directory_.remove_text(name);
      return true;
    }
    names << name << '\t' << list_of(side) << line.substr(tab) << '\n';
    lists[side == Side::test] << name << ' ' << classes << '\n';
    return true;
  };
  if (!for_each_line(directory_.staged_path_of("new-names"), take, failure))
    return false;
  summary_.nr_new -= static_cast<std::size_t>(std::erase_if(
      documents_,
      [](const Document &document) { return document.side == Side::none; }));
  return end_stage(names_file, names, failure) &&
         end_stage("train", lists[0], failure) &&
         end_stage("test", lists[1], failure);
}

bool Importer::stage_classes(Failure &failure) {
  OutputFile output;
  if (!begin_stage(classes_file, output, failure))
    return false;
  output << classes_header << '\n';
  for (const ClassNames::Entry &entry : classes_.entries())
    output << entry.name << '\t' << escaped(entry.original) << '\n';
  return end_stage(classes_file, output, failure);
}

bool Importer::stage_settings(Failure &failure) {
  const nlohmann::json json = {{"version", settings_version},
                               {"test", test_},
                               {"share", share_},
                               {"sources", sources_}};
  OutputFile output;
  if (!begin_stage(settings_file, output, failure))
    return false;
  output << json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace)
         << '\n';
  return end_stage(settings_file, output, failure);
}

bool Importer::stage_numbers(Failure &failure) {
  OutputFile output;
  if (!begin_stage(numbers_file, output, failure))
    return false;
  output << numbers_mark;
  std::string bytes;
  for (const Document &document : documents_) {
    bytes.clear();
    append_numbers(bytes, document);
    output << bytes;
  }
  return end_stage(numbers_file, output, failure);
}

bool Importer::stage_near(Failure &failure) {
  const std::vector<NearPair> pairs = find_near(documents_);
  summary_.nr_near = pairs.size();
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
      !begin_stage(near_file, output, failure))
    return false;
  output << near_header << '\n';
  for (const NearPair &pair : pairs) {
    char likeness[8];
    std::snprintf(likeness, sizeof likeness, "%.2f",
                  static_cast<double>(pair.nr_equal) / nr_minima);
    output << names[pair.test] << '\t' << names[pair.train] << '\t' << likeness
           << '\n';
  }
  return end_stage(near_file, output, failure);
}

bool Importer::stage_resource_file(Failure &failure) {
  const bool is_new = summary_.nr_new > 0;
  const std::string names = is_new ? directory_.staged_path_of(names_file)
                                   : directory_.path_of(names_file);
  LanguageGuess guess;
  // Enough to tell a language, from all over the collection.
  constexpr std::size_t nr_read = 2000;
  constexpr std::size_t size_read = 2000;
  const std::size_t step = documents_.size() / nr_read + 1;
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
      !begin_stage(resource_file, output, failure))
    return false;
  // Two classes to a document are an exception, or the rule.
  const bool is_multiple = nr_with_several_ * 5 > documents_.size();
  output << resource_text(guess.code(), is_multiple ? most_classes_ : 1);
  summary_.has_new_resource_file = true;
  return end_stage(resource_file, output, failure);
}

bool Importer::stage_rejects(Failure &failure) {
  OutputFile output;
  if (!begin_stage(rejects_file, output, failure))
    return false;
  if (!directory_.has(rejects_file))
    output << rejects_header << '\n';
  const auto take = [&output](const std::string &line, std::size_t) {
    output << line << '\n';
    return true;
  };
  new_rejects_.flush();
  return append_old(rejects_file, output, failure) &&
         for_each_line(directory_.staged_path_of("new-rejects"), take,
                       failure) &&
         end_stage(rejects_file, output, failure);
}

void Importer::count_documents() {
  std::vector<std::size_t> counts(classes_.entries().size());
  for (const Document &document : documents_) {
    ++(document.side == Side::test ? summary_.nr_test : summary_.nr_train);
    ++counts[document.class_id];
  }
  std::set<std::string> fathers;
  for (const ClassNames::Entry &entry : classes_.entries()) {
    for (std::size_t slash = entry.name.find('/'); slash != std::string::npos;
         slash = entry.name.find('/', slash + 1))
      fathers.insert(entry.name.substr(0, slash));
  }
  for (std::size_t i = 0; i < counts.size(); ++i) {
    summary_.nr_classes += counts[i] > 0;
    if (fathers.contains(classes_.entries()[i].name))
      summary_.nr_inner += counts[i];
  }
}

bool Importer::stage_lists(Failure &failure) {
  if (share_ < 0) {
    const double wanted = std::strtod(test_.c_str(), nullptr);
    share_ =
        wanted < 1
            ? wanted
            : std::min(1.0, wanted / static_cast<double>(documents_.size()));
    has_new_settings_ = true;
  }
  deal(documents_, share_);
  withdraw_doubles(documents_);
  return stage_documents(failure) && stage_classes(failure) &&
         stage_numbers(failure) && stage_near(failure);
}

bool Importer::finish(Failure &failure) {
  progress_.finish();
  new_names_.close();
  if (!new_names_) {
    failure = {directory_.staged_path_of("new-names"), "",
               std::strerror(errno)};
    return false;
  }
  if (summary_.nr_new > 0 && !stage_lists(failure))
    return false;
  if (!documents_.empty() && !directory_.has(resource_file) &&
      !stage_resource_file(failure))
    return false;
  if (!documents_.empty() && has_new_settings_ && !stage_settings(failure))
    return false;
  if (nr_new_rejects_ > 0 && !stage_rejects(failure))
    return false;
  count_documents();
  return directory_.commit(staged_, failure);
}

}  // namespace vek::importing

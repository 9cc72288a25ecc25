#include "import/importer.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <utility>

#include "base/command_line.h"
#include "base/helpers.h"
#include "convert/encoding.h"
#include "convert/source.h"
#include "data/names.h"
#include "import/dealing.h"
#include "import/likeness.h"

namespace vek::importing {
namespace {

using keeping::escaped;
using keeping::unescape;

constexpr char default_test[] = "0.3";
// A line of vek's lists, without its end.
constexpr std::size_t longest_list_line = 2047;
// More than document_name() makes.
constexpr std::size_t longest_name = 128;
constexpr std::size_t shown_begin = 100;  // bytes of what is rejected
constexpr std::size_t most_shown = 10;    // rejects on standard error
constexpr std::size_t most_reasons = 20;  // that are counted apart

// False if `test` is neither a share below 1 nor a number of documents.
bool is_test_value(const std::string &test) {
  double value = 0;
  const char *end_P = test.data() + test.size();
  const auto result = std::from_chars(test.data(), end_P, value);
  return result.ec == std::errc() && result.ptr == end_P && value >= 0 &&
         (value < 1 ||
          test.find_first_not_of("0123456789") == std::string::npos);
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

}  // namespace

Importer::Importer(std::string program, bool is_quiet)
    : program_(program),
      progress_(std::move(program), is_quiet
                                        ? ProgressLine::Shown::never
                                        : ProgressLine::Shown::on_terminal) {}

bool Importer::open(const std::string &path, Failure &failure) {
  if (!directory_.open(path, failure) || !load(directory_, examples_, failure))
    return false;
  nr_old_ = examples_.documents.size();
  for (auto [file, output_P] : {std::pair{new_names, &new_names_},
                                std::pair{new_rejects, &new_rejects_}}) {
    const std::string staged = directory_.staged_path_of(file);
    output_P->open(staged, OutputFile::Mode::truncate);
    if (!*output_P) {
      failure = {staged, "", std::strerror(errno)};
      return false;
    }
  }
  return true;
}

bool Importer::set_test(const std::string &test, Failure &failure) {
  if (!test.empty() && !is_test_value(test)) {
    failure = {"--test", "", "neither a share, as 0.3, nor a number: " + test};
    return false;
  }
  if (!examples_.test.empty() && !test.empty() && test != examples_.test) {
    failure = {directory_.path_of(settings_file), "",
               "the test list was begun with --test " + examples_.test};
    return false;
  }
  if (examples_.test.empty())
    examples_.test = test.empty() ? default_test : test;
  return true;
}

bool Importer::read_source(const std::string &path,
                           const convert::Settings &told, Failure &failure) {
  convert::Settings settings = told;
  const auto kept = examples_.sources.find(path);
  if (kept != examples_.sources.end()) {
    nlohmann::json merged = kept->second;
    merged.update(nlohmann::json(told));
    settings = merged;
  }
  if (!convert::find_out(path, settings, failure))
    return false;
  convert::Settings &entry = examples_.sources[path];
  has_new_settings_ |= kept == examples_.sources.end() || !(entry == settings);
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
  const auto found = examples_.known.find(key_hash(key, is_id));
  if (has_failed_)
    return false;
  if (found == examples_.known.end() ||
      examples_.documents[found->second].is_new)
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
  if (!examples_.reject_lines.insert(hash_of(line)).second)
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
    const std::size_t id = examples_.classes.enter(original, path);
    if (id == ClassNames::most) {
      reject(record.place,
             examples_.classes.entries().size() == ClassNames::most
                 ? "more than 100000 classes: is that the right field?"
                 : "a class without a name",
             original);
      return false;
    }
    if (ids.empty())
      document.class_id = static_cast<std::uint32_t>(id);
    if (ids.insert(id).second)
      fields +=
          (fields.empty() ? "" : " ") + examples_.classes.entries()[id].name;
  }
  if (ids.empty())
    reject(record.place, "no class", record.text);
  return !ids.empty();
}

bool Importer::is_repeated(const convert::Record &record,
                           const Document &document) {
  auto found = examples_.known.find(document.key);
  if (found != examples_.known.end()) {
    const Document &known = examples_.documents[found->second];
    if (!known.is_new) {
      ++summary_.nr_known;
      summary_.nr_changed += known.text != document.text;
      progress_.count(true);
      return true;
    }
    if (known.content != document.content) {
      reject(record.place, "the same key as an earlier document: " + record.key,
             record.text);
      return true;
    }
  } else {
    found = examples_.known.find(document.content);
  }
  if (found == examples_.known.end())
    return false;
  reject(record.place, "the same words and classes as an earlier document",
         record.text);
  return true;
}

bool Importer::write_text(const convert::Record &record,
                          const Document &document, std::string &name) {
  // Not of the source, which may move.
  const std::uint64_t hash =
      record.key.empty() ? document.key : hash_of(record.key);
  for (unsigned attempt = 0;; ++attempt) {
    name = document_name(record.key, hash, attempt);
    if (examples_.names.contains(hash_of(name)))
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
  examples_.add(document, name, fields);
  new_names_ << name << '\t' << fields << '\t' << escaped(source_) << '\t'
             << escaped(record.place) << '\t' << escaped(record.key) << '\n';
  ++summary_.nr_new;
  progress_.count();
}

void Importer::count_documents() {
  for (const Document &document : examples_.documents)
    ++(document.side == Side::test ? summary_.nr_test : summary_.nr_train);
  std::set<std::string> fathers;
  for (const ClassNames::Entry &entry : examples_.classes.entries()) {
    for (std::size_t slash = entry.name.find('/'); slash != std::string::npos;
         slash = entry.name.find('/', slash + 1))
      fathers.insert(entry.name.substr(0, slash));
  }
  std::set<std::string> names;
  for (const auto &[fields, count] : examples_.filed_in) {
    bool is_inner = false;
    std::istringstream rest(count > 0 ? fields : "");
    for (std::string name; std::getline(rest, name, ' '); names.insert(name))
      is_inner = is_inner || fathers.contains(name);
    summary_.nr_inner += is_inner ? count : 0;
  }
  summary_.nr_classes = names.size();
}

void Importer::withdraw(const std::string &line) {
  const auto fields = fields_of(line);
  std::string place;
  unescape(fields[2], source_);
  unescape(fields[3], place);
  const std::string name(fields[0]);
  reject(place, "the same words as a document of the other list", name);
  directory_.remove_text(name);
  --examples_.filed_in.find(fields[1])->second;
}

bool Importer::stage_documents(Staging &staging, Failure &failure) {
  std::vector<Document> &documents = examples_.documents;
  if (examples_.share < 0) {
    const double wanted = std::strtod(examples_.test.c_str(), nullptr);
    const auto count = static_cast<double>(documents.size());
    examples_.share = wanted < 1 ? wanted : std::min(1.0, wanted / count);
  }
  deal(documents, examples_.share);
  withdraw_doubles(documents);
  if (!staging.documents(
          nr_old_, [this](const std::string &line) { withdraw(line); },
          failure))
    return false;
  summary_.nr_new -= static_cast<std::size_t>(std::erase_if(
      documents, [](const Document &d) { return d.side == Side::none; }));
  const std::vector<NearPair> pairs = find_near(documents);
  summary_.nr_near = pairs.size();
  return staging.classes(failure) && staging.numbers(failure) &&
         staging.near(pairs, failure);
}

bool Importer::finish(Failure &failure) {
  progress_.finish();
  new_names_.close();
  if (!new_names_) {
    failure = {directory_.staged_path_of(new_names), "", std::strerror(errno)};
    return false;
  }
  Staging staging(directory_, examples_);
  if (summary_.nr_new > 0 && !stage_documents(staging, failure))
    return false;
  summary_.has_new_resource_file =
      !examples_.documents.empty() && !directory_.has(resource_file);
  if (summary_.has_new_resource_file && !staging.resource(failure))
    return false;
  if (!examples_.documents.empty() && has_new_settings_ &&
      !staging.settings(failure))
    return false;
  new_rejects_.close();
  if (!new_rejects_) {
    failure = {directory_.staged_path_of(new_rejects), "",
               std::strerror(errno)};
    return false;
  }
  if (nr_new_rejects_ > 0 && !staging.rejects(failure))
    return false;
  count_documents();
  return staging.commit(failure);
}

}  // namespace vek::importing

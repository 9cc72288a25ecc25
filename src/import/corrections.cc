#include "import/corrections.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <set>
#include <utility>

#include "base/helpers.h"
#include "base/output_file.h"
#include "data/names.h"
#include "import/likeness.h"
#include "import/naming.h"
#include "import/staging.h"

namespace vek::importing {
namespace {

using keeping::escaped;

// Bytes of a line of vek's lists that are left beside the document's name.
constexpr std::size_t longest_fields = 1900;

// Classes in whatever order.
std::set<std::string> members_of(std::string_view fields) {
  std::set<std::string> members;
  while (!fields.empty()) {
    const std::size_t end = std::min(fields.find(' '), fields.size());
    if (end > 0)
      members.emplace(fields.substr(0, end));
    fields.remove_prefix(std::min(end + 1, fields.size()));
  }
  return members;
}

std::string last_part(const std::string &path) {
  return path.substr(path.rfind('/') + 1);
}

}  // namespace

bool Corrections::open(const std::string &path, Failure &failure) {
  if (presence_of(path + "/train") != Presence::there) {
    failure = {path + "/train", "", "there is no training list to add to"};
    return false;
  }
  if (!directory_.open(path, failure) || !load(directory_, examples_, failure))
    return false;
  nr_old_ = examples_.documents.size();
  for (std::uint32_t i = 0; i < nr_old_; ++i)
    by_text_.emplace(examples_.documents[i].text, i);
  return true;
}

// As a list has them. Empty if one is nothing that it can have.
std::string Corrections::fields_of(const std::vector<std::string> &classes,
                                   Document &document) {
  std::string fields;
  std::set<std::size_t> ids;
  for (const std::string &name : classes) {
    std::size_t id = examples_.classes.find_name(name);
    if (id == ClassNames::most)
      id = examples_.classes.enter(name, "/");
    if (id == ClassNames::most)
      return "";
    if (ids.empty())
      document.class_id = static_cast<std::uint32_t>(id);
    if (ids.insert(id).second)
      fields +=
          (fields.empty() ? "" : " ") + examples_.classes.entries()[id].name;
  }
  return fields;
}

Corrections::Taken Corrections::take(const CorrectedText &correction,
                                     Failure &failure) {
  const Fingerprint print = fingerprint_of(correction.text);
  if (print.nr_words == 0)
    return Taken::empty;
  Document document;
  document.text = document.group = print.words;
  document.minima = print.minima;
  const auto [begin, end] = by_text_.equal_range(print.words);
  const bool is_in_test = std::any_of(begin, end, [this](const auto &place) {
    return examples_.documents[place.second].side == Side::test;
  });
  if (is_in_test)
    return Taken::in_test;
  if (begin == end && !correction.may_be_new)
    return Taken::yes;
  const std::string fields = fields_of(correction.classes, document);
  if (fields.empty() || fields.size() > longest_fields)
    return Taken::bad;
  if (begin == end)
    return enter(correction, document, fields, failure) ? Taken::yes
                                                        : Taken::failed;
  for (auto place = begin; place != end; ++place) {
    const std::uint32_t at = place->second;
    examples_.documents[at].class_id = document.class_id;
    (at < nr_old_ ? old_ : new_)[at].fields = fields;
  }
  return Taken::yes;
}

bool Corrections::enter(const CorrectedText &correction, Document document,
                        const std::string &fields, Failure &failure) {
  std::string name;
  auto written = ExamplesDirectory::Written::taken;
  for (unsigned attempt = 0; written == ExamplesDirectory::Written::taken;
       ++attempt) {
    name = document_name(last_part(correction.place), document.text, attempt);
    if (!examples_.names.contains(hash_of(name)))
      written = directory_.write_text(name, correction.text, failure);
  }
  if (written == ExamplesDirectory::Written::failed)
    return false;
  document.side = Side::train;
  document.is_new = true;
  const auto place = static_cast<std::uint32_t>(examples_.documents.size());
  examples_.add(document, name, fields);
  by_text_.emplace(document.text, place);
  new_[place] = {fields, name, correction};
  new_[place].source.text.clear();
  return true;
}

// Those that do not have these classes already.
bool Corrections::keep_real_changes(Failure &failure) {
  const auto take = [this](const std::string &line, std::size_t number) {
    const auto change = number < 2
                            ? old_.end()
                            : old_.find(static_cast<std::uint32_t>(number - 2));
    if (change == old_.end())
      return true;
    const auto fields = importing::fields_of(line);
    if (members_of(fields[2]) == members_of(change->second.fields))
      old_.erase(change);
    else
      change->second.name = fields[0];
    return true;
  };
  return for_each_line(directory_.path_of(names_file), take, failure);
}

bool Corrections::write_new_names(Failure &failure) const {
  const std::string path = directory_.staged_path_of(new_names);
  OutputFile output;
  output.open(path, OutputFile::Mode::truncate);
  for (const auto &[place, change] : new_) {
    output << change.name << '\t' << change.fields << '\t'
           << escaped(change.source.source) << '\t'
           << escaped(change.source.place) << '\t'
           << escaped(last_part(change.source.place)) << '\n';
  }
  output.close();
  if (!output)
    failure = {path, "", std::strerror(errno)};
  return output.good();
}

bool Corrections::finish(Failure &failure) {
  if (!keep_real_changes(failure))
    return false;
  if (old_.empty() && new_.empty())
    return directory_.commit({}, failure);
  std::map<std::string, std::string, std::less<>> changes;
  for (const auto &[place, change] : old_)
    changes[change.name] = change.fields;
  for (const auto *changed_P : {&old_, &new_}) {
    for (const auto &[place, change] : *changed_P) {
      Document &document = examples_.documents[place];
      document.content = hash_of(change.fields, document.text);
      if (document.is_new)
        document.key = document.content;
    }
  }
  Staging staging(directory_, examples_);
  staging.change_classes(std::move(changes));
  return write_new_names(failure) &&
         staging.documents(
             nr_old_, [](const std::string &) {}, failure) &&
         staging.classes(failure) && staging.numbers(failure) &&
         staging.near(find_near(examples_.documents), failure) &&
         staging.commit(failure);
}

}  // namespace vek::importing

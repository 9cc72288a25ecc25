#include "tune/examples.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>
#include <set>
#include <utility>

#include "base/helpers.h"
#include "base/input_file.h"
#include "intake/lists.h"
#include "vocabulary/atomtab.h"

namespace vek::tuning {
namespace {

constexpr std::uint32_t not_a_word = 0xFFFFFFFF;

// FNV-1a, with its bits mixed once more (the finalizer of MurmurHash3): of
// names that differ in their last character alone the upper bits would be
// alike.
std::uint64_t hash_of(std::string_view name) {
  std::uint64_t hash = 0xCBF29CE484222325;
  for (const char character : name)
    hash = (hash ^ static_cast<unsigned char>(character)) * 0x100000001B3;
  hash = (hash ^ (hash >> 33)) * 0xFF51AFD7ED558CCD;
  hash = (hash ^ (hash >> 33)) * 0xC4CEB9FE1A85EC53;
  return hash ^ (hash >> 33);
}

}  // namespace

bool Examples::read_list(const std::string &directory, Failure &failure) {
  const std::string path = Path(directory, list_name(ListKind::train), "");
  std::string text;
  std::string reason;
  if (read_file(path, text, reason) != ReadResult::ok) {
    failure = {path, "", reason};
    return false;
  }
  if (!base_name(directory, top_)) {
    failure = {directory, "", std::strerror(errno)};
    return false;
  }
  ListReader reader(text);
  std::string line;
  ListEntry entry;
  while (reader.next(line)) {
    if (!parse_list_line(line, entry)) {
      failure = {path, "line " + std::to_string(reader.line_number()),
                 "format error"};
      return false;
    }
    if (entry.classes.empty())
      continue;
    const auto [place, is_new] =
        places_.emplace(entry.document, examples_.size());
    if (is_new)
      examples_.push_back({entry.document, examples_.size(), {}, {}});
    std::vector<std::string> &classes = examples_[place->second].classes;
    classes.insert(classes.end(), entry.classes.begin(), entry.classes.end());
    for (const std::string &name : entry.classes)
      classes_.try_emplace(name, classes_.size());
  }
  return true;
}

void Examples::choose(std::size_t nr_docs) {
  // A document counts for the smallest of its classes.
  std::map<std::string, std::size_t> sizes;
  for (const Example &example : examples_) {
    for (const std::string &name : example.classes)
      ++sizes[name];
  }
  std::map<std::string, std::vector<std::pair<std::uint64_t, std::size_t>>>
      members;
  for (std::size_t i = 0; i < examples_.size(); ++i) {
    const std::string &smallest = *std::ranges::min_element(
        examples_[i].classes, {}, [&](const std::string &name) {
          return std::pair(sizes.at(name), std::string_view(name));
        });
    members[smallest].emplace_back(hash_of(examples_[i].name), i);
  }
  // The r-th of n documents stands at r / n of the way; classes begin at
  // different points, so that not all of the small ones come at the same.
  using Position = std::pair<double, std::uint64_t>;
  std::vector<std::pair<Position, std::size_t>> order;
  for (auto &[name, places] : members) {
    std::ranges::sort(places);
    const double start = double(hash_of(name) >> 32) / 4294967296.0;
    for (std::size_t r = 0; r < places.size(); ++r) {
      order.push_back(
          {{(double(r) + start) / double(places.size()), places[r].first},
           places[r].second});
    }
  }
  std::ranges::sort(order);
  order.resize(std::min(nr_docs, order.size()));
  std::vector<Example> chosen;
  for (const auto &[position, place] : order)
    chosen.push_back(std::move(examples_[place]));
  examples_ = std::move(chosen);
  places_.clear();
  for (std::size_t i = 0; i < examples_.size(); ++i)
    places_.emplace(examples_[i].name, i);
}

bool Examples::read_profiles(const Model &model, Failure &failure) {
  words_.assign(model.terms().size(), not_a_word);
  std::uint32_t next = 0;
  for (std::uint32_t id = 0; id < model.terms().size(); ++id) {
    if (model.terms().mod(id) == EmptyAtom)
      words_[id] = next++;
  }
  double nr_terms = 0.0;
  double nr_words = 0.0;
  for (Example &example : examples_) {
    example.profile.clear();
    if (!model.read_profile(example.name, example.profile, failure))
      return false;
    nr_terms += double(example.profile.size());
    nr_words += double(std::ranges::count_if(
        example.profile, [&](const DocProfileEntry &entry) -> bool {
          return words_[entry.term] != not_a_word;
        }));
  }
  share_of_words_ = nr_terms > 0.0 ? nr_words / nr_terms : 1.0;
  return true;
}

std::size_t Examples::nr_classes() const {
  std::set<std::string_view> names;
  for (const Example &example : examples_)
    names.insert(example.classes.begin(), example.classes.end());
  return names.size();
}

std::size_t Examples::most_classes() const {
  std::size_t most = 0;
  for (const Example &example : examples_) {
    const std::set<std::string_view> different(example.classes.begin(),
                                               example.classes.end());
    most = std::max(most, different.size());
  }
  return most;
}

double Examples::share_of_several() const {
  const auto nr_several = std::ranges::count_if(
      examples_,
      [](const Example &example) { return example.classes.size() > 1; });
  return double(nr_several) /
         double(std::max(examples_.size(), std::size_t{1}));
}

void Examples::fill(std::size_t nr_docs, ClassTable &classes) const {
  classes.enter(top_, 0);
  std::map<std::size_t, std::string_view> names;
  for (std::size_t i = 0; i < nr_docs; ++i) {
    for (const std::string &name : examples_[i].classes)
      names.emplace(classes_.at(name), name);
  }
  for (const auto &[place, name] : names)
    classes.enter_path(std::string(name), 0);
  for (std::size_t i = 0; i < nr_docs; ++i) {
    for (const std::string &path : examples_[i].classes)
      classes.add_train_document(classes.enter_path(path, 0),
                                 examples_[i].name);
  }
  classes.gather_documents();
}

Examples::Size Examples::size_of(std::size_t nr_docs) const {
  ClassTable classes;
  fill(nr_docs, classes);
  Size size;
  size.nr_docs = nr_docs;
  size.nr_classes = classes.size();
  size.share_of_words = share_of_words_;
  for (const auto &[key, father] : classes) {
    if (father.sons.empty())
      continue;
    double nr_terms = 0.0;
    for (const auto &[name, sons] : father.train_docs)
      nr_terms += double(examples_[places_.at(name)].profile.size());
    size.nr_terms += nr_terms;
    size.nr_terms_by_son += nr_terms * double(father.sons.size());
  }
  return size;
}

void Examples::read(const std::string &name, bool words_only,
                    DocProfile &profile) const {
  const DocProfile &all = examples_[places_.at(name)].profile;
  for (const DocProfileEntry &entry : all) {
    if (!words_only)
      profile.add_term(entry.term, entry.freq);
    else if (words_[entry.term] != not_a_word)
      profile.add_term(words_[entry.term], entry.freq);
  }
}

}  // namespace vek::tuning

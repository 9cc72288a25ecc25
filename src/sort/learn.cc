#include "sort/learn.h"

#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "base/helpers.h"
#include "import/corrections.h"
#include "sort/arrivals.h"
#include "sort/folders.h"
#include "sort/known_texts.h"
#include "sort/target.h"
#include "sort/text_reader.h"

namespace vek::sorting {
namespace {

using Report = std::function<void(const Failure &)>;

// Size and time, which a text keeps wherever it is moved.
using Mark = std::pair<off_t, std::int64_t>;

Mark mark_of(const Identity &identity) {
  return {identity.size, identity.modified};
}

struct Found {
  std::string place;
  Identity identity;
  std::string class_name;
  bool is_moved = false;  // by people
  // Moved, if it is the one of its mark that was learnt somewhere else: it has
  // been brought here.
  bool is_returned = false;
};
using FoundByMark = std::map<Mark, std::vector<Found>>;

// What people have set right in a directory.
class Lesson {
 public:
  Lesson(const std::string &directory, const Report &report)
      : directory_(directory),
        report_(report),
        learnt_(directory, learnt_name) {}

  // False if the lists of what is known cannot be read.
  bool find(Failure &failure) {
    const Arrivals arrivals(directory_, std::chrono::milliseconds(0));
    const Arrivals::Scan scan = arrivals.scan();
    for (const Failure &one : scan.failures)
      report_(one);
    for (const Arrival &text : scan.texts) {
      // What lies beside the folders belongs to no class.
      if (text.name.find('/') == std::string::npos)
        continue;
      const std::string name = class_of_folder(directory_of(text.name));
      if (!name.empty())
        found_[mark_of(text.identity)].push_back(
            {text.name, text.identity, name, false});
    }
    return find_moved(failure);
  }

  // Gives `take` the texts of which one was moved, those that got their places
  // last at the end.
  template <class Take>
  void for_each(const convert::Settings &conversion, Take take) {
    std::multimap<std::int64_t, Lecture> lectures;
    TextReader reader(conversion);
    for (const auto &[mark, texts] : found_) {
      if (std::ranges::none_of(texts, &Found::is_moved))
        continue;
      std::map<std::string, Lecture> by_text;
      for (const Found &found : texts)
        add(found, reader, by_text);
      for (auto &[text, lecture] : by_text) {
        if (lecture.is_moved)
          lectures.emplace(lecture.changed, std::move(lecture));
      }
    }
    for (auto &[changed, lecture] : lectures)
      take(lecture);
  }

  // Texts that are as they are learnt now.
  struct Lecture {
    importing::CorrectedText correction;
    std::vector<const Found *> texts;
    std::int64_t changed = 0;  // when the last of them got its place
    bool is_moved = false;
  };

  void keep(const Lecture &lecture) {
    for (const Found *const found_P : lecture.texts) {
      if (found_P->is_moved)
        learnt_.add(found_P->place, found_P->identity);
    }
  }
  bool save(Failure &failure) {
    return !is_target_ || (learnt_.save(failure) && learnt_.clean(failure));
  }

 private:
  // After the texts were found: what is brought meanwhile is known by then.
  bool find_moved(Failure &failure) {
    const Target target(directory_, "", Mode::move);
    is_target_ = presence_of(target.state_path()) != Presence::missing;
    const std::set<std::string> in_hand = target.places_in_hand();
    KnownTexts known(directory_, known_name);
    std::set<Mark> gone;
    const auto is_there = [this](const std::string &place, const Mark &mark) {
      const auto texts = found_.find(mark);
      return texts != found_.end() &&
             std::ranges::find(texts->second, place, &Found::place) !=
                 texts->second.end();
    };
    if (!known.open(failure) || !learnt_.open(failure) ||
        !learnt_.for_each(
            [&](const std::string &place, const Identity &identity) {
              if (!is_there(place, mark_of(identity)))
                gone.insert(mark_of(identity));
            },
            failure))
      return false;
    for (auto &[mark, texts] : found_) {
      for (Found &found : texts) {
        const bool is_brought = known.has(found.place, found.identity) ||
                                in_hand.contains(found.place);
        found.is_returned = is_brought && gone.contains(mark);
        found.is_moved = !learnt_.has(found.place, found.identity) &&
                         (found.is_returned || !is_brought);
      }
    }
    return true;
  }

  void add(const Found &found, TextReader &reader,
           std::map<std::string, Lecture> &by_text) {
    const std::string path = directory_ + '/' + found.place;
    std::string text;
    std::string reason;
    struct stat status = {};
    const TextReader::Result result = reader.read(path, false, text, reason);
    if (result == TextReader::Result::gone || lstat(path.c_str(), &status) != 0)
      return;
    if (result != TextReader::Result::read) {
      if (found.is_moved)
        report_({path, "", reason});
      return;
    }
    const auto [place, is_first] = by_text.try_emplace(text);
    Lecture &lecture = place->second;
    if (is_first)
      lecture.correction.may_be_new = false;
    lecture.correction.source = directory_;
    if (lecture.texts.empty() || found.is_moved)
      lecture.correction.place = found.place;
    lecture.correction.text = std::move(text);
    lecture.correction.classes.push_back(found.class_name);
    lecture.texts.push_back(&found);
    lecture.is_moved |= found.is_moved;
    lecture.correction.may_be_new |= found.is_moved && !found.is_returned;
    lecture.changed = std::max(
        lecture.changed, std::int64_t{status.st_ctim.tv_sec} * 1'000'000'000 +
                             status.st_ctim.tv_nsec);
  }

  const std::string &directory_;
  const Report &report_;
  KnownTexts learnt_;
  bool is_target_ = false;
  FoundByMark found_;
};

}  // namespace

bool learn(const std::string &directory, const std::string &model_directory,
           const convert::Settings &conversion, const Report &report,
           Learnt &learnt, Failure &failure) {
  importing::Corrections corrections;
  learnt = {};
  const Report leave = [&](const Failure &one) {
    ++learnt.nr_left;
    report(one);
  };
  Lesson lesson(directory, leave);
  if (!corrections.open(model_directory, failure) || !lesson.find(failure))
    return false;
  bool has_failed = false;
  lesson.for_each(conversion, [&](const Lesson::Lecture &lecture) {
    using Taken = importing::Corrections::Taken;
    if (has_failed)
      return;
    const std::string path = directory + '/' + lecture.correction.place;
    switch (corrections.take(lecture.correction, failure)) {
      case Taken::yes:
        break;
      case Taken::empty:
        leave({path, "", "empty"});
        break;
      case Taken::in_test:
        leave({path, "", "it is in the test list, and stays there"});
        break;
      case Taken::bad:
        leave({path, "", "no name for a class, or too many classes"});
        break;
      case Taken::failed:
        has_failed = true;
    }
    // What cannot be learnt is not told again.
    lesson.keep(lecture);
  });
  if (has_failed || !corrections.finish(failure))
    return false;
  learnt.nr_new = corrections.nr_new();
  learnt.nr_changed = corrections.nr_changed();
  return lesson.save(failure);
}

}  // namespace vek::sorting

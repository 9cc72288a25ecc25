#include "sort/watch.h"

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <map>
#include <set>
#include <string_view>
#include <vector>

#include "base/helpers.h"
#include "sort/signals.h"

namespace vek::sorting {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// Of a directory whose changes the system does not tell, as over a network.
constexpr milliseconds scan_interval(60'000);
// After journal, log, disk or analyser have failed.
constexpr milliseconds retry_interval(5'000);

// Of a text that is being written, at the least.
constexpr milliseconds look_interval(100);

// Messages that are not told twice.
constexpr std::size_t most_told = 1000;

constexpr std::uint32_t events = IN_CLOSE_WRITE | IN_MOVED_TO | IN_CREATE |
                                 IN_MOVE_SELF | IN_ONLYDIR | IN_DONT_FOLLOW |
                                 IN_EXCL_UNLINK;

class Watch {
 public:
  Watch(const Watched &watched, int signals)
      : watched_(watched), signals_(signals) {}
  ~Watch() {
    if (inotify_ >= 0)
      close(inotify_);
  }
  Watch(const Watch &) = delete;
  Watch &operator=(const Watch &) = delete;

  bool run(Failure &failure) {
    inotify_ = inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    if (inotify_ < 0) {
      failure = {"inotify", "", std::strerror(errno)};
      return false;
    }
    while (stop_signal() == 0) {
      if (Clock::now() >= next_scan_)
        scan("");
      end_waiting();
      take_up_model();
      failure = {watched_.find_lost(), "", "it is gone"};
      if (!failure.file.empty())
        return false;
      sort();
      if (stop_signal() == 0)
        wait();
    }
    return true;
  }

 private:
  struct Waiting {
    Clock::time_point end;
    Identity identity;
  };

  void tell(const std::string &message) {
    if (told_.size() == most_told)
      told_.clear();
    if (told_.insert(message).second)
      watched_.report(message);
  }

  void take_up_model() {
    if (!take_reload() && (ready_.empty() || !watched_.answers.has_changed()))
      return;
    Failure failure;
    const Locked locked = watched_.answers.reload(failure);
    if (locked == Locked::yes) {
      watched_.sorter.take_up_model();
      watched_.report("the model is " + watched_.answers.model_id() + " now");
    } else if (locked == Locked::failed) {
      watched_.report(failure.text() + "; the old model is used on");
    }
  }

  void scan(const std::string &folder) {
    if (folder.empty())
      next_scan_ = Clock::now() + scan_interval;
    const Arrivals::Scan found = watched_.arrivals.scan(
        [this](const std::string &name) { add(name); }, folder);
    for (const Arrival &text : found.texts)
      ready_.insert(text.name);
    for (const Arrival &text : found.unsettled)
      settle(text);
    for (const std::string &other : found.others)
      tell(watched_.arrivals.path_of(other) + ": no regular file");
    for (const Failure &failure : found.failures)
      tell(failure.text());
  }

  void add(const std::string &folder) {
    const std::string path = watched_.arrivals.path_of(folder);
    const int watch = inotify_add_watch(inotify_, path.c_str(), events);
    if (watch >= 0) {
      folders_[watch] = folder;
    } else if (errno != ENOENT && errno != ENOTDIR) {
      tell(path + ": it is looked at once a minute, as it cannot be watched: " +
           std::strerror(errno));
    }
  }

  // It counts when it has been the same for the settling time, and nobody has
  // it open to write on: then its end is told.
  void settle(const Arrival &text) {
    Waiting &waiting = waiting_[text.name];
    if (waiting.identity == text.identity)
      return;
    waiting = {Clock::now() + watched_.arrivals.settling(), text.identity};
  }

  void end_waiting() {
    const Clock::time_point now = Clock::now();
    for (auto place = waiting_.begin(); place != waiting_.end();) {
      Waiting &waiting = place->second;
      Arrival text;
      if (now < waiting.end) {
        ++place;
      } else if (!watched_.arrivals.look_at(place->first, text)) {
        place = waiting_.erase(place);
      } else if (text.identity == waiting.identity &&
                 !watched_.arrivals.is_being_written(place->first)) {
        ready_.insert(place->first);
        place = waiting_.erase(place);
      } else {
        waiting = {now + std::max(watched_.arrivals.settling(), look_interval),
                   text.identity};
        ++place;
      }
    }
  }

  void sort() {
    std::vector<Arrival> texts;
    Arrival text;
    for (const std::string &name : ready_) {
      if (watched_.arrivals.look_at(name, text))
        texts.push_back(text);
    }
    ready_.clear();
    Failure failure;
    ProgressLine progress("", ProgressLine::Shown::never);
    if ((!has_failed_ || watched_.target.open(failure)) &&
        watched_.sorter.sort(texts, progress, failure)) {
      has_failed_ = false;
      failed_ = "";
      return;
    }
    if (failure.text() != failed_)
      watched_.report(failure.text());
    failed_ = failure.text();
    has_failed_ = true;
    next_scan_ = Clock::now() + retry_interval;
  }

  void wait() {
    Clock::time_point next = next_scan_;
    for (const auto &[name, waiting] : waiting_)
      next = std::min(next, waiting.end);
    const auto left =
        std::chrono::ceil<milliseconds>(next - Clock::now()).count();
    pollfd descriptors[] = {{inotify_, POLLIN, 0}, {signals_, POLLIN, 0}};
    poll(descriptors, 2, static_cast<int>(std::max<std::int64_t>(0, left)));
    read_events();
  }

  void read_events() {
    alignas(inotify_event) char buffer[65536];
    ssize_t size = 0;
    while ((size = read(inotify_, buffer, sizeof buffer)) > 0) {
      const char *const end_P = buffer + size;
      for (const char *at_P = buffer; at_P < end_P;) {
        const auto &event = *reinterpret_cast<const inotify_event *>(at_P);
        take(event);
        at_P += sizeof event + event.len;
      }
    }
  }

  void take(const inotify_event &event) {
    if ((event.mask & IN_Q_OVERFLOW) != 0) {
      next_scan_ = Clock::now();
      return;
    }
    const auto found = folders_.find(event.wd);
    if (found == folders_.end())
      return;
    if ((event.mask & IN_IGNORED) != 0) {
      folders_.erase(found);
      return;
    }
    if (event.len == 0 || event.name[0] == '.')
      return;
    const std::string name =
        (found->second.empty() ? "" : found->second + '/') + event.name;
    if ((event.mask & IN_ISDIR) != 0) {
      scan(name);
    } else if ((event.mask & IN_CREATE) != 0) {
      // It is being written, or was linked, and then nothing else is told.
      Arrival text;
      if (watched_.arrivals.look_at(name, text))
        settle(text);
    } else {
      waiting_.erase(name);
      ready_.insert(name);
    }
  }

  const Watched &watched_;
  const int signals_;
  int inotify_ = -1;
  std::map<int, std::string> folders_;      // by watch
  std::set<std::string> ready_;             // names
  std::map<std::string, Waiting> waiting_;  // by name
  std::set<std::string> told_;
  std::string failed_;
  bool has_failed_ = false;
  Clock::time_point next_scan_;
};

}  // namespace

bool watch(const Watched &watched, int signals, Failure &failure) {
  return Watch(watched, signals).run(failure);
}

}  // namespace vek::sorting

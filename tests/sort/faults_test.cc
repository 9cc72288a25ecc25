// Whatever call of vek-sort fails, and wherever it is killed: each text is at
// one place, and the next pass leaves it sorted, and told of once.
#include <algorithm>
#include <cerrno>
#include <set>
#include <sstream>
#include <utility>
#include <vector>

#include "sort/sort_run.h"

namespace vek::sorting {
namespace {

using Words = std::vector<std::string>;

struct Way {
  const char *name;
  const char *options;
  bool is_moved = true;
  bool has_other_disk = false;
};

// GoogleTest looks for it by this name. NOLINTNEXTLINE(readability-*)
void PrintTo(const Way &way, std::ostream *out) {
  *out << way.name;
}

class SortFaultTest : public SortRun, public testing::WithParamInterface<Way> {
 protected:
  SortFaultTest() {
    write_text("vek.rc", read_text("vek.rc") + " maxranks 2 minranks 2");
    if (GetParam().has_other_disk) {
      std::string name = "/dev/shm/vek-XXXXXX";
      if (mkdtemp(name.data()) != nullptr)
        other_ = name;
    }
    restore();
    const Outcome outcome = sort(call(), "list");
    EXPECT_EQ(outcome.status, 1) << outcome.errors;
    std::istringstream report(read_text("report"));
    for (std::string line; std::getline(report, line);)
      calls_.push_back(line);
    check_end("");
  }
  ~SortFaultTest() override {
    fs::remove_all(other_);
    if (nr_failures_ > 0)
      std::printf("%d failures\n", nr_failures_);
  }

  // So many are passed over between two that are tried, or it takes minutes.
  static constexpr int step = 4;

  // Where texts come in.
  fs::path incoming() const { return other_.empty() ? "in" : other_ / "in"; }
  std::string call() const {
    return std::string(GetParam().options) + " --to to . " +
           incoming().string();
  }
  void restore() const {
    fs::remove_all("to");
    fs::remove_all(incoming());
    write_text(incoming() / "a.txt", "race bicycle");
    write_text(incoming() / "b.txt", "bread gas");
    write_text(incoming() / "sub/a.txt", "race race bicycle");
    write_text(incoming() / "none", "  ");
  }

  void check_each(const std::string &kind, const Words &ends) {
    for (const std::string &line : calls_) {
      if (!line.starts_with("call " + kind + ' '))
        continue;
      const std::string at = line.substr(kind.size() + 6);
      for (const std::string &end : ends) {
        if (nr_seen_++ % step == 0)
          check(kind + ' ' + at.substr(0, at.find(' ')) + ' ' + end);
      }
    }
  }

  void check(const std::string &fault) {
    SCOPED_TRACE(fault);
    ++nr_failures_;
    restore();
    const Outcome outcome = sort(call(), fault);
    SCOPED_TRACE(read_text("report") + outcome.errors);
    if (outcome.status != 1 && outcome.status <= 128) {
      EXPECT_NE(outcome.errors.find("vek-sort: "), std::string::npos);
      EXPECT_EQ(outcome.status, 2);
    }
    for (const auto &[name, text] : texts_)
      EXPECT_TRUE(is_somewhere(text)) << name;
    const Outcome again = sort(call());
    EXPECT_LE(again.status, 1) << again.errors;
    check_end(fault);
  }

  bool is_somewhere(const std::string &text) const {
    for (const fs::path &top : {incoming(), fs::path("to")}) {
      for (const auto &[name, other] : texts_in(top)) {
        if (text == other && name.find("/.vek-sort-") == std::string::npos)
          return true;
      }
    }
    return false;
  }

  // Everything is at its places, with a line for each text.
  void check_end(const std::string &fault) const {
    const bool is_moved = GetParam().is_moved;
    EXPECT_EQ(texts_in(incoming()).size(), is_moved ? 0 : texts_.size());
    std::multiset<std::string> wanted;
    for (const auto &[name, text] : texts_) {
      wanted.insert(text);
      if (text != "  ")
        wanted.insert(text);
    }
    std::multiset<std::string> found;
    std::string names;
    for (const auto &[name, text] : texts_in("to")) {
      found.insert(text);
      names += name + ' ';
    }
    EXPECT_EQ(found, wanted) << fault << ": " << names;
    Words lines = log_column(1);
    std::sort(lines.begin(), lines.end());
    EXPECT_EQ(lines, (Words{"a.txt", "b.txt", "none", "sub/a.txt"}))
        << read_text("to/sorted.tsv");
  }

 private:
  const std::map<std::string, std::string> texts_ = {
      {"a.txt", "race bicycle"},
      {"b.txt", "bread gas"},
      {"sub/a.txt", "race race bicycle"},
      {"none", "  "}};
  fs::path other_;
  Words calls_;
  int nr_seen_ = 0;
  int nr_failures_ = 0;
};

const std::string io = std::to_string(EIO);
const std::string full = std::to_string(ENOSPC);
const std::string again = std::to_string(EINTR);
const std::string many = std::to_string(EMFILE);
const std::string invalid = std::to_string(EINVAL);

TEST_P(SortFaultTest, EveryCallFailsOnce) {
  const std::vector<std::pair<Words, Words>> calls = {
      {{"mkdir", "renameat2", "link"}, {io, full, invalid}},
      {{"fsync", "syncfs", "rename", "unlink", "fchmod"}, {io}},
      {{"open"}, {io, many}},
      {{"read"}, {io, again, "short"}},
      {{"write"}, {io, full, again, "short"}},
      {{"lstat", "opendir", "readdir"}, {io}},
  };
  for (const auto &[names, ends] : calls) {
    for (const std::string &name : names)
      check_each(name, ends);
  }
}

TEST_P(SortFaultTest, KilledAtEveryChange) {
  check_each("change", {"before", "after", "torn"});
}

INSTANTIATE_TEST_SUITE_P(
    Way, SortFaultTest,
    testing::Values(Way{"Move", ""}, Way{"MoveFromOtherDisk", "", true, true},
                    Way{"Copy", "--copy", false}, Way{"Link", "--link", false}),
    [](const auto &instance) { return std::string(instance.param.name); });

}  // namespace
}  // namespace vek::sorting

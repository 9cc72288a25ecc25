// Whatever call of vek-data fails, and wherever it is killed: the directory is
// the old one or the new one, whole, for it and for vek.
#include <cerrno>
#include <sstream>
#include <utility>
#include <vector>

#include "data/small_data.h"

namespace vek::keeping {
namespace {

using Words = std::vector<std::string>;

// What a broken-off run has left beside the copy of the index.
enum class Index { whole, torn, older };

struct Change {
  const char *name;
  const char *command;
  Index index = Index::whole;
};

// GoogleTest looks for it by this name. NOLINTNEXTLINE(readability-*)
void PrintTo(const Change &change, std::ostream *out) {
  *out << change.name;
}

class DataFaultTest : public SmallData,
                      public testing::WithParamInterface<Change> {
 protected:
  DataFaultTest() {
    // So that there are dead bytes.
    EXPECT_EQ(vek_data("forget data b1").status, 0);
    fs::remove_all("before");
    fs::copy("data", "before");
    if (GetParam().index != Index::whole)
      fs::copy("before/profile-store.idx", "before/profile-store.new");
    if (GetParam().index == Index::torn)
      fs::resize_file("before/profile-store.idx", 30);
    if (GetParam().index == Index::older) {
      EXPECT_EQ(vek_data("forget data c1").status, 0);
      fs::copy("data/profile-store.idx", "before/profile-store.idx",
               fs::copy_options::overwrite_existing);
    }
    restore();
    old_ = profiles();
    const Outcome outcome = vek_data(GetParam().command, "list");
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    std::istringstream report(read_text("report"));
    for (std::string line; std::getline(report, line);)
      calls_.push_back(line);
    new_ = profiles();
    files_ = files_of("data");
  }
  ~DataFaultTest() override {
    EXPECT_GT(nr_failures_, 10);
    std::printf("%d failures\n", nr_failures_);
  }

  // So many are passed over between two that are tried, or it takes minutes.
  static constexpr int step = 3;

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
    const Outcome outcome = vek_data(GetParam().command, fault);
    const bool is_killed = outcome.status > 128;
    SCOPED_TRACE(read_text("report") + outcome.errors);
    const Outcome verified = vek_data("verify data");
    EXPECT_EQ(verified.status, 0) << verified.output << verified.errors;
    const std::string now = profiles();
    EXPECT_TRUE(now == old_ || now == new_) << now;
    if (fs::exists("copied/manifest.json")) {
      const Outcome packed = vek_data("verify copied");
      EXPECT_EQ(packed.status, 0) << packed.output << packed.errors;
    } else if (fs::exists("copied")) {
      EXPECT_EQ(files_of("copied"), files_of("before"));
    }
    if (outcome.status == 0) {
      EXPECT_EQ(files_of("data"), files_);
      EXPECT_FALSE(fs::exists("data.compact") || fs::exists("copied.part"));
      return;
    }
    if (!is_killed) {
      EXPECT_NE(outcome.errors.find("vek-data: "), std::string::npos);
      EXPECT_EQ(outcome.status, 2);
    }
    check_next();
  }

  // The next call completes it, and leaves nothing over.
  void check_next() {
    fs::copy("data", "kept");
    const std::string command = GetParam().command;
    const Outcome again = vek_data(command);
    EXPECT_EQ(profiles(), new_) << again.errors;
    EXPECT_EQ(fs::exists("copied"), command.ends_with("copied"));
    EXPECT_FALSE(fs::exists("data.compact"));
    EXPECT_FALSE(fs::exists("copied.part"));
    fs::remove_all("data");
    fs::rename("kept", "data");
    EXPECT_EQ(run_vek().status, 0) << read_text("vek.log");
    EXPECT_EQ(vek_data("verify data").output, "");
  }

 private:
  std::string old_;
  std::string new_;
  std::map<std::string, std::string> files_;
  Words calls_;
  int nr_seen_ = 0;
  int nr_failures_ = 0;
};

const std::string io = std::to_string(EIO);
const std::string full = std::to_string(ENOSPC);
const std::string again = std::to_string(EINTR);
const std::string many = std::to_string(EMFILE);
const std::string invalid = std::to_string(EINVAL);

TEST_P(DataFaultTest, EveryCallFailsOnce) {
  const std::vector<std::pair<Words, Words>> calls = {
      {{"mkdir", "rename", "renameat2"}, {io, full, invalid}},
      {{"fsync", "syncfs"}, {io, full, again}},
      {{"open"}, {io, many, again}},
      {{"read"}, {io, again, "short"}},
      {{"pread"}, {io, again, "short", "nothing"}},
      {{"write"}, {io, full, again, "short", "nothing"}},
      {{"close"}, {io, again}},
      {{"stat", "lstat", "fstat", "unlink", "rmdir", "fchmod", "fchown",
        "readdir", "opendir"},
       {io}},
      {{"flock"}, {again, std::to_string(ENOLCK)}},
  };
  for (const auto &[names, ends] : calls) {
    for (const std::string &name : names)
      check_each(name, ends);
  }
}

TEST_P(DataFaultTest, KilledAtEveryChange) {
  check_each("change", {"before", "after", "torn"});
}

INSTANTIATE_TEST_SUITE_P(
    Change, DataFaultTest,
    testing::Values(
        Change{"Forget", "forget data a2 none"},
        Change{"ForgetAfterTornIndex", "forget data a2 none", Index::torn},
        Change{"Compact", "compact data"},
        Change{"CompactWithNewerCopy", "compact data", Index::older},
        Change{"Copy", "copy data copied"}, Change{"Pack", "pack . copied"}),
    [](const auto &instance) { return std::string(instance.param.name); });

// Of the directory there stays what was synced, or what chance has it.
class PowerCutTest : public SmallData {};

TEST_F(PowerCutTest, ForgetLeavesOldOrNew) {
  const std::string before = profiles();
  EXPECT_EQ(vek_data("forget data a2", "list").status, 0);
  const std::string after = profiles();
  int nr_changes = 0;
  std::istringstream report(read_text("report"));
  for (std::string line; std::getline(report, line);)
    nr_changes += line.starts_with("call change ") ? 1 : 0;
  EXPECT_GT(nr_changes, 5);
  for (int change = 1; change <= nr_changes; ++change) {
    for (const char *end : {" lost", " mixed 1", " mixed 2", " mixed 3"}) {
      restore();
      const std::string fault = "change " + std::to_string(change) + end;
      vek_data("forget data a2", fault);
      EXPECT_EQ(vek_data("verify data").status, 0) << fault;
      const std::string now = profiles();
      EXPECT_TRUE(now == before || now == after) << fault << now;
    }
  }
}

}  // namespace
}  // namespace vek::keeping

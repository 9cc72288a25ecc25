// Whole runs in which a call fails, falls short, or is the last thing that
// happens. Whatever it is: the run ends by itself and says why, or has the
// right results; and the next run has them in any case.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <functional>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "support/temporary_directory.h"

namespace vek {
namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;
using Files = std::map<std::string, std::string>;

#ifdef VEK_SANITIZE
constexpr long step = 7;  // such a run takes ten times as long
#else
constexpr long step = 1;
#endif

const std::string full = std::to_string(ENOSPC);

// ---- A small collection. Class k of a document has the words that end in k.

std::string analysis(int number, int class_id) {
  const std::string c = std::to_string(class_id);
  const std::string n = std::to_string(number);
  return "house" + c + " [car" + c + ", red" + n + "] [tree, old" + c + "] " +
         (number % 2 == 0 ? "common [rare" + n + "]" : "odd" + c) + "\n";
}

// The lines of a list for the documents from `begin` to `end` - 1.
std::string list(int begin, int end) {
  std::string lines;
  for (int i = begin; i < end; ++i) {
    const std::string name = "d" + std::to_string(i);
    write_text("files/" + name + ".txt", analysis(i, i % 3));
    lines += name + " class" + std::to_string(i % 3) +
             (i % 4 == 0 ? "/sub\n" : "\n");
  }
  return lines;
}

void write_lists(int begin, int end) {
  write_text("train", list(begin, end));
  write_text("test", list(20, 22));
}

void write_settings(const std::string &more) {
  write_text("vek.rc", "[General] selectivity 0 maxranks 2 " + more + "\n");
}

const std::string scripted = " analyser \"" VEK_SCRIPTED_ANALYSER " echo\" ";

// ---- Runs.

struct Outcome {
  int status;  // of exit(), or 1000 and the number of a signal
  std::string screen;
};

// `fault` as in failing_calls.cc, or "limit BYTES" for the length of any file;
// empty for a run that nothing happens to.
Outcome run_vek(const Words &words, const std::string &fault = "") {
  fs::remove("report");
  const pid_t pid = fork();
  if (pid == 0) {
    std::vector<char *> arguments{const_cast<char *>(VEK_PROGRAM)};
    for (const std::string &word : words)
      arguments.push_back(const_cast<char *>(word.c_str()));
    arguments.push_back(nullptr);
    setenv("VEK_FAULT_REPORT", "report", 1);
    if (!fault.empty())
      setenv("VEK_FAULT", fault.c_str(), 1);
    setenv("ASAN_OPTIONS", "verify_asan_link_order=0:detect_leaks=0", 1);
    setenv("LD_PRELOAD", VEK_FAILING_CALLS, 1);
    alarm(30);
    if (fault.starts_with("limit ")) {
      const rlim_t size = std::stoul(fault.substr(6));
      const rlimit limit = {size, size};
      setrlimit(RLIMIT_FSIZE, &limit);
    }
    if (std::freopen("screen", "w", stderr) != nullptr)
      execv(VEK_PROGRAM, arguments.data());
    std::_Exit(99);
  }
  int status = 0;
  waitpid(pid, &status, 0);
  return {WIFSIGNALED(status) ? 1000 + WTERMSIG(status) : WEXITSTATUS(status),
          read_text("screen")};
}

// The log without what depends on the machine, and without what says only how
// much of the vocabulary was there before.
std::string report_of(const std::string &log) {
  static const std::regex varying(
      "\n(memory: |creating |updating |reading |read |completing )[^\n]*");
  return std::regex_replace(log, varying, "");
}

// What a run is for.
Files results() {
  Files files;
  for (const char *name : {"rank0.dat", "rank1.dat", "scores.dat"}) {
    if (fs::exists(name))
      files[name] = read_text(name);
  }
  files["vek.log"] = report_of(read_text("vek.log"));
  return files;
}

Files data(bool with_store) {
  Files files;
  for (const auto &entry : fs::directory_iterator("data")) {
    const std::string name = entry.path();
    const bool is_store = name.find("profile-store.") != std::string::npos;
    files[name] = !is_store || with_store ? read_text(name) : "";
  }
  return files;
}

Files everything() {
  Files files = data(true);
  files.merge(results());
  return files;
}

// The first file in which two states differ.
std::string difference(const Files &left, const Files &right) {
  Files both = left;
  both.insert(right.begin(), right.end());
  for (const auto &[name, text] : both) {
    if (!left.contains(name) || !right.contains(name))
      return name + (left.contains(name) ? " is gone" : " is new");
    if (left.at(name) != right.at(name)) {
      return name + " is\n" + right.at(name) + "\nand was\n" + left.at(name);
    }
  }
  return "";
}

// ---- The runs that something happens to.

struct Scenario {
  const char *name;
  // Leaves the working directory as the run finds it.
  std::function<void()> prepare;
  Words arguments;
  bool polls = false;
  // What this run counts, it counts again when it is made again.
  bool adds = false;
};

// GoogleTest looks for it by this name. NOLINTNEXTLINE(readability-*)
void PrintTo(const Scenario &scenario, std::ostream *out) {
  *out << scenario.name;
}

void earlier_run(const std::string &settings) {
  write_settings(settings);
  write_lists(0, 5);
  ASSERT_EQ(run_vek({"."}).status, 0);
  // Nobody can analyse them again.
  for (const auto &entry : fs::directory_iterator("files"))
    fs::remove(entry);
}

void input_directory() {
  write_text("input/in/d30.txt", "");
  write_text("input/in/d31.txt", "");
  list(30, 32);
}

const std::array<Scenario, 5> scenarios = {{
    {"First",
     [] {
       write_settings(scripted + "save on");
       write_lists(0, 7);
     },
     {"."}},
    {"SecondWithoutAnalyser",
     [] {
       earlier_run("analyser \"\" save on");
       write_lists(0, 7);
       for (int i = 0; i < 5; ++i)
         fs::remove("files/d" + std::to_string(i) + ".txt");
     },
     {"."}},
    {"Polling",
     [] {
       write_settings("analyser \"\" inputdirectory \"input\"");
       write_lists(0, 5);
       input_directory();
     },
     {"-p", "."},
     true},
    {"KeptModel",
     [] {
       earlier_run("save on " + scripted + "inputdirectory \"input\"");
       input_directory();
     },
     {"-xl", "-p", "."},
     true},
    {"Incremental",
     [] {
       earlier_run("analyser \"\" save on");
       write_settings("analyser \"\" incremental on");
       write_lists(5, 8);
     },
     {"."},
     false,
     true},
}};

class FaultTest : public testing::TestWithParam<Scenario> {
 protected:
  FaultTest() {
    // The top class has the name of the directory.
    fs::create_directory("ex");
    fs::current_path("ex");
    GetParam().prepare();
    if (fs::exists("data"))
      fs::copy("data", "data before");
    restore();
    // Nothing fails, but each call is listed.
    EXPECT_EQ(run("list").status, 0);
    std::istringstream report(read_text("report"));
    for (std::string line; std::getline(report, line);)
      calls_.push_back(line);
    results_.push_back(results());
    all_ = everything();
    if (GetParam().polls)
      run("");
    data_.push_back(data(false));
    if (GetParam().adds) {
      run("");
      results_.push_back(results());
      data_.push_back(data(false));
    }
  }

  ~FaultTest() override {
    EXPECT_GT(nr_failures_, 0);
    std::printf("%ld failures\n", nr_failures_);
  }

  void restore() {
    for (const char *name : {"data", "rank0.dat", "rank0.tmp", "rank1.dat",
                             "rank1.tmp", "scores.dat", "vek.log"})
      fs::remove_all(name);
    if (fs::exists("data before"))
      fs::copy("data before", "data");
  }
  static Outcome run(const std::string &fault) {
    return run_vek(GetParam().arguments, fault);
  }

  // The calls of a kind, "NUMBER FILE" each.
  Words calls(const std::string &kind) const {
    Words found;
    for (const std::string &line : calls_) {
      if (line.starts_with("call " + kind + ' '))
        found.push_back(line.substr(kind.size() + 6));
    }
    return found;
  }

  // Each call of a kind ends in each of these ways. The lines of the log are
  // all alike, and so are the lines about memory.
  void check_each(const std::string &kind, const Words &ends,
                  bool may_be_killed) {
    long count = 0;
    for (const std::string &place : calls(kind)) {
      const bool is_log =
          place.ends_with("/vek.log") || place.ends_with("/stat");
      if (++count % (is_log ? 16 * step : step) != 0 ||
          place.find("pipe:") != std::string::npos) {
        continue;
      }
      const std::string at = place.substr(0, place.find(' '));
      for (const std::string &end : ends) {
        const std::string seed = end == "mixed" ? ' ' + at : "";
        check_failure(kind + ' ' + at + ' ' + end + seed, may_be_killed);
      }
    }
  }

  // A run that `fault` happens to ends as it should, and so does the next.
  void check_failure(const std::string &fault, bool may_be_killed) {
    restore();
    ++nr_failures_;
    const Outcome outcome = run(fault);
    const std::string hit = read_text("report");
    const std::string trace = fault + ": " + hit.substr(0, hit.find('\n')) +
                              ": status " + std::to_string(outcome.status) +
                              ": " + outcome.screen;
    if (outcome.status == 0) {
      const std::string changed = difference(all_, everything());
      // What is lost of the log or the scores ends no run, but is told.
      const bool may_change =
          changed.starts_with("vek.log") || changed.starts_with("scores");
      EXPECT_TRUE(may_change || changed.empty()) << trace << changed;
      if (may_change && !hit.ends_with(" open scores.dat\n")) {
        EXPECT_NE(outcome.screen, "") << trace << changed;
      }
    } else if (!may_be_killed) {
      EXPECT_LT(outcome.status, 1000) << trace;
      EXPECT_NE(outcome.screen, "") << trace;
    }
    if (fault.starts_with("write ") && fault.ends_with(' ' + full) &&
        hit.find("/data/profile-store.") != std::string::npos) {
      EXPECT_EQ(outcome.status, ENOSPC) << trace;
      EXPECT_NE(read_text("vek.log").find(": No space left on device"),
                std::string::npos)
          << trace;
    }
    if (outcome.status != 0)
      check_recovery(trace);
  }

  void check_recovery(const std::string &trace) {
    const Outcome outcome = run("");
    EXPECT_EQ(outcome.status, 0) << trace << '\n' << outcome.screen;
    EXPECT_EQ(outcome.screen, "") << trace;
    EXPECT_TRUE(is_one_of(results_, results())) << trace;
    // What was polled is in the vocabulary's files one run later.
    if (GetParam().polls)
      run("");
    EXPECT_TRUE(is_one_of(data_, data(false))) << trace;
  }
  static bool is_one_of(const std::vector<Files> &expected,
                        const Files &files) {
    std::string differences;
    for (const Files &one : expected) {
      differences = difference(one, files);
      if (differences.empty())
        return true;
    }
    ADD_FAILURE() << differences;
    return false;
  }

  TemporaryDirectory directory_;
  Words calls_;
  Files all_;                   // after the run that nothing happens to
  std::vector<Files> results_;  // made by it, or by it and once again
  std::vector<Files> data_;     // left by the run behind
  long nr_failures_ = 0;
};

// ---- What can happen.

const std::string io = std::to_string(EIO);
const std::string again = std::to_string(EINTR);
const std::string memory = std::to_string(ENOMEM);
const std::string many = std::to_string(EMFILE);

// Calls, and how each of them ends.
const std::vector<std::pair<Words, Words>> failing_calls = {
    {{"lseek", "syncfs", "fstat", "unlink", "truncate", "readdir", "getcwd"},
     {io}},
    {{"flock"}, {std::to_string(ENOLCK), again}},
    {{"mkdir", "rename", "ftruncate"}, {io, full}},
    {{"fsync", "fallocate"}, {io, full, again}},
    {{"open"}, {io, many, again}},
    {{"read"}, {io, again, "short"}},
    {{"pread"}, {io, again, "short", "nothing"}},
    {{"write"}, {io, full, again, "short", "nothing"}},
    {{"close"}, {io, again}},
    {{"stat"}, {io, memory}},
    {{"fork"}, {std::to_string(EAGAIN), memory}},
    {{"poll"}, {again, memory}},
    {{"opendir"}, {many, io}},
    {{"pipe2"}, {many}},
};

TEST_P(FaultTest, EveryCallFailsOnce) {
  for (const auto &[names, ends] : failing_calls) {
    for (const std::string &name : names)
      check_each(name, ends, false);
  }
}

TEST_P(FaultTest, KilledAtEveryChangeOfAFile) {
  check_each("change", {"after", "torn"}, true);
}

TEST_P(FaultTest, PowerIsCutAtEveryChangeOfAFile) {
  check_each("change", {"lost", "mixed"}, true);
}

TEST_P(FaultTest, NoFileCanGrowBeyondAnySize) {
  for (int size = 300; size < 3000; size += 100 * step)
    check_failure("limit " + std::to_string(size), false);
}

#ifndef VEK_SANITIZE
TEST_P(FaultTest, MemoryEndsAnywhere) {
  const Words counts = calls("malloc");
  ASSERT_EQ(counts.size(), 1U);
  const long nr_allocations = std::stol(counts.front());
  for (long at = 1; at <= nr_allocations; at += at < 100 ? 1 : 29) {
    for (const char *call : {"malloc ", "memory "})
      check_failure(call + std::to_string(at) + " 12", false);
  }
}
#endif

// Power cuts go through `data` alone.
TEST_P(FaultTest, RankFilesAreOnTheDiskBeforeTheyGetTheirName) {
  ++nr_failures_;
  bool is_synced = false;
  for (const std::string &line : calls_) {
    if (line.starts_with("call fsync ") && line.find("/rank") != line.npos)
      is_synced = true;
    if (line.starts_with("call rename ") && line.find("/rank") != line.npos) {
      EXPECT_TRUE(std::exchange(is_synced, false)) << line;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Run, FaultTest, testing::ValuesIn(scenarios),
                         [](const auto &instance) {
                           return std::string(instance.param.name);
                         });

}  // namespace
}  // namespace vek

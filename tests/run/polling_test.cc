#include "run/polling.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "classes/classtab.h"
#include "evaluation/ranks.h"
#include "intake/analyser.h"
#include "params/params.h"
#include "run/helpers.h"
#include "store/database.h"
#include "support/child_run.h"
#include "support/messages.h"
#include "support/temporary_directory.h"
#include "vocabulary/atomtab.h"
#include "vocabulary/termtab.h"

namespace vek {
namespace {

using std::filesystem::exists;

// A model for the two words "ball" and "cash": one class likes each.
void make_model() {
  class_table.enter("ex", 0);
  const std::uint32_t sport = class_table.enter_path("sport/tennis", 0);
  const std::uint32_t earn = class_table.enter_path("earn", 0);
  class_table.get_data(0).nr_docs = 9;
  class_table.get_data(1).nr_docs = 9;
  const std::uint32_t ball =
      term_table.enter(atom_table.enter("ball"), EmptyAtom);
  const std::uint32_t cash =
      term_table.enter(atom_table.enter("cash"), EmptyAtom);
  for (const std::uint32_t term : {ball, cash}) {
    class_table.get_profile(0)[term].df = 3;
    class_table.get_profile(1)[term].df = 3;
  }
  class_table.get_profile(sport)[ball].pos_weight = 1.5;
  class_table.get_profile(earn)[cash].pos_weight = 2.25;
}

class Polling : public testing::Test {
 protected:
  Polling() {
    params.set_algorithm(Algorithm::rocchio);
    // The weights of a document add up to 1.
    params.set_normalize(Normalize::linear);
    std::filesystem::create_directories("examples");
    std::filesystem::create_directories("input/in");
  }

  // A document to be polled, whose text lies where all texts lie.
  static void put(const std::string &name, const std::string &text) {
    write_text("input/in/" + name + ".txt", "not looked at");
    write_text("files/" + name + ".txt", text);
  }
  static RunResult run(const std::function<void()> &body) {
    return run_in_child([&] {
      analyser.open("");
      data_base.open("data");
      data_base.read(false);
      make_model();
      errno = 0;
      body();
    });
  }
  static RunResult poll() {
    return run([] { poll_directory("input"); });
  }

  TemporaryDirectory directory_;
};

TEST_F(Polling, TakesTheNamesOfTheDirectoryInItsOrder) {
  for (const std::string name : {"a", "b", "z", "x.txt", "y.y", ".hidden"})
    put(name, name);
  // Of a name that ends in the suffix, which is not doubled.
  write_text("files/x.txt", "x");
  std::filesystem::create_directory("input/in/dir.txt");
  write_text("files/dir.txt", "dir");
  for (const std::string name : {".txt", "plain", "upper.TXT", "a.txt~"})
    write_text("input/in/" + name, "");
  std::string expected;
  Directory entries("input/in");
  for (std::string entry; entries.read(entry);) {
    for (const char *name : {"a", "b", "z", "x.txt", "y.y", "dir"}) {
      if (entry == std::string(name) + ".txt")
        expected += std::string(name) + '\n';
    }
  }
  const RunResult result = run([] {
    std::vector<std::string> names;
    collect_input_documents("input/in", names);
    std::string text;
    for (const std::string &name : names)
      text += name + (data_base.exists(name) ? "\n" : " is not stored\n");
    write_text("names", text);
  });
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(read_text("names"), expected);
}

TEST_F(Polling, LeavesACompleteRankFile) {
  put("a", "ball cash ball ball");
  set_verbosity(4);
  const RunResult result = poll();
  EXPECT_EQ(read_text("examples/rank0.dat"), "a.txt sport/tennis:1.125\n");
  EXPECT_FALSE(exists("examples/rank0.tmp"));
  EXPECT_TRUE(exists("input/in/a.txt"));
  EXPECT_EQ(result.log,
            "creating data directory `data'\n"
            "polling directory `input/in'\n"
            "profiling document `a'\n"
            "collected input document `a'\n"
            "writing output to file `examples/rank0.tmp'\n"
            "classified document `a' in class `tennis' (significant)\n"
            "renaming output file to `examples/rank0.dat'\n");
  EXPECT_EQ(result.status, 0);
}

TEST_F(Polling, KnownDocumentsAreClassifiedButNotAnalysedAgain) {
  put("a", "cash");
  set_verbosity(0);
  poll();
  std::filesystem::remove("files/a.txt");
  write_text("examples/rank0.dat", "of an earlier run, and longer\n");
  const RunResult result = poll();
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.screen, "");
  EXPECT_EQ(read_text("examples/rank0.dat"), "a.txt earn:2.25\n");
}

TEST_F(Polling, RankingsFollowTheLimits) {
  put("a", "ball cash");
  set_verbosity(0);
  const struct {
    std::uint32_t min_ranks, max_ranks;
    const char *line;
  } cases[] = {
      {1, 1, "a.txt earn:1.125\n"},
      {0, 9, "a.txt earn:1.125\n"},
      {2, 9, "a.txt earn:1.125 sport/tennis:0.75\n"},
      {5, 2, "a.txt earn:1.125 sport/tennis:0.75\n"},
      {0, 0, "a.txt \n"},
  };
  for (const auto &[min_ranks, max_ranks, line] : cases) {
    params.set_min_ranks(min_ranks);
    params.set_max_ranks(max_ranks);
    poll();
    EXPECT_EQ(read_text("examples/rank0.dat"), line);
  }
}

TEST_F(Polling, NumbersGoOnFromTheRankFilesBefore) {
  write_text("input/in/no document", "");
  set_verbosity(0);
  const RunResult result = run([] {
    std::array<char, 16> test_run;
    next_rank_file_name(test_run.data(), test_run.size());
    // Nothing to classify: no file, and no number used up.
    poll_directory("input");
    put("a", "cash");
    poll_directory("input");
    poll_directory("input");
  });
  EXPECT_EQ(result.status, 0);
  EXPECT_FALSE(exists("examples/rank0.dat"));
  EXPECT_EQ(read_text("examples/rank1.dat"), "a.txt earn:2.25\n");
  EXPECT_EQ(read_text("examples/rank2.dat"), "a.txt earn:2.25\n");
}

TEST_F(Polling, WithoutExamplesTheFileGoesToTheWorkingDirectory) {
  put("a", "cash");
  EXPECT_EQ(poll().status, 0);
  EXPECT_EQ(read_text("rank0.dat"), "a.txt earn:2.25\n");
}

TEST_F(Polling, DirectoryThatIsNoneEndsTheRun) {
  std::filesystem::remove("input/in");
  const RunResult missing = poll();
  EXPECT_EQ(missing.screen,
            "ERROR: cannot find directory `input/in'\n"
            "aborting... (errno = 2)\n");
  EXPECT_EQ(missing.status, ENOENT);
  write_text("input/in", "");
  EXPECT_EQ(poll().screen,
            "ERROR: cannot find directory `input/in'\naborting...\n");
  const RunResult closed = run([] {
    std::vector<std::string> names;
    collect_input_documents("input/in", names);
  });
  EXPECT_EQ(closed.screen,
            "ERROR: cannot open directory `input/in'\n"
            "aborting... (errno = 20)\n");
  EXPECT_EQ(closed.status, ENOTDIR);
}

TEST_F(Polling, MissingTextEndsTheRunBeforeAnythingIsWritten) {
  put("a", "cash");
  put("b", "cash");
  std::filesystem::remove("files/b.txt");
  set_verbosity(0);
  const RunResult result = poll();
  EXPECT_EQ(result.screen,
            "ERROR: Cannot open file \"files/b.txt\" for analysing stage\n"
            "aborting... (errno = 2)\n");
  EXPECT_EQ(result.status, ENOENT);
  EXPECT_TRUE(std::filesystem::is_empty("examples"));
}

TEST_F(Polling, FailureNeverLeavesAFinishedFile) {
  put("a", "cash");
  set_verbosity(0);
  const std::string temporary = "examples/rank0.tmp";
  std::filesystem::create_directory(temporary);
  RunResult result = poll();
  EXPECT_EQ(result.screen, "ERROR: cannot open file `" + temporary +
                               "' for writing\naborting... (errno = 21)\n");
  std::filesystem::remove(temporary);

  std::filesystem::create_symlink("/dev/full", temporary);
  result = poll();
  EXPECT_EQ(result.screen, "aborting... (errno = 28)\n");
  EXPECT_TRUE(exists(temporary));
  EXPECT_FALSE(exists("examples/rank0.dat"));
  std::filesystem::remove(temporary);

  std::filesystem::create_directories("examples/rank0.dat/full");
  result = poll();
  EXPECT_EQ(result.screen, "ERROR: cannot rename file `" + temporary +
                               "' to `examples/rank0.dat'\n"
                               "aborting... (errno = 21)\n");
  EXPECT_EQ(result.status, EISDIR);
  EXPECT_EQ(read_text(temporary), "a.txt earn:2.25\n");
}

}  // namespace
}  // namespace vek

#include "run/polling.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "classes/classtab.h"
#include "intake/analyser.h"
#include "run/helpers.h"
#include "store/database.h"
#include "support/child_run.h"
#include "support/messages.h"
#include "support/temporary_directory.h"

namespace vek {
namespace {

using std::filesystem::exists;

class Polling : public testing::Test {
 protected:
  Polling() {
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
      errno = 0;
      body();
    });
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
    for (const std::string name : {"a", "b", "z", "x.txt", "y.y", "dir"})
      expected += entry == name + ".txt" ? name + '\n' : "";
  }
  const RunResult result = run([] {
    std::vector<std::string> names;
    collect_input_documents("input/in", names);
    for (const std::string &name : names)
      log_always(5, name + (data_base.exists(name) ? "" : " is not stored"));
  });
  EXPECT_EQ(result.status, 0);
  EXPECT_TRUE(result.log.ends_with(expected)) << result.log;
}

TEST_F(Polling, DirectoryThatIsNoneEndsTheRun) {
  write_text("input/file", "");
  const RunResult closed = run([] {
    std::vector<std::string> names;
    collect_input_documents("input/file", names);
  });
  EXPECT_EQ(closed.screen,
            "ERROR: cannot open directory `input/file'\n"
            "aborting... (errno = 20)\n");
  EXPECT_EQ(closed.status, ENOTDIR);
}

TEST_F(Polling, FailureNeverLeavesAFinishedFile) {
  put("a", "word");
  class_table.enter("ex", 0);
  class_table.enter("son", 0);
  set_verbosity(0);
  std::filesystem::create_symlink("/dev/full", "examples/rank0.tmp");
  EXPECT_EQ(run([] { poll_directory("input"); }).screen,
            "aborting... (errno = 28)\n");
  EXPECT_TRUE(exists("examples/rank0.tmp"));
  EXPECT_FALSE(exists("examples/rank0.dat"));
}

}  // namespace
}  // namespace vek

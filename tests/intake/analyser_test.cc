#include "intake/analyser.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "support/temporary_directory.h"

namespace vek {
namespace {

class AnalyserTest : public testing::Test {
 protected:
  AnalyserTest() {
    // A name without a slash is a file of the working directory.
    std::filesystem::create_symlink(VEK_SCRIPTED_ANALYSER, "scripted");
    write_text("files/a.txt", "house [car, red]");
    write_text("files/b.txt", "tree");
    mkfifo("signal", 0600);
    mkfifo("go on", 0600);
  }

  // Lets an analyser that waits go on, and waits for its word that it has got
  // to a place of its script.
  static void go_on() {
    std::ofstream("go on").close();
    EXPECT_EQ(std::ifstream("signal").get(), '!');
  }

  // A run that asks for these documents ends with a failure and tells this, a
  // regular expression.
  void expect_failure(const std::string &command,
                      const std::vector<std::string> &names,
                      const std::string &told) {
    const auto is_failure = [](int status) {
      return WIFEXITED(status) && WEXITSTATUS(status) != 0;
    };
    EXPECT_EXIT(
        {
          alarm(60);
          analyser_.open(command, "files");
          for (const std::string &name : names)
            analyser_.process(name);
        },
        is_failure, told)
        << command;
  }

  TemporaryDirectory directory_;
  Analyser analyser_;
};

TEST_F(AnalyserTest, AsksByPathAndHearsTheAnswerUpToItsMark) {
  const struct {
    std::string command;
    std::string text;
    std::string answer;
  } cases[] = {{"scripted", "", ""},
               {"scripted bytes", "one by one\n", "one by one\n"},
               {"scripted behind", "a house", "a house"},
               {"scripted huge", "300000", std::string(300000, 'x')},
               // Without a command the file holds the analysis.
               {"", "house [car, red]", "house [car, red]"},
               {"", std::string("tree\0 hidden", 12), "tree"}};
  for (const auto &[command, text, answer] : cases) {
    write_text("files/a.txt", text);
    analyser_.open(command, "files");
    EXPECT_TRUE(analyser_.process("a") == answer) << command;
    // The first answer has left nothing behind, and a suffix is not doubled.
    EXPECT_TRUE(analyser_.process("a.txt") == answer) << command;
    analyser_.close();
  }
}

TEST_F(AnalyserTest, WarnsOfATextThatIsCut) {
  testing::internal::CaptureStderr();
  analyser_.open("scripted nul", "files");
  EXPECT_EQ(analyser_.process("b"), "tree");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "WARNING: analysis of document `b' is cut at a NUL byte\n");
}

TEST_F(AnalyserTest, ThatFailsEndsTheRun) {
  const std::string not_run = "^ERROR: analyser process execution failed: ";
  // No search on PATH, hence no such program; and a directory.
  expect_failure("cat", {"a"}, not_run + "No such file or directory\n");
  expect_failure("files x", {"a"}, not_run + "Permission denied\n");
  for (const std::string script : {"die-within", "close"}) {
    expect_failure("scripted " + script, {"b", "a"},
                   "^ERROR: analyser process `scripted " + script +
                       "' failed on document `b': it ended before its answer "
                       "was complete\n");
  }
}

TEST_F(AnalyserTest, DocumentThatCannotBeReadEndsTheRun) {
  ASSERT_EQ(mknod("files/socket.txt", S_IFSOCK | 0600, 0), 0);
  ASSERT_EQ(mkfifo("files/pipe.txt", 0600), 0);
  write_text("files/two\nlines.txt", "");
  write_text("files/big.txt", "");
  std::filesystem::resize_file("files/big.txt", std::uintmax_t{1} << 40);
  const struct {
    const char *command;
    const char *name;
    std::string message;
  } cases[] = {
      {"", "socket", "socket: No such device or address"},
      {"", "pipe", "pipe: Illegal seek"},
      {"", "big", "big: File too large"},
      // It would be taken for two requests.
      {"scripted", "two\nlines",
       "Cannot open file \"files/two\nlines.txt\" for analysing stage"}};
  for (const auto &[command, name, message] : cases)
    expect_failure(command, {"b", name}, "^ERROR: " + message + "\naborting");
}

TEST_F(AnalyserTest, MayEndAnAnswerWithALateLineEndOnly) {
  for (const std::string script : {"late-line-end", "late-text"}) {
    const bool is_text = script == "late-text";
    EXPECT_EXIT(
        {
          alarm(60);
          analyser_.open("scripted " + script, "files");
          for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(analyser_.process("b"), "tree");
            go_on();
          }
          std::exit(0);
        },
        testing::ExitedWithCode(is_text ? EINVAL : 0),
        is_text ? "`b': it writes without being asked\n" : "^$");
  }
}

TEST_F(AnalyserTest, InputEndsWithTheRunWhichDoesNotWait) {
  alarm(60);
  analyser_.open("scripted lingers", "files");
  EXPECT_EQ(analyser_.process("b"), "tree");
  analyser_.close();
  go_on();
}

}  // namespace
}  // namespace vek

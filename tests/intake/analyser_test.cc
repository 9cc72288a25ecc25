#include "intake/analyser.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "support/analyser_signal.h"
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
  } cases[] = {
      {"scripted", "", ""},
      {"scripted path", "", "files/a.txt"},
      {"scripted bytes", "one by one\n", "one by one\n"},
      {"scripted behind", "a house", "a house"},
      {"scripted huge", "300000", std::string(300000, 'x')},
      // Split at every blank.
      {"scripted arguments", "", ""},
      {"scripted arguments a  'b\tc' ", "", "<a><><'b\tc'><>"},
      {"scripted arguments 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19", "",
       "<1><2><3><4><5><6><7><8><9><10><11><12><13><14><15><16><17><18><19>"},
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
  for (const std::string command : {"cat", " scripted"})
    expect_failure(command, {"a"}, not_run + "No such file or directory\n");
  expect_failure("files x", {"a"}, not_run + "Permission denied\n");
  // Each is asked for "b", then for "a", and fails at one of them.
  const std::string ended = "it ended before its answer was complete\n";
  const struct {
    std::string script;
    std::string failing;
    std::string reason;  // empty if either end of the pipe may tell first
  } cases[] = {{"die-before", "b", ended},
               {"die-within", "b", ended},
               {"close", "b", ended},
               {"exit", "b", ""},
               {"die-after", "a", ""}};
  for (const auto &[script, failing, reason] : cases) {
    expect_failure("scripted " + script, {"b", "a"},
                   "^ERROR: analyser process `scripted " + script +
                       "' failed on document `" + failing + "': " + reason);
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
      {"scripted", "gone",
       "Cannot open file \"files/gone.txt\" for analysing stage"},
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
          AnalyserSignal signal;
          analyser_.open("scripted " + script, "files");
          for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(analyser_.process("b"), "tree");
            signal.go_on();
            signal.wait();
          }
          std::exit(0);
        },
        testing::ExitedWithCode(is_text ? EINVAL : 0),
        is_text ? "`b': it writes without being asked\n" : "^$");
  }
}

TEST_F(AnalyserTest, InputEndsWithTheRunWhichDoesNotWait) {
  AnalyserSignal signal;
  analyser_.open("scripted lingers", "files");
  EXPECT_EQ(analyser_.process("b"), "tree");
  analyser_.close();
  signal.go_on();
  EXPECT_TRUE(signal.wait());
}

TEST_F(AnalyserTest, FileDirectoryIsMadeIfItsParentIsThere) {
  analyser_.open("", "new");
  EXPECT_TRUE(std::filesystem::is_directory("new"));
  EXPECT_EXIT(analyser_.open("", "no/such"), testing::ExitedWithCode(ENOENT),
              "^ERROR: could not create directory `no/such'\naborting");
}

TEST_F(AnalyserTest, ProcessInheritsItsStandardStreamsOnly) {
  // What the test itself was started with goes through.
  std::string expected;
  for (int fd = 3; fd < 64; ++fd) {
    const int flags = fcntl(fd, F_GETFD);
    if (flags >= 0 && (flags & FD_CLOEXEC) == 0)
      expected += "descriptor " + std::to_string(fd) + ' ';
  }
  std::signal(SIGPIPE, SIG_DFL);
  analyser_.open("scripted inheritance", "files");
  EXPECT_EQ(analyser_.process("a"), expected + "SIGPIPE kills");
}

}  // namespace
}  // namespace vek

#include "intake/analyser.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
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

  // A run that asks for these documents ends with this status and tells this, a
  // regular expression, behind "ERROR: " and before the last line.
  void expect_failure(const std::string &command,
                      const std::vector<std::string> &names, int status,
                      const std::string &told,
                      std::chrono::seconds limit = {}) {
    EXPECT_EXIT(
        {
          alarm(60);
          analyser_.open(command, "files", limit);
          for (const std::string &name : names)
            analyser_.process(name);
        },
        testing::ExitedWithCode(status),
        "^ERROR: " + told +
            "\naborting... \\(errno = " + std::to_string(status) + "\\)\n$")
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
    analyser_.open(command, "files", std::chrono::seconds(30));
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
  // No search on PATH, hence no such program; and a directory.
  const std::pair<std::string, int> commands[] = {{"cat", ENOENT},
                                                  {"files", EACCES}};
  for (const auto &[command, number] : commands) {
    expect_failure(
        command, {"a"}, number,
        std::string("analyser process execution failed: ") +
            std::strerror(number) +
            "\naborting... \\(errno = " + std::to_string(number) +
            "\\)\nERROR: give its full path with `analyser' in vek.rc; it is "
            "not looked for on the PATH\nERROR: analyser process `" +
            command + "' failed on document `a': it could not be started");
  }
  const std::pair<std::string, std::string> scripts[] = {
      {"die-within", "the analyser ended with exit status 3"},
      {"killed", "the analyser was ended by signal SIGKILL"},
      {"close", "the analyser has closed its output and still runs"}};
  for (const auto &[script, end] : scripts) {
    expect_failure("scripted " + script, {"b", "a"}, EPIPE,
                   "analyser process `scripted " + script +
                       "' failed on document `b': it ended before its answer "
                       "was complete\nERROR: " +
                       end);
  }
  expect_failure("scripted asked", {"b"}, ETIMEDOUT,
                 "analyser process `scripted asked' failed on document `b': no "
                 "answer within 1 second, the limit set by `analysertimeout'",
                 std::chrono::seconds(1));
}

// Also one that has gone before it is asked, which is a matter of luck.
TEST_F(AnalyserTest, ThatHasGoneFailsInTheSameWords) {
  EXPECT_EXIT(
      {
        analyser_.open("/bin/true", "files");
        // The last process that could be waited for, and it stays so.
        siginfo_t info = {};
        waitid(P_ALL, 0, &info, WEXITED | WNOWAIT);
        analyser_.process("a");
      },
      testing::ExitedWithCode(EPIPE),
      "`a': it ended before its answer was complete\nERROR: the analyser ended "
      "with exit status 0\n");
}

TEST_F(AnalyserTest, DocumentThatCannotBeReadEndsTheRun) {
  ASSERT_EQ(mknod("files/socket.txt", S_IFSOCK | 0600, 0), 0);
  ASSERT_EQ(mkfifo("files/pipe.txt", 0600), 0);
  std::filesystem::create_directory("files/directory.txt");
  std::filesystem::create_symlink("loop.txt", "files/loop.txt");
  write_text("files/two\nlines.txt", "");
  write_text("files/big.txt", "");
  std::filesystem::resize_file("files/big.txt", std::uintmax_t{1} << 40);
  const struct {
    const char *command;
    const char *name;
    int status;
    std::string message;
  } cases[] = {{"", "socket", ENXIO, "socket: No such device or address"},
               {"", "pipe", EINVAL, "pipe: no regular file"},
               {"", "directory", EISDIR, "directory: no regular file"},
               {"", "big", EFBIG, "big: File too large"},
               {"scripted", "pipe", EINVAL, ""},
               {"scripted", "directory", EISDIR, ""},
               {"scripted", "loop", ELOOP, ""},
               {"scripted", "none", ENOENT, ""},
               {"", "none", ENOENT, ""},
               // It would be taken for two requests.
               {"scripted", "two\nlines", EINVAL, ""}};
  for (const auto &[command, name, status, message] : cases) {
    const std::string refusal = "Cannot open file \"files/" +
                                std::string(name) +
                                ".txt\" for analysing stage";
    expect_failure(command, {"b", name}, status,
                   message.empty() ? refusal : message);
  }
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

#include "intake/analyser.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "params/params.h"
#include "run/helpers.h"
#include "store/database.h"
#include "support/child_run.h"
#include "support/messages.h"
#include "support/temporary_directory.h"
#include "vocabulary/termtab.h"

namespace vek {
namespace {

// Waits for the analyser's word that it has got to a place of its script, and
// lets one go on that waits itself.
class Signal {
 public:
  Signal() {
    mkfifo("signal", 0600);
    mkfifo("go on", 0600);
    // With an end for writing too, so that it never seems to be closed.
    fd_ = ::open("signal", O_RDWR | O_CLOEXEC);
  }
  ~Signal() { ::close(fd_); }
  bool wait() {
    pollfd waiting{fd_, POLLIN, 0};
    char byte = 0;
    return poll(&waiting, 1, 60'000) == 1 && ::read(fd_, &byte, 1) == 1;
  }
  static void go_on() { ::close(::open("go on", O_WRONLY)); }

 private:
  int fd_;
};

class AnalyserTest : public testing::Test {
 protected:
  AnalyserTest() {
    // A name without a slash is a file of the working directory.
    std::filesystem::create_symlink(VEK_SCRIPTED_ANALYSER, "scripted");
    write_text("files/a.txt", "house [car, red]");
    write_text("files/b.txt", "tree");
  }

  static void open_all(const std::string &command) {
    analyser.open(command);
    data_base.open("data");
    data_base.read(false);
  }
  // A run that profiles these documents.
  static RunResult profile(const std::string &command,
                           const std::vector<std::string> &names) {
    return run_in_child([&] {
      open_all(command);
      for (const std::string &name : names)
        profile_document(name);
    });
  }
  // Such a run ends with a failure, and what it tells begins so. All of it is
  // returned.
  static std::string check_failure(const std::string &command,
                                   const std::vector<std::string> &names,
                                   const std::string &begin) {
    const RunResult run = profile(command, names);
    EXPECT_EQ(run.screen.substr(0, begin.size()), begin);
    EXPECT_NE(run.status, 0) << begin;
    EXPECT_LT(run.status, 1000) << begin;
    return run.screen;
  }
  // Which of the documents "a" and "b" are in the store.
  static std::string stored() {
    return run_in_child([] {
             open_all("");
             std::string names;
             for (const char *name : {"a", "b"}) {
               if (data_base.exists(name))
                 names += name;
             }
             log_always(1, names);
           })
        .log;
  }

  TemporaryDirectory directory_;
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
    analyser.open(command);
    EXPECT_TRUE(analyser.process("a") == answer) << command;
    // The first answer has left nothing behind, and a suffix is not doubled.
    EXPECT_TRUE(analyser.process("a.txt") == answer) << command;
    analyser.close();
  }
}

TEST_F(AnalyserTest, WarnsOfATextThatIsCut) {
  std::filesystem::create_directories("files/d.txt/full");
  // What has no size has no text either.
  std::filesystem::create_symlink("/proc/self/status", "files/proc.txt");
  // Some file systems give a directory no size.
  const std::string size = std::to_string(file_size("files/d.txt"));
  EXPECT_EQ(screen([] {
              analyser.open("");
              EXPECT_EQ(analyser.process("d"), "");
              EXPECT_EQ(analyser.process("proc"), "");
              analyser.open("scripted nul");
              EXPECT_EQ(analyser.process("b"), "tree");
            }),
            (size == "0" ? ""
                         : "WARNING: Analyser::process: read 0 bytes, file "
                           "size is " +
                               size + " bytes from d\n") +
                "WARNING: analysis of document `b' is cut at a NUL byte\n");
}

TEST_F(AnalyserTest, ProgramThatCannotRunIsReportedOnceByItsProcess) {
  profile("", {"b"});
  const std::string index = read_text("data/profile-store.idx");
  const std::string opening = "ERROR: analyser process execution failed: ";
  const std::string none =
      "No such file or directory\naborting... (errno = 2)\n";
  // No search on PATH, hence no such program; and a directory.
  const std::pair<std::string, std::string> cases[] = {
      {"cat", none},
      {" scripted", none},
      {"files x", "Permission denied\naborting... (errno = 13)\n"}};
  for (const auto &[command, reason] : cases) {
    const std::string text =
        check_failure(command, {"a"},
                      opening + reason + "ERROR: analyser process `" + command +
                          "' failed on document `a': ");
    EXPECT_EQ(text.find("execution", opening.size()), std::string::npos);
  }
  EXPECT_EQ(read_text("data/profile-store.idx"), index);
  EXPECT_EQ(stored(), "b\n");
}

// Each is asked for "b", then for "a", and fails at one of them.
TEST_F(AnalyserTest, ThatStopsAnsweringEndsTheRun) {
  const char *const ended = "it ended before its answer was complete";
  const struct {
    std::string script;
    std::string failing;
    std::string reason;  // empty if either end of the pipe may tell first
    const char *stored;
  } cases[] = {{"die-before", "b", ended, "\n"},
               {"die-within", "b", ended, "\n"},
               {"close", "b", ended, "\n"},
               {"exit", "b", "", "\n"},
               {"die-after", "a", "", "b\n"}};
  for (const auto &[script, failing, reason, in_store] : cases) {
    std::filesystem::remove_all("data");
    check_failure("scripted " + script, {"b", "a"},
                  "ERROR: analyser process `scripted " + script +
                      "' failed on document `" + failing + "': " + reason);
    EXPECT_EQ(stored(), in_store) << script;
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
    check_failure(command, {"b", name}, "ERROR: " + message + "\naborting...");
  EXPECT_EQ(stored(), "b\n");
}

TEST_F(AnalyserTest, ThatIsDeafIsABrokenPipe) {
  const RunResult run = run_in_child([] {
    Signal signal;
    analyser.open("scripted deaf");
    signal.wait();
    analyser.process("a");
  });
  EXPECT_EQ(run.screen,
            "ERROR: analyser process `scripted deaf' failed on document `a': "
            "Broken pipe\naborting... (errno = 32)\n");
  EXPECT_EQ(run.status, EPIPE);
}

TEST_F(AnalyserTest, MayEndAnAnswerWithALateLineEndOnly) {
  const std::pair<std::string, std::string> cases[] = {
      {"scripted late-line-end", "tree\ntree\n"},
      {"scripted late-text",
       "tree\nERROR: analyser process `scripted late-text' failed on document "
       "`b': it writes without being asked\n"}};
  for (const auto &[command, begin] : cases) {
    const RunResult run = run_in_child([&, command = command] {
      Signal signal;
      analyser.open(command);
      for (int i = 0; i < 2; ++i) {
        log_always(1, analyser.process("b"));
        signal.go_on();
        signal.wait();
      }
    });
    EXPECT_EQ(run.log.substr(0, begin.size()), begin);
  }
}

TEST_F(AnalyserTest, InputEndsWithTheRunWhichDoesNotWait) {
  Signal signal;
  run_in_child([] { analyser.open("scripted ends"); });
  EXPECT_TRUE(signal.wait());
  analyser.open("scripted lingers");
  EXPECT_EQ(analyser.process("b"), "tree");
  analyser.close();
  signal.go_on();
  EXPECT_TRUE(signal.wait());
}

TEST_F(AnalyserTest, FileDirectoryIsMadeIfItsParentIsThere) {
  params.set_file_directory("new");
  analyser.open("");
  EXPECT_TRUE(std::filesystem::is_directory("new"));
  params.set_file_directory("no/such");
  check_failure("", {},
                "ERROR: could not create directory `no/such'\n"
                "aborting... (errno = 2)\n");
}

TEST_F(AnalyserTest, ProfileHoldsTheTermsInTheOrderOfTheBag) {
  write_text("files/a.txt", "[car, red] house [ , x ] [car, old] [car] house");
  const RunResult run = run_in_child([] {
    open_all("scripted");
    for (const DocProfileEntry &entry : *document_profile("a")) {
      logf_always(5, "%u,%d:%ux%u", term_table.head(entry.term),
                  static_cast<int>(term_table.mod(entry.term)), entry.term,
                  entry.freq);
    }
  });
  // An error costs what it spoils and no more.
  EXPECT_EQ(run.log,
            "ERROR: file a: line 1: before `,': parse error: head expected\n"
            "0,1:0x1\n0,4:1x1\n0,-1:2x1\n2,-1:3x2\n");
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
  log_file.open("vek.log");
  analyser.open("scripted inheritance");
  EXPECT_EQ(analyser.process("a"), expected + "SIGPIPE kills");
}

}  // namespace
}  // namespace vek

#include "intake/analyser.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <initializer_list>
#include <string>
#include <vector>

#include "params/params.h"
#include "store/database.h"
#include "support/child_run.h"
#include "support/messages.h"
#include "support/temporary_directory.h"
#include "vocabulary/termtab.h"

namespace vek {
namespace {

using std::filesystem::exists;

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

  // A run that profiles these documents.
  static RunResult profile(const std::string &command,
                           std::initializer_list<const char *> names) {
    return run_in_child([&] {
      open_all(command);
      for (const char *name : names)
        profile_document(name);
    });
  }
  static void open_all(const std::string &command) {
    analyser.open(command);
    data_base.open("data");
    data_base.read(false);
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
    const char *script;
    const char *text;
    std::string answer;
  } cases[] = {
      {"echo", "a house", "a house"},
      {"echo", "", ""},
      {"path", "", "files/a.txt"},
      {"bytes", "one by one\n", "one by one\n"},
      {"behind", "a house", "a house"},
      {"huge", "300000", std::string(300000, 'x')},
  };
  for (const auto &[script, text, answer] : cases) {
    SCOPED_TRACE(script);
    write_text("files/a.txt", text);
    analyser.open("scripted " + std::string(script));
    EXPECT_TRUE(analyser.process("a") == answer);
    // The first answer has left nothing behind.
    EXPECT_TRUE(analyser.process("a.txt") == answer);
    analyser.close();
  }
}

TEST_F(AnalyserTest, CommandIsSplitAtEveryBlank) {
  const struct {
    std::string command;
    std::string arguments;
  } cases[] = {
      {"scripted arguments", ""},
      {"scripted arguments a  'b\tc'", "<a><><'b\tc'>"},
      {"scripted arguments a ", "<a><>"},
      {"scripted arguments 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19",
       "<1><2><3><4><5><6><7><8><9><10><11><12><13><14><15><16><17><18><19>"},
  };
  for (const auto &[command, arguments] : cases) {
    analyser.open(command);
    EXPECT_EQ(analyser.process("a"), arguments);
    analyser.close();
  }
}

TEST_F(AnalyserTest, CommandOfMoreThanTwentyArgumentsIsRefused) {
  const RunResult run = profile("scripted" + std::string(21, ' '), {"a"});
  EXPECT_EQ(run.screen,
            "ERROR: analyser command has 21 arguments, at most 20 are "
            "possible\naborting...\n");
  EXPECT_EQ(run.status, 1);
  EXPECT_FALSE(exists("data"));
}

TEST_F(AnalyserTest, ProgramThatCannotRunIsReportedOnceByItsProcess) {
  profile("", {"b"});
  const std::string index = read_text("data/profile-store.idx");
  const struct {
    const char *command;
    const char *reason;
    int code;
  } cases[] = {
      // No search on PATH, hence no such program.
      {"cat", "No such file or directory", ENOENT},
      {" scripted", "No such file or directory", ENOENT},
      {"files x", "Permission denied", EACCES},
  };
  for (const auto &[command, reason, code] : cases) {
    const RunResult run = run_in_child([command = command] {
      log_always(1, "said before");
      open_all(command);
      profile_document("a");
    });
    const std::string message =
        std::string("ERROR: analyser process execution failed: ") + reason;
    const std::string abort_line =
        "aborting... (errno = " + std::to_string(code) + ")\n";
    const std::string failure = "ERROR: analyser process `" +
                                std::string(command) +
                                "' failed on document `a': ";
    EXPECT_TRUE(run.log.starts_with("said before\n" + message +
                                    "\nERROR: " + abort_line + failure))
        << run.log;
    EXPECT_TRUE(run.screen.starts_with(message + "\n" + abort_line + failure))
        << run.screen;
    EXPECT_EQ(run.screen.find("execution", message.size()), std::string::npos);
    EXPECT_NE(run.status, 0);
    EXPECT_LT(run.status, 1000);
  }
  EXPECT_EQ(read_text("data/profile-store.idx"), index);
  EXPECT_EQ(stored(), "b\n");
}

// Each is asked for "b", then for "a", and fails at one of them.
TEST_F(AnalyserTest, ThatStopsAnsweringEndsTheRun) {
  const char *const ended = "it ended before its answer was complete";
  const struct {
    const char *script;
    const char *failing;
    const char *reason;  // empty if either end of the pipe may tell first
    const char *stored;
  } cases[] = {
      {"die-before", "b", ended, "\n"}, {"die-within", "b", ended, "\n"},
      {"close", "b", ended, "\n"},      {"exit", "b", "", "\n"},
      {"die-after", "a", "", "b\n"},
  };
  for (const auto &[script, failing, reason, in_store] : cases) {
    SCOPED_TRACE(script);
    std::filesystem::remove_all("data");
    const std::string command = std::string("scripted ") + script;
    const RunResult run = profile(command, {"b", "a"});
    EXPECT_TRUE(run.screen.starts_with("ERROR: analyser process `" + command +
                                       "' failed on document `" + failing +
                                       "': " + reason))
        << run.screen;
    EXPECT_NE(run.status, 0);
    EXPECT_LT(run.status, 1000);
    EXPECT_EQ(stored(), in_store);
  }
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
  Signal signal;
  analyser.open("scripted late-line-end");
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(analyser.process("b"), "tree");
    signal.go_on();
    ASSERT_TRUE(signal.wait());
  }
  analyser.close();
  for (const std::string script : {"unasked", "late-text"}) {
    const RunResult run = run_in_child([&] {
      Signal started;
      analyser.open("scripted " + script);
      if (script == "late-text") {
        analyser.process("a");
        started.go_on();
      }
      started.wait();
      analyser.process("b");
    });
    EXPECT_TRUE(run.screen.starts_with(
        "ERROR: analyser process `scripted " + script +
        "' failed on document `b': it writes without being asked\n"))
        << run.screen;
  }
}

TEST_F(AnalyserTest, NulEndsTheAnalysis) {
  const char *const warned =
      "WARNING: analysis of document `b' is cut at a NUL byte\n";
  analyser.open("scripted nul");
  EXPECT_EQ(screen([] { EXPECT_EQ(analyser.process("b"), "tree"); }), warned);
  analyser.close();
  write_text("files/b.txt", std::string("tree\0 hidden", 12));
  analyser.open("");
  EXPECT_EQ(analyser.process("b"), "tree");
}

TEST_F(AnalyserTest, WithoutACommandTheFileHoldsTheAnalysis) {
  analyser.open("");
  EXPECT_EQ(analyser.process("a"), "house [car, red]");
  // A name that ends in the suffix gets no second one.
  EXPECT_EQ(analyser.process("a.txt"), "house [car, red]");
  // What has no size has no text either.
  std::filesystem::create_symlink("/proc/self/status", "files/proc.txt");
  EXPECT_EQ(analyser.process("proc"), "");
}

TEST_F(AnalyserTest, ShortReadOnlyWarns) {
  std::filesystem::create_directories("files/d.txt/full");
  struct stat status;
  ASSERT_EQ(stat("files/d.txt", &status), 0);
  if (status.st_size == 0)
    GTEST_SKIP() << "directories have no size here";
  analyser.open("");
  EXPECT_EQ(screen([] { EXPECT_EQ(analyser.process("d"), ""); }),
            "WARNING: Analyser::process: read 0 bytes, file size is " +
                std::to_string(status.st_size) + " bytes from d\n");
}

TEST_F(AnalyserTest, DocumentThatCannotBeReadEndsTheRun) {
  ASSERT_EQ(mknod("files/socket.txt", S_IFSOCK | 0600, 0), 0);
  write_text("files/two\nlines.txt", "");
  write_text("files/big.txt", "");
  std::filesystem::resize_file("files/big.txt", std::uintmax_t{1} << 40);
  const struct {
    const char *command;
    const char *name;
    const char *message;
  } cases[] = {
      {"", "gone", "Cannot open file \"files/gone.txt\" for analysing stage"},
      {"scripted", "gone",
       "Cannot open file \"files/gone.txt\" for analysing stage"},
      {"", "socket", "socket: No such device or address"},
      {"", "big", "big: File too large"},
      // It would be taken for two requests.
      {"scripted", "two\nlines",
       "Cannot open file \"files/two\nlines.txt\" for analysing stage"},
  };
  for (const auto &[command, name, message] : cases) {
    const RunResult run = profile(command, {"b", name});
    EXPECT_TRUE(run.screen.starts_with("ERROR: " + std::string(message) +
                                       "\naborting..."))
        << run.screen;
    EXPECT_NE(run.status, 0);
  }
  EXPECT_EQ(stored(), "b\n");
}

TEST_F(AnalyserTest, FileDirectoryIsMadeIfItsParentIsThere) {
  const mode_t mask = umask(0);
  params.set_file_directory("new");
  analyser.open("");
  umask(mask);
  EXPECT_EQ(std::filesystem::status("new").permissions(),
            std::filesystem::perms(0770));
  params.set_file_directory("no/such");
  const RunResult run = profile("", {});
  EXPECT_EQ(run.screen,
            "ERROR: could not create directory `no/such'\n"
            "aborting... (errno = 2)\n");
  EXPECT_EQ(run.status, ENOENT);
}

TEST_F(AnalyserTest, StoredNameIsNotAnalysedAgain) {
  profile("scripted", {"a"});
  std::filesystem::remove("files/a.txt");
  set_verbosity(3);
  const RunResult run = run_in_child([] {
    open_all("scripted die-before");
    profile_document("a");
    const DocProfile *profile_P = document_profile("a");
    logf_always(1, "%zu terms", profile_P->size());
    log_always(1, profile_P == document_profile("a") ? "cached" : "read twice");
  });
  EXPECT_EQ(run.log, "2 terms\ncached\n");
  EXPECT_EQ(run.status, 0);
}

TEST_F(AnalyserTest, ProfileHoldsTheTermsInTheOrderOfTheBag) {
  write_text("files/a.txt", "[car, red] house [car, old] [car] house");
  write_text("files/b.txt", "");
  set_verbosity(3);
  const RunResult run = run_in_child([] {
    open_all("scripted");
    for (const char *name : {"a", "b"}) {
      std::string text;
      for (const DocProfileEntry &entry : *document_profile(name)) {
        text += std::to_string(term_table.head(entry.term)) + ',' +
                std::to_string(static_cast<int>(term_table.mod(entry.term))) +
                ':' + std::to_string(entry.term) + 'x' +
                std::to_string(entry.freq) + ' ';
      }
      log_always(4, text);
    }
  });
  EXPECT_EQ(run.log,
            "creating data directory `data'\n"
            "profiling document `a'\n"
            "0,1:0x1 0,3:1x1 0,-1:2x1 2,-1:3x2 \n"
            "profiling document `b'\n\n");
}

TEST_F(AnalyserTest, ErrorsInAnAnalysisCostOnlyWhatTheySpoil) {
  write_text("files/a.txt", "house [ , x ] car");
  const RunResult run = profile("scripted", {"a"});
  EXPECT_EQ(run.screen,
            "ERROR: file a: line 1: before `,': parse error: head expected\n");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(stored(), "a\n");
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

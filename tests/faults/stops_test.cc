// Whole runs that are stopped by a signal, or that meet another run in their
// data directory: what was analysed is kept, and what belongs to somebody else
// is left alone.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "support/analyser_signal.h"
#include "support/temporary_directory.h"

namespace vek {
namespace {

namespace fs = std::filesystem;
using Files = std::map<std::string, std::string>;

constexpr int nr_documents = 6;

class StopsTest : public testing::Test {
 protected:
  StopsTest() {
    std::string lines;
    for (int i = 0; i < nr_documents; ++i) {
      const std::string number = std::to_string(i);
      write_text(text_of(i), "[tree, old" + number + "] house" + number);
      lines += "d" + number + " class" + std::to_string(i % 2) + '\n';
    }
    write_text("train", lines);
    write_text("test", "d0 class0\n");
    set_analyser("asked");
  }

  static std::string text_of(int i) {
    return "files/d" + std::to_string(i) + ".txt";
  }
  static void set_analyser(const std::string &script) {
    write_text("vek.rc", "[General] save on analyser \"" VEK_SCRIPTED_ANALYSER
                         " " +
                             script + "\"\n");
  }

  static pid_t start(const std::string &screen,
                     std::vector<const char *> options = {}) {
    const pid_t pid = fork();
    if (pid == 0) {
      alarm(20);
      options.insert(options.begin(), VEK_PROGRAM);
      options.insert(options.end(), {".", nullptr});
      if (std::freopen(screen.c_str(), "w", stderr) != nullptr)
        execv(VEK_PROGRAM, const_cast<char **>(options.data()));
      std::_Exit(99);
    }
    return pid;
  }
  // The status, or 1000 and the number of a signal.
  static int end_of(pid_t pid) {
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFSIGNALED(status) ? 1000 + WTERMSIG(status) : WEXITSTATUS(status);
  }

  // Lets the analyser answer and come to its next request.
  void answer(int nr_requests) {
    for (int i = 0; i < nr_requests; ++i) {
      AnalyserSignal::go_on();
      ASSERT_TRUE(signal_.wait());
    }
  }

  // All but the times of the index.
  static Files results() {
    Files files;
    for (const char *name : {"rank0.dat", "scores.dat"})
      files[name] = read_text(name);
    for (const auto &entry : fs::directory_iterator("data")) {
      const std::string name = entry.path();
      files[name] = name.ends_with(".idx") ? "" : read_text(name);
    }
    return files;
  }

  TemporaryDirectory directory_;
  AnalyserSignal signal_;
};

TEST_F(StopsTest, SignalEndsTheRunBehindTheDocumentInHand) {
  set_analyser("echo");
  ASSERT_EQ(end_of(start("screen")), 0);
  const Files whole = results();
  for (const int number : {SIGINT, SIGTERM}) {
    fs::remove_all("data");
    set_analyser("asked");
    const pid_t run = start("screen");
    ASSERT_TRUE(signal_.wait());
    answer(2);
    // Some who stop a process tell it twice.
    kill(run, number);
    kill(run, SIGTERM);
    AnalyserSignal::go_on();
    EXPECT_EQ(end_of(run), 1000 + number);
    const std::string told = "ERROR: stopped by signal " +
                             std::to_string(number) +
                             ", what was analysed is kept\n";
    EXPECT_EQ(read_text("screen"), told);
    EXPECT_TRUE(read_text("vek.log").ends_with(told));
    // The three that were answered are not analysed again.
    for (int i = 0; i < 3; ++i)
      fs::rename(text_of(i), text_of(i) + '~');
    set_analyser("echo");
    EXPECT_EQ(end_of(start("screen")), 0) << read_text("screen");
    EXPECT_EQ(results(), whole);
    for (int i = 0; i < 3; ++i)
      fs::rename(text_of(i) + '~', text_of(i));
  }
}

TEST_F(StopsTest, LaterSignalEndsTheRunAtOnce) {
  const pid_t run = start("screen");
  ASSERT_TRUE(signal_.wait());
  int status = 0;
  while (waitpid(run, &status, WNOHANG) == 0)
    kill(run, SIGINT);
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT);
  EXPECT_EQ(read_text("screen"), "");
}

TEST_F(StopsTest, AnalyserThatIsStoppedTooIsNoFailure) {
  const pid_t run = start("screen");
  ASSERT_TRUE(signal_.wait());
  kill(run, SIGTERM);
  const std::string children =
      read_text("/proc/" + std::to_string(run) + "/task/" +
                std::to_string(run) + "/children");
  kill(std::stoi(children), SIGTERM);
  EXPECT_EQ(end_of(run), 1000 + SIGTERM);
  EXPECT_EQ(read_text("screen"),
            "ERROR: stopped by signal 15, what was analysed is kept\n");
}

TEST_F(StopsTest, SecondRunIsSentAwayOrWaits) {
  const pid_t first = start("screen");
  ASSERT_TRUE(signal_.wait());
  answer(1);
  const auto everything = [] {
    Files files;
    for (const auto &entry : fs::recursive_directory_iterator(".")) {
      const std::string name = entry.path();
      if (entry.is_regular_file() && name != "./second")
        files[name] = read_text(name);
    }
    return files;
  };
  const Files before = everything();
  EXPECT_EQ(end_of(start("second")), EWOULDBLOCK);
  EXPECT_NE(read_text("second").find(
                "ERROR: data directory `data' is in use by process " +
                std::to_string(first) + "\naborting... (errno = 11)\n"),
            std::string::npos)
      << read_text("second");
  EXPECT_EQ(everything(), before);

  const pid_t waiting = start("second", {"--wait", "50"});
  answer(nr_documents - 2);
  AnalyserSignal::go_on();
  EXPECT_EQ(end_of(first), 0);
  EXPECT_EQ(end_of(waiting), 0);
  EXPECT_EQ(read_text("second"), "");
  EXPECT_NE(read_text("vek.log").find("writing class profiles..."),
            std::string::npos);
}

}  // namespace
}  // namespace vek

#include "log/log.h"

#include <gtest/gtest.h>
#include <pty.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "base/progress_line.h"
#include "support/temporary_directory.h"

namespace vek {
namespace {

using testing::ExitedWithCode;

template <class Action>
std::string shown(Action action) {
  testing::internal::CaptureStderr();
  action();
  return testing::internal::GetCapturedStderr();
}

class LogFile : public testing::Test {
 protected:
  LogFile() {
    log_file.open("vek.log");
    set_verbosity(0);
  }

  // Behind the opening lines.
  static std::string logged() {
    const std::string text = read_text("vek.log");
    return text.substr(text.find("\n\n") + 2);
  }

 private:
  TemporaryDirectory directory_;
};

TEST(Log, StartsAnewForTheGroupTooAndTakesNothingBefore) {
  const TemporaryDirectory directory;
  write_text("old.log", std::string(1000, 'x'));
  const mode_t before = umask(0);
  for (const char *name : {"new.log", "old.log"}) {
    Log log;
    log.write(Log::Kind::plain, "lost, because the log is not open");
    log.open(name);
    const std::string text = read_text(name);
    EXPECT_EQ(text.substr(text.find('\n')), "\nthis is VEK version: 1.4\n\n");
  }
  ensure_directory("new");
  ensure_directory("new");
  umask(before);
  EXPECT_EQ(std::filesystem::status("new.log").permissions(),
            std::filesystem::perms(0664));
  EXPECT_EQ(std::filesystem::status("new").permissions(),
            std::filesystem::perms(0770));
  EXPECT_EXIT(Log().open("/missing/vek.log"), ExitedWithCode(1),
              "^ERROR: cannot open log file /missing/vek.log\naborting...\n$");
  EXPECT_EXIT(ensure_directory("old.log"), ExitedWithCode(EEXIST),
              "^ERROR: could not create directory `old.log'\n"
              "aborting... \\(errno = 17\\)\n$");
}

TEST_F(LogFile, TakesMessagesByLevelAndVerbosity) {
  LogMessages messages;
  set_verbosity(1);
  std::string expected;
  for (unsigned level = 0; level <= 2; ++level) {
    const std::string told = "WARNING: one 1\nERROR: two %s\n";
    const std::string all = "always\nverbose\ndetail\n";
    EXPECT_EQ(shown([&] {
                logf_always(level, "%s", "always");
                logf_if_verbose(level, "%s", "verbose");
                messages.detail(level, "detail");
                warning("one %d", 1);
                messages.error("two %s");
              }),
              level == 1 ? all + told : told);
    EXPECT_EQ(messages.wants(level), level == 1);
    expected += (level == 1 ? all : "always\n") + told;
  }
  EXPECT_EQ(logged(), expected);
}

TEST_F(LogFile, TakesFileErrorsThatItKnowsAndCutsMessagesAt1023Bytes) {
  const std::string text(1024, 'a');
  const std::string expected =
      "ERROR: cannot open file `%n%s' for reading\nERROR: format error\n"
      "WARNING: " +
      text.substr(1) + '\n';
  EXPECT_EQ(shown([&] {
              report_file_error("%n%s", static_cast<FileError>(-1));
              report_file_error("%n%s", FileError::open_for_reading);
              report_file_error(nullptr, FileError::format);
              report_file_error(nullptr, static_cast<FileError>(9));
              warning("%s", text.c_str());
            }),
            expected);
  log_always(1, text);
  EXPECT_EQ(logged(), expected + text + '\n');
}

TEST(Screen, HasNoProgressAndMessageInOneLine) {
  int terminal = -1;
  const pid_t pid = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (pid == 0) {
    alarm(60);
    ProgressLine line("vek", ProgressLine::Shown::on_terminal);
    const auto begin = std::chrono::steady_clock::now();
    while (std::chrono::steady_clock::now() - begin < std::chrono::seconds(1))
      line.count();
    warning("a message");
    warning("another");
    std::_Exit(0);
  }
  std::string text;
  std::array<char, 512> buffer = {};
  ssize_t count = 0;
  // A terminal whose other side is gone is an error.
  while ((count = read(terminal, buffer.data(), buffer.size())) > 0)
    text.append(buffer.data(), static_cast<std::size_t>(count));
  close(terminal);
  waitpid(pid, nullptr, 0);
  EXPECT_TRUE(text.starts_with("\rvek: ")) << text;
  EXPECT_TRUE(
      text.ends_with(" a second\x1B[K\r\x1B[KWARNING: a message\r\n"
                     "WARNING: another\r\n"))
      << text;
}

TEST_F(LogFile, LeavesErrnoAloneAlsoWhenItCannotBeWritten) {
  for (const char *name : {"vek.log", "/dev/full"}) {
    log_file.open(name);
    shown([] {
      errno = 77;
      logf_always(1, "%s", std::string(4096, 'a').c_str());
      report_file_error("name", FileError::read);
      log_file.write(Log::Kind::plain, std::string(200000, 'x'));
      EXPECT_EQ(errno, 77);
    });
  }
}

}  // namespace
}  // namespace vek

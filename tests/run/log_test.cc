#include "run/log.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>

#include "support/messages.h"

namespace vek {
namespace {

using testing::Eq;
using testing::ExitedWithCode;

class LogFile : public testing::Test {
 protected:
  LogFile() { log_file.open("vek.log"); }

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
  umask(before);
  EXPECT_EQ(std::filesystem::status("new.log").permissions(),
            std::filesystem::perms(0664));
}

TEST(Log, EndsTheRunWith1IfItCannotBeOpened) {
  EXPECT_EXIT(Log().open("/missing/vek.log"), ExitedWithCode(1),
              Eq(std::string("ERROR: cannot open log file /missing/vek.log\n"
                             "aborting...\n")));
}

TEST_F(LogFile, TakesMessagesByLevelAndVerbosity) {
  for (unsigned verbosity = 0; verbosity <= 3; ++verbosity) {
    set_verbosity(verbosity);
    log_file.open("vek.log");
    std::string expected;
    for (unsigned level = 0; level <= 4; ++level) {
      const bool is_shown = 1 <= level && level <= verbosity;
      const std::string told = "WARNING: one 1\nERROR: two %s\n";
      const std::string if_shown = is_shown ? "always\nverbose\nverbose\n" : "";
      EXPECT_EQ(screen([&] {
                  logf_always(level, "%s", "always");
                  log_if_verbose(level, "verbose");
                  logf_if_verbose(level, "%s", "verbose");
                  warning("one %d", 1);
                  error("two %s", "%s");
                }),
                if_shown + told)
          << level << " of " << verbosity;
      expected += (is_shown ? if_shown : "always\n") + told;
    }
    EXPECT_EQ(logged(), expected);
  }
}

TEST_F(LogFile, HasWordsForEveryFileError) {
  const std::pair<std::string, std::string> errors[] = {
      {"cannot open file `%n%s' for reading", "open failure"},
      {"cannot open file `%n%s' for writing", "open failure"},
      {"error reading file `%n%s'", "read error"},
      {"error writing file `%n%s'", "write error"},
      {"could not create directory `%n%s'", "could not create directory"},
      {"cannot find directory `%n%s'", "directory not found"},
      {"cannot open directory `%n%s'", "cannot open directory"},
      {"error deleting file `%n%s'", "delete error"},
      {"format error in file `%n%s'", "format error"}};
  std::string expected;
  for (const auto &[with_name, without] : errors)
    expected += "ERROR: " + with_name + "\nERROR: " + without + '\n';
  EXPECT_EQ(screen([] {
              for (int code = -1; code <= 9; ++code) {
                report_file_error("%n%s", static_cast<FileError>(code));
                report_file_error(nullptr, static_cast<FileError>(code));
              }
            }),
            expected);
  EXPECT_EQ(logged(), expected);
}

TEST_F(LogFile, CutsFormattedMessagesAt1023Bytes) {
  set_verbosity(1);
  const std::string cut(1023, 'a');
  for (const std::size_t size : {1023U, 1024U, 5000U}) {
    const std::string text(size, 'a');
    const std::string shown = screen([&] {
      logf_always(1, "%s", text.c_str());
      warning("%s", text.c_str());
      log_always(1, text);
    });
    EXPECT_EQ(shown, cut + "\nWARNING: " + cut + "\n" + text + "\n");
    EXPECT_TRUE(logged().ends_with(shown)) << size;
  }
}

TEST_F(LogFile, LeavesErrnoAloneAlsoWhenItCannotBeWritten) {
  set_verbosity(2);
  for (const char *name : {"vek.log", "/dev/full"}) {
    log_file.open(name);
    screen([] {
      errno = 77;
      logf_if_verbose(1, "%s", std::string(4096, 'a').c_str());
      report_file_error("name", FileError::read);
      log_file.write(Log::Kind::plain, std::string(200000, 'x'));
      EXPECT_EQ(errno, 77);
    });
  }
}

// The test asks anew whether it writes to a terminal, in a process of its own.
TEST(Screen, ShowsNoControlCharactersOnATerminal) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const int controller = posix_openpt(O_RDWR | O_NOCTTY);
  if (controller < 0)
    GTEST_SKIP() << "no terminals here";
  ASSERT_EQ(grantpt(controller), 0);
  ASSERT_EQ(unlockpt(controller), 0);
  EXPECT_EXIT(
      {
        const int terminal = open(ptsname(controller), O_RDWR | O_NOCTTY);
        const int before = dup(STDERR_FILENO);
        dup2(terminal, STDERR_FILENO);
        error("a\x1B[31m\tb\x7F\n\xC3\xA9");
        dup2(before, STDERR_FILENO);
        char shown[100] = {};
        if (read(controller, shown, sizeof shown - 1) < 0)
          perror("read");
        std::fputs(shown, stderr);
        std::exit(0);
      },
      ExitedWithCode(0), "^ERROR: a.x1B.31m\tb.x7F\r\n\xC3\xA9\r\n$");
}

}  // namespace
}  // namespace vek

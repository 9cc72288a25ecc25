#include "run/log.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

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

std::string opening_at(std::time_t time) {
  return std::string(std::ctime(&time)) + "this is VEK version: 1.4\n\n";
}

TEST(Log, StartsAnewWithDateVersionAndBlankLine) {
  const TemporaryDirectory directory;
  const mode_t before = umask(0);
  Log().open("new.log");
  umask(before);
  struct stat status = {};
  ASSERT_EQ(stat("new.log", &status), 0);
  EXPECT_EQ(status.st_mode & 07777, mode_t{0664});

  write_text("vek.log", std::string(1000, 'x'));
  Log log;
  log.write(Log::Kind::plain, "lost, because the log is not open");
  std::time_t time = std::time(nullptr);
  log.open("vek.log");
  const std::string text = read_text("vek.log");
  while (text != opening_at(time) && time <= std::time(nullptr))
    ++time;
  EXPECT_EQ(text, opening_at(time));
}

TEST(Log, EndsTheRunWith1IfItCannotBeOpened) {
  EXPECT_EXIT(Log().open("/missing/vek.log"), ExitedWithCode(1),
              Eq(std::string("ERROR: cannot open log file /missing/vek.log\n"
                             "aborting...\n")));
}

TEST_F(LogFile, TakesProgressByLevelAndVerbosity) {
  const std::string always = "always\nalways 2\n";
  const std::string verbose = "verbose\nverbose 2\n";
  for (unsigned verbosity = 0; verbosity <= 4; ++verbosity) {
    set_verbosity(verbosity);
    for (unsigned level = 0; level <= 5; ++level) {
      const bool shown = 1 <= level && level <= verbosity;
      const std::size_t before = logged().size();
      EXPECT_EQ(screen([&] {
                  log_always(level, "always");
                  logf_always(level, "%s %d", "always", 2);
                  log_if_verbose(level, "verbose");
                  logf_if_verbose(level, "%s %d", "verbose", 2);
                }),
                shown ? always + verbose : "")
          << level << " of " << verbosity;
      EXPECT_EQ(logged().substr(before), shown ? always + verbose : always)
          << level << " of " << verbosity;
    }
  }
}

TEST_F(LogFile, TakesWarningsAndErrorsWithTheirPrefixes) {
  const std::string expected = "WARNING: one 1\nERROR: two %s\n";
  EXPECT_EQ(screen([] {
              warning("one %d", 1);
              error("two %s", "%s");
            }),
            expected);
  log_file.write(Log::Kind::plain, "three");
  log_file.write(Log::Kind::warning, "");
  EXPECT_EQ(logged(), expected + "three\nWARNING: \n");
}

TEST_F(LogFile, HasWordsForEveryFileError) {
  struct Case {
    FileError code;
    const char *with_name, *without_name;
  };
  const std::vector<Case> cases = {
      {FileError::open_for_reading, "cannot open file `%n%s' for reading",
       "open failure"},
      {FileError::open_for_writing, "cannot open file `%n%s' for writing",
       "open failure"},
      {FileError::read, "error reading file `%n%s'", "read error"},
      {FileError::write, "error writing file `%n%s'", "write error"},
      {FileError::make_directory, "could not create directory `%n%s'",
       "could not create directory"},
      {FileError::directory_missing, "cannot find directory `%n%s'",
       "directory not found"},
      {FileError::open_directory, "cannot open directory `%n%s'",
       "cannot open directory"},
      {FileError::remove, "error deleting file `%n%s'", "delete error"},
      {FileError::format, "format error in file `%n%s'", "format error"},
      {static_cast<FileError>(9), nullptr, nullptr},
      {static_cast<FileError>(-1), nullptr, nullptr},
  };
  std::string all;
  for (const Case &one : cases) {
    std::string expected;
    if (one.with_name != nullptr) {
      const std::string line = std::string("ERROR: ") + one.with_name + "\n";
      expected = line + line + "ERROR: " + one.without_name + "\n";
    }
    EXPECT_EQ(screen([&] {
                report_file_error("%n%s", one.code);
                report_file_error(std::string("%n%s"), one.code);
                report_file_error(nullptr, one.code);
              }),
              expected);
    all += expected;
  }
  EXPECT_EQ(logged(), all);
}

TEST_F(LogFile, SaysWhyARunIsAborted) {
  for (const int code : {0, 1, ENOENT, ENOSPC}) {
    const std::string text =
        code == 0 ? "aborting...\n"
                  : "aborting... (errno = " + std::to_string(code) + ")\n";
    const std::size_t before = logged().size();
    EXPECT_EXIT(
        {
          errno = code;
          abort_run();
        },
        ExitedWithCode(code == 0 ? 1 : code), Eq(text));
    EXPECT_EQ(logged().substr(before), (code == 0 ? "" : "ERROR: ") + text);
  }
}

TEST_F(LogFile, CutsFormattedMessagesAt1023Bytes) {
  set_verbosity(1);
  for (const std::size_t size : {1023U, 1024U, 5000U}) {
    const std::string text(size, 'a');
    const std::string cut(1023, 'a');
    const std::size_t before = logged().size();
    const std::string shown = screen([&] {
      logf_always(1, "%s", text.c_str());
      logf_if_verbose(1, "%s", text.c_str());
      warning("%s", text.c_str());
      error("b%s", text.c_str());
      log_always(1, text);
    });
    EXPECT_EQ(shown, cut + "\n" + cut + "\nWARNING: " + cut + "\nERROR: b" +
                         cut.substr(1) + "\n" + text + "\n");
    EXPECT_EQ(logged().substr(before), shown);
  }
}

// Says something in every way there is, and returns the errno it leaves.
int errno_after_messages() {
  int left = 0;
  screen([&] {
    errno = 77;
    log_always(2, "text");
    log_if_verbose(2, "text");
    logf_always(3, "%s", std::string(4096, 'a').c_str());
    logf_if_verbose(1, "%d", 1);
    warning("%d", 1);
    error("%d", 1);
    report_file_error("name", FileError::read);
    log_file.write(Log::Kind::plain, std::string(200000, 'x'));
    left = errno;
  });
  return left;
}

TEST_F(LogFile, LeavesErrnoAlone) {
  set_verbosity(2);
  EXPECT_EQ(errno_after_messages(), 77);
}

TEST(Log, NeitherStopsTheRunNorSetsErrnoWhenItCannotBeWritten) {
  set_verbosity(2);
  log_file.open("/dev/full");
  EXPECT_EQ(errno_after_messages(), 77);
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

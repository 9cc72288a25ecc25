#include "log/log.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <utility>

#include "support/temporary_directory.h"

namespace vek {
namespace {

using testing::Eq;
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
  umask(before);
  EXPECT_EQ(std::filesystem::status("new.log").permissions(),
            std::filesystem::perms(0664));
  EXPECT_EXIT(Log().open("/missing/vek.log"), ExitedWithCode(1),
              Eq(std::string("ERROR: cannot open log file /missing/vek.log\n"
                             "aborting...\n")));
}

TEST_F(LogFile, TakesMessagesByLevelAndVerbosity) {
  LogMessages messages;
  for (unsigned verbosity = 0; verbosity <= 2; ++verbosity) {
    set_verbosity(verbosity);
    log_file.open("vek.log");
    std::string expected;
    for (unsigned level = 0; level <= 3; ++level) {
      const bool is_shown = 1 <= level && level <= verbosity;
      const std::string told = "WARNING: one 1\nERROR: two %s\n";
      const std::string if_shown = is_shown ? "always\nverbose\ndetail\n" : "";
      EXPECT_EQ(shown([&] {
                  logf_always(level, "%s", "always");
                  logf_if_verbose(level, "%s", "verbose");
                  messages.detail(level, "detail");
                  warning("one %d", 1);
                  messages.error("two %s");
                }),
                if_shown + told)
          << level << " of " << verbosity;
      EXPECT_EQ(messages.wants(level), is_shown);
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
  EXPECT_EQ(shown([] {
              for (int code = -1; code <= 9; ++code) {
                report_file_error("%n%s", static_cast<FileError>(code));
                report_file_error(nullptr, static_cast<FileError>(code));
              }
            }),
            expected);
  EXPECT_EQ(logged(), expected);
}

TEST_F(LogFile, CutsFormattedMessagesAt1023Bytes) {
  const std::string cut(1023, 'a');
  for (const std::size_t size : {1023U, 1024U, 5000U}) {
    const std::string text(size, 'a');
    EXPECT_EQ(shown([&] { warning("%s", text.c_str()); }),
              "WARNING: " + cut + "\n");
    log_always(1, text);
    EXPECT_TRUE(logged().ends_with("WARNING: " + cut + "\n" + text + "\n"));
  }
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

TEST(EnsureDirectory, CreatesOneLevelForOwnerAndGroup) {
  const TemporaryDirectory temporary;
  write_text("file", "");
  const mode_t before = umask(0);
  ensure_directory("new");
  umask(before);
  ensure_directory("new");
  EXPECT_EQ(std::filesystem::status("new").permissions(),
            std::filesystem::perms(0770));
  EXPECT_EXIT(ensure_directory("file"), ExitedWithCode(EEXIST),
              Eq(std::string("ERROR: could not create directory `file'\n"
                             "aborting... (errno = 17)\n")));
}

}  // namespace
}  // namespace vek

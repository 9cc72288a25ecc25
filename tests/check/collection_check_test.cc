#include "check/collection_check.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "store/directorylock.h"
#include "store/filestore.h"
#include "support/temporary_directory.h"

namespace vek::checking {
namespace {

using namespace std::string_literals;

// A collection that is as it should be, in the working directory: documents a
// to h, all with a text, and the classes x and y. A test spoils one thing.
class CollectionCheckTest : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const char name : "abcdefgh"s)
      write_text("files/"s + name + ".txt", "");
    write_lists(good_train, good_test);
    settings_.analyser = "";
  }

  static void write_lists(const std::string &train, const std::string &test) {
    write_text("train", train);
    write_text("test", test);
  }

  std::string check() {
    Findings findings;
    const std::string examples = ".";
    CollectionCheck(examples, settings_, findings).run();
    std::ostringstream out;
    findings.print(out);
    return out.str();
  }

  static inline const std::string good_train = "a x\nb x\nc y\nd x y\n";
  static inline const std::string good_test = "e x\nf y\n";

  TemporaryDirectory directory_;
  Params settings_;
};

TEST_F(CollectionCheckTest, FindsWhatIsWrongWithALineOrAClass) {
  const std::string longest(2047, ' ');
  const struct {
    std::string train, test;  // behind the good lists
    std::string findings;
  } cases[] = {
      {"", "", ""},
      {"g.txt s/x:0.5\nh ?s/y\ng z \n", "e s//x\nf s/y\ne  z\n", ""},
      // In the order of the lines, though a class is told of last.
      {"g z\n\n", "",
       "./train:5: warning: class `z' has training documents only\n"
       "./train:6: stop: the line is empty\n"},
      {"g \n", "", "./train:5: stop: there is no class behind `g '\n"},
      {"g x\0 y\n"s, "", "./train:5: stop: there is a NUL byte\n"},
      {" x\n", "",
       "./train:5: warning: the line begins with a blank, so that the "
       "document's name is empty\n"
       "./train:5: stop: file `files' cannot be read: no regular file\n"},
      {"g x\r\n", "",
       "./train: warning: the lines end in CR LF: the carriage returns are "
       "parts of names\n"
       "./train:5: warning: class `x\\x0D' has training documents only\n"},
      {"\tg x\n", "",
       "./train:5: warning: a tab does not separate, it is part of a name\n"
       "./train:5: stop: there is no file `files/\\x09g.txt'\n"},
      {"g x", "",
       "./train:5: warning: the last line has no end: what is appended becomes "
       "part of it\n"},
      {"g x" + longest.substr(3) + "\n", "", ""},
      {"g x" + longest.substr(2) + "\n\n\nh y\n", "",
       "./train:5: warning: a line of over 2047 bytes ends the list; lines not "
       "read: 4\n"},
      {"g ?:1\n", "",
       "./train:5: warning: there is an empty class name\n"
       "./train:5: warning: class `' has training documents only\n"},
      {"g x y x\n", "",
       "./train:5: warning: document `g' is in class `x' already\n"},
      {"", "g z\n", "./test:3: warning: class `z' has test documents only\n"},
      {"a s/p\nb s/q\ng s\nc s\n", "g s/p\nh s/q\n",
       "./train:7: warning: class `s' has sons, and only classes without sons "
       "are assigned\n"
       "./test:3: warning: document `g' stands in the training list too, in "
       "line 7\n"},
      {"g /x\n", "h /x\n",
       "./train:5: warning: the first name in `/x' is empty\n"
       "./train:5: warning: class `' has a single son: there is nothing to "
       "tell it from\n"
       "./test:3: warning: the first name in `/x' is empty\n"},
      {"g x\"\n", "h x\"\n",
       "./train:5: warning: class name `x\"' cannot be stored, so no class "
       "files can be written\n"}};
  for (const auto &[train, test, findings] : cases) {
    write_lists(good_train + train, good_test + test);
    EXPECT_EQ(check(), findings) << train << test;
  }
  settings_.save = true;
  EXPECT_NE(check().find("./train:5: stop: class name"), std::string::npos);
}

TEST_F(CollectionCheckTest, MissesListsAndDirectories) {
  write_lists("a x\nb x\n", "");
  std::filesystem::remove("test");
  EXPECT_EQ(check(),
            "./train:1: warning: class `x' is the only one below the top "
            "class: there is nothing to tell it from\n"
            "./test: warning: the list cannot be opened (No such file or "
            "directory) and counts as empty\n"
            "./test: warning: there is no document to test on\n");
  std::filesystem::create_directory("test");
  EXPECT_NE(
      check().find("./test: stop: the list cannot be read: no regular file\n"),
      std::string::npos);
  std::filesystem::remove("test");
  std::filesystem::rename("files", "texts");
  settings_.file_directory = "texts";
  write_lists(good_train, good_test);
  const std::string no_files = ".: stop: there is no directory `files' in it\n";
  EXPECT_EQ(check(), no_files);
  settings_.file_directory = "nowhere";
  EXPECT_EQ(check(),
            no_files +
                "nowhere: stop: the directory of the texts is missing, and "
                "with it 6 documents\n");
}

TEST_F(CollectionCheckTest, FindsDocumentsWithoutTextOrProfile) {
  write_text("data/other", "");
  FileStore *store_P = filestore_open("data/profile-store");
  filestore_put_file(store_P, "c", "", 0);
  // Two without terms, of which one has a text, and one with a term.
  filestore_put_file(store_P, "a", "\0\0\0", 4);
  filestore_put_file(store_P, "odd", "\0\0\0", 4);
  filestore_put_file(store_P, "good", "\1\0\0\0\0\0\0\0\1\0\0", 12);
  write_text("files/odd.txt", "odd");
  filestore_close(store_P);
  std::filesystem::remove("files/c.txt");
  std::filesystem::remove("files/e.txt");
  std::filesystem::create_symlink("loop.txt", "files/loop.txt");
  std::filesystem::remove("files/f.txt");
  std::filesystem::create_directory("files/f.txt");
  for (const char *name :
       {"a.txt", "loop.txt", "new.txt", ".hidden.txt", "other"})
    write_text("input/in/"s + name, "");
  const std::string findings =
      "./test:1: stop: there is no file `files/e.txt'\n"
      "./test:2: stop: file `files/f.txt' cannot be read: no regular file\n"
      "data: warning: document `c' is kept without terms: `vek-data forget "
      "data c' has it analysed again\n"
      "data: warning: document `odd' is kept without terms: `vek-data forget "
      "data odd' has it analysed again\n"
      "input/in: warning: polling would leave out `loop.txt': file "
      "`files/loop.txt' cannot be read: Too many levels of symbolic links\n"
      "input/in: warning: polling would stop at `new.txt': there is no file "
      "`files/new.txt'\n";
  EXPECT_EQ(check(), findings);
  // The copy that a crash leaves stands for the index.
  std::filesystem::rename("data/profile-store.idx", "data/profile-store.new");
  EXPECT_EQ(check(), findings);
  std::filesystem::remove("data/profile-store.new");
  write_text("data/profile-store.idx", "damaged");
  EXPECT_NE(check().find("data/profile-store.idx: stop: damaged index: "),
            std::string::npos);
}

TEST_F(CollectionCheckTest, TellsOnceOfCarriageReturnsAndAMark) {
  write_lists(
      "\xEF\xBB\xBF"
      "a x\r\nb x\r\nc y\r\rd\n",
      good_test);
  const std::string text = check();
  EXPECT_TRUE(text.starts_with(
      "./train: warning: a byte-order mark is part of the first name, and the "
      "lines end in CR LF: the carriage returns are parts of names\n"))
      << text;
  EXPECT_NE(text.find("./train:3: warning: a carriage return"), text.npos);
  EXPECT_EQ(text.find("./train:2: warning: a carriage return"), text.npos);
}

TEST_F(CollectionCheckTest, AsksTheAnalyser) {
  const struct {
    std::string script;
    std::string finding;  // behind "analyser `./analyser x': stop: "
  } cases[] = {
      {"read -r path && cat \"$path\" && printf '\\001'", ""},
      {"read -r path && exit 3",
       "it ended before its answer to `files/a.txt' was complete: the analyser "
       "ended with exit status 3"},
      {"kill -9 $$",
       "it ended before its answer to `files/a.txt' was complete: the analyser "
       "was ended by signal SIGKILL"},
      {"exec sleep 9 >/dev/null",
       "it ended before its answer to `files/a.txt' was complete: the analyser "
       "has closed its output and still runs"},
  };
  settings_.analyser = "./analyser x";
  for (const auto &[script, finding] : cases) {
    write_text("analyser", "#!/bin/sh\n" + script + '\n');
    std::filesystem::permissions("analyser", std::filesystem::perms(0700));
    const std::string text = check();
    if (finding.empty())
      EXPECT_EQ(text, "");
    else
      EXPECT_TRUE(text.starts_with("analyser `./analyser x': stop: " + finding))
          << text;
  }
  settings_.analyser = "cat";
  EXPECT_TRUE(check().starts_with(
      "analyser `cat': stop: it cannot be started: No such file or directory"));
}

TEST_F(CollectionCheckTest, LooksAtTheDataDirectory) {
  const auto expect = [&](const std::string &directory,
                          const std::string &finding) {
    settings_.data_directory = directory;
    EXPECT_TRUE(check().starts_with(finding)) << check();
  };
  expect("none/data", "none/data: stop: it cannot be created: No such file");
  expect("train", "train: stop: it is no directory\n");
  std::filesystem::create_directory("data");
  expect("data", "");
  write_text("data/terms.dat", "");
  write_text("data/atoms.dat", "word\nword\n");
  expect("data", "data/atoms.dat: stop: line 2: the atom was there before; ");
  write_text("data/atoms.dat", "word\n");
  write_text("data/class0.cpf", "");
  write_text("data/profile-store.idx", "\0\0\0\0\0\0\0\0"s);
  const std::string finding = "there is no class table to it; learn again with";
  expect("data", "data/class0.cpf: warning: " + finding);
  settings_.incremental = true;
  expect("data", "data/class0.cpf: stop: " + finding);
  DirectoryLock lock;
  lock.take("data", DirectoryLock::Mode::exclusive);
  expect("data", "data: stop: process ");
}

TEST_F(CollectionCheckTest, FindsNamesThatCannotBePolledAndNoLog) {
  write_text("input/in/a\nb.txt", "");
  std::filesystem::create_directory("vek.log");
  EXPECT_EQ(check(),
            "vek.log: stop: Is a directory\n"
            "input/in: warning: polling would leave out `a\\x0Ab.txt': its "
            "name has a control character\n");
}

TEST_F(CollectionCheckTest, ReadsTheResourceFileThatVekReads) {
  Findings findings;
  read_resource_file("", settings_, findings);
  EXPECT_EQ(findings.exit_status(), 0);
  findings.add("vek.rc", 0, Severity::warning, "a");
  EXPECT_EQ(findings.exit_status(), 1);
  write_text("other.rc", "[general] save on [winnow] gamma 1\n");
  read_resource_file("other", settings_, findings);
  EXPECT_TRUE(settings_.save);
  EXPECT_EQ(findings.exit_status(), 2);
  write_text("again.rc", "[general] incremental on\n");
  Findings advice;
  read_resource_file("again", settings_, advice);
  std::ostringstream out;
  advice.print(out);
  EXPECT_TRUE(out.str().starts_with("again.rc: warning: `incremental on' "))
      << out.str();
}

}  // namespace
}  // namespace vek::checking

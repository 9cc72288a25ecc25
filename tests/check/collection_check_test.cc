#include "check/collection_check.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>

#include "check/options.h"
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

TEST_F(CollectionCheckTest, HasNothingToSayOfACleanCollection) {
  EXPECT_EQ(check(), "");
  write_lists("a.txt s/x:0.5\nb ?s/y\nc z \n", "e s//x\nf s/y\ng  z\n");
  EXPECT_EQ(check(), "");
}

TEST_F(CollectionCheckTest, FindsWhatIsWrongWithALine) {
  const std::string longest(2047, ' ');
  const struct {
    std::string train;
    std::string findings;
  } cases[] = {
      {"\n", "5: stop: the line is empty"},
      {"g \n", "5: stop: there is no class behind `g '"},
      {"g x\0 y\n"s, "5: stop: there is a NUL byte"},
      {" x\n",
       "5: warning: the line begins with a blank, so that the document's name "
       "is empty"},
      {"g x\r\n",
       "5: warning: a carriage return is part of a name\n"
       "./train:5: warning: class `x\\x0D' has training documents "
       "only"},
      {"\tg x\n",
       "5: warning: a tab does not separate, it is part of a name\n"
       "./train:5: stop: there is no file `files/\\x09g.txt'"},
      {"g x",
       "5: warning: the last line has no end: what is appended becomes part "
       "of it"},
      {"g x" + longest.substr(3) + "\n", ""},
      {"g x" + longest.substr(2) + "\n\n\nh y\n",
       "5: warning: a line of over 2047 bytes ends the list; lines not read: "
       "4"},
      {"g ?:1\n",
       "5: warning: there is an empty class name\n"
       "./train:5: warning: class `' has training documents only"},
      {"g x y x\n", "5: warning: document `g' is in class `x' already"},
      {"missing x\n", "5: stop: there is no file `files/missing.txt'"},
  };
  for (const auto &[line, findings] : cases) {
    write_lists(good_train + line, good_test);
    EXPECT_EQ(check(), findings.empty() ? "" : "./train:" + findings + "\n")
        << line;
  }
}

TEST_F(CollectionCheckTest, FindsWhatIsWrongWithAClass) {
  const struct {
    std::string train;
    std::string test;
    std::string findings;
  } cases[] = {
      {"g z\n", "",
       "./train:5: warning: class `z' has training documents only\n"},
      {"", "g z\n", "./test:3: warning: class `z' has test documents only\n"},
      {"g s/p\n", "h s/p\n",
       "./train:5: warning: class `s' has a single son: there is nothing to "
       "tell it from\n"},
      {"a s/p\nb s/q\ng s\n", "g s/p\nh s/q\n",
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
       "files can be written\n"},
  };
  for (const auto &[train, test, findings] : cases) {
    write_lists(good_train + train, good_test + test);
    EXPECT_EQ(check(), findings);
  }
}

TEST_F(CollectionCheckTest, AClassNameStopsARunThatWritesClassFiles) {
  write_lists("a x\"\nb y\n", "e x\"\nf y\n");
  settings_.set_save(true);
  EXPECT_NE(check().find("./train:1: stop: class name"), std::string::npos);
}

TEST_F(CollectionCheckTest, MissesListsAndDirectories) {
  write_lists("a x\nb x\n", "");
  std::filesystem::remove("test");
  EXPECT_EQ(check(),
            "./train:1: warning: class `x' is the only one below the top "
            "class: there is nothing to tell it from\n"
            "./test: warning: the list cannot be opened and counts as empty\n"
            "./test: warning: there is no document to test on\n");
  std::filesystem::create_directory("test");
  EXPECT_NE(check().find("./test: stop: the list cannot be read\n"),
            std::string::npos);
  std::filesystem::remove("test");
  std::filesystem::rename("files", "texts");
  settings_.set_file_directory("texts");
  write_lists(good_train, good_test);
  EXPECT_EQ(check(), ".: stop: there is no directory `files' in it\n");
  settings_.set_file_directory("nowhere");
  EXPECT_EQ(check(),
            ".: stop: there is no directory `files' in it\n"
            "nowhere: stop: the directory of the texts is missing, and with it "
            "6 documents\n");
}

TEST_F(CollectionCheckTest, AStoredProfileStandsForAText) {
  std::filesystem::create_directory("data");
  FileStore *store_P = filestore_open("data/profile-store");
  filestore_put_file(store_P, "c", "", 0);
  filestore_close(store_P);
  std::filesystem::remove("files/c.txt");
  std::filesystem::remove("files/e.txt");
  EXPECT_EQ(check(), "./test:1: stop: there is no file `files/e.txt'\n");
  write_text("data/profile-store.idx", "damaged");
  EXPECT_NE(check().find("profile store cannot be opened"), std::string::npos);
}

TEST_F(CollectionCheckTest, FindsInputDocumentsWithoutText) {
  write_text("input/in/a.txt", "");
  write_text("input/in/new.txt", "");
  write_text("input/in/.hidden.txt", "");
  write_text("input/in/other", "");
  EXPECT_EQ(check(),
            "input/in: warning: polling would stop: `new.txt' is not in "
            "`files'\n");
}

TEST_F(CollectionCheckTest, ReadsTheResourceFileThatVekReads) {
  Findings findings;
  read_resource_file("", settings_, findings);
  EXPECT_EQ(findings.exit_status(), 0);
  write_text("vek.rc", "[general] filedirectory \"texts\"\n");
  read_resource_file("", settings_, findings);
  EXPECT_EQ(settings_.file_directory(), "texts");
  write_text("other.rc", "[general] save on [winnow] gamma 1\n");
  read_resource_file("other", settings_, findings);
  EXPECT_TRUE(settings_.save());
  EXPECT_EQ(findings.exit_status(), 2);
}

TEST(CheckOptions, TakesADirectoryAndAResourceFile) {
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{"news"}, "news,"},
      {{"-r", "my", "news"}, "news,my"},
      {{"news", "--resource", "my.rc"}, "news,my.rc"},
      {{"news", "-r"}, "option `-r' needs an argument"},
      {{"news", "-x"}, "unknown option `-x'"},
      {{"news", "more"}, "duplicate examples directory specified"},
      {{}, "an examples directory is needed"},
      {{"-h"}, ","},
  };
  for (auto [words, result] : cases) {
    std::vector<char *> arguments;
    for (std::string &word : words)
      arguments.push_back(word.data());
    CheckOptions options;
    const std::string problem = read_options(arguments, options);
    EXPECT_EQ(
        problem.empty() ? options.examples + ',' + options.rc_file : problem,
        result);
  }
}

}  // namespace
}  // namespace vek::checking

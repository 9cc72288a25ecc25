#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <random>
#include <set>
#include <thread>

#include "import/import_run.h"

namespace vek::importing {
namespace {

namespace fs = std::filesystem;

class ImportTest : public ImportRun {};

// `count` rows with words of their own, in classes a to d.
std::string table(int first, int count) {
  std::string text = "id,text,class\n";
  for (int i = first; i < first + count; ++i) {
    const std::string number = std::to_string(i);
    text += number + ",\"text " + number + " has\n\"\"words\"\" " + number +
            "\"," + "abcd"[i % 4] + "\n";
  }
  return text;
}

TEST_F(ImportTest, FoldersBecomeAHierarchy) {
  write_text("texts/sport/tennis/one.txt", "the match was won in two sets\n");
  write_text("texts/sport/tennis/two", "a new champion\n");
  write_text("texts/home garden/\xC3\xBC?.html",
             "<title>Roses</title><p>Cut <b>th</b>em<script>x()</script>");
  write_text("texts/home garden/empty.txt", " ...\n");
  write_text("texts/loose.txt", "in no folder");
  write_text("texts/sport/picture.png", std::string("a\0b", 3));
  ASSERT_EQ(import("texts examples"), 0) << read_text("errors");
  EXPECT_EQ(column("examples/names.tsv", 1),
            "home-garden-html-48d9282e14 sport/tennis/one sport/tennis/two ");
  EXPECT_EQ(column("examples/names.tsv", 3),
            "home_garden sport/tennis sport/tennis ");
  EXPECT_EQ(
      column("examples/names.tsv", 5),
      "home garden/\xC3\xBC?.html sport/tennis/one.txt sport/tennis/two ");
  EXPECT_EQ(column("examples/classes.tsv", 2), "home garden sport/tennis ");
  EXPECT_EQ(column("examples/rejects.tsv", 2),
            "home garden/empty.txt loose.txt sport/picture.png ");
  EXPECT_NE(read_text("examples/vek.rc").find("vek-analyse -l en"),
            std::string::npos);
}

TEST_F(ImportTest, MailIsKnownWhereverItMoves) {
  write_text("mail/new/1.host", "Subject: one\n\nfirst\n");
  write_text("mail/cur/2.host:2,S", "Subject: two\n\nsecond\n");
  write_text("mail/.Work.Travel/cur/3.host:2,", "Subject: three\n\nthird\n");
  fs::create_directories("mail/.Work.Travel/new");
  write_text("mail/tmp/4.host", "Subject: four\n");
  write_text("mail/index", "of the mail program");
  write_text("spam.mbox",
             "From a@b Mon Nov  2 10:00:00 2020\nMessage-ID: <5@host>\n\nx\n");
  ASSERT_EQ(import("mail spam.mbox examples"), 0);
  EXPECT_EQ(column("examples/names.tsv", 6),
            ".Work.Travel/3.host 2.host 1.host 5@host ");
  EXPECT_EQ(column("examples/names.tsv", 3), "Work/Travel mail mail spam ");
  const Files files = files_of("examples");
  fs::rename("mail/new/1.host", "mail/cur/1.host:2,RS");
  ASSERT_EQ(import("mail examples"), 0);
  EXPECT_EQ(files_of("examples"), files);
}

TEST_F(ImportTest, NothingLeadsOutOfTheSourceOrHangs) {
  write_text("texts/a/b.txt", "some words");
  write_text("texts/a/.hidden", "more words");
  write_text("texts/a/\x1B[31m\n..txt", "odd words");
  fs::create_symlink("..", "texts/a/loop");
  fs::create_symlink("/dev/zero", "texts/a/zero");
  ASSERT_EQ(mkfifo("texts/a/fifo", 0600), 0);
  ASSERT_EQ(import("texts examples"), 0);
  EXPECT_EQ(column("examples/rejects.tsv", 2),
            "a/.hidden a/fifo a/loop a/zero ");
  EXPECT_EQ(read_text("errors").find('\x1B'), std::string::npos);
  EXPECT_EQ(import("texts texts/examples"), 2);
  EXPECT_EQ(read_text("errors"),
            "vek-import: texts/examples: it lies in the source texts\n");
}

TEST_F(ImportTest, SecondImportChangesNoByte) {
  write_text("rows.csv", table(0, 40) + "x,too,many,fields\n1,again,a\n,,\n");
  write_text("texts/b/c.txt", "a text in a file");
  ASSERT_EQ(import("-i id rows.csv texts examples"), 0);
  const Files files = files_of("examples");
  write_text("examples/vek.rc", "# mine");
  ASSERT_EQ(import("rows.csv texts examples"), 0);  // settings are kept
  EXPECT_EQ(read_text("examples/vek.rc"), "# mine");
  write_text("examples/vek.rc", files.at("vek.rc"));
  EXPECT_EQ(files_of("examples"), files);
  EXPECT_NE(read_text("output").find("42 known"), std::string::npos);
}

TEST_F(ImportTest, NewRowsAddToWhatIsThere) {
  write_text("rows.csv", table(0, 60));
  ASSERT_EQ(import("-i id rows.csv examples"), 0);
  const Files before = files_of("examples");
  write_text("rows.csv", table(0, 300));
  ASSERT_EQ(import("rows.csv examples"), 0);
  const Files after = files_of("examples");
  for (const auto &[name, text] : before) {
    EXPECT_TRUE(after.at(name).starts_with(text)) << name;
  }
  // Three of ten in each class, of the new ones in the mean.
  const std::string lists = column("examples/names.tsv", 2);
  std::size_t nr_test = 0;
  for (std::size_t at = 0; (at = lists.find("test", at)) != std::string::npos;
       ++at)
    ++nr_test;
  EXPECT_NEAR(static_cast<double>(nr_test), 90, 25);
}

TEST_F(ImportTest, GroupsAndDoublesStayTogether) {
  std::string rows = "who,text,class\n";
  for (int i = 0; i < 200; ++i) {
    rows += "w" + std::to_string(i % 20) + ",words " + std::to_string(i) +
            ",c" + std::to_string(i % 3) + "\n";
  }
  rows += "other,words 1,c0\n";  // in another group and class, maybe the list
  write_text("rows.csv", rows);
  ASSERT_EQ(import("-g who rows.csv examples"), 0);
  std::map<std::string, std::set<std::string>> lists;
  std::ifstream names("examples/names.tsv");
  std::string line;
  std::getline(names, line);
  while (std::getline(names, line)) {
    const std::size_t list = line.find('\t') + 1;
    const std::string name = line.substr(0, list - 1);
    std::string text = read_text("examples/files/" + name + ".txt");
    const int number = std::stoi(text.substr(6));
    lists["group " + std::to_string(number % 20)].insert(
        line.substr(list, line.find('\t', list) - list));
    lists[text].insert(line.substr(list, line.find('\t', list) - list));
  }
  EXPECT_EQ(lists.size(), 220U);
  for (const auto &[what, sides] : lists)
    EXPECT_EQ(sides.size(), 1U) << what;
  const Files files = files_of("examples");
  ASSERT_EQ(import("rows.csv examples"), 0);
  EXPECT_EQ(files_of("examples"), files);
}

TEST_F(ImportTest, NumberOfTestDocumentsHolds) {
  write_text("rows.csv", table(0, 100));
  ASSERT_EQ(import("-T 22 rows.csv examples"), 0);
  EXPECT_NE(read_text("output").find("78 training documents, 22 test"),
            std::string::npos);
  EXPECT_EQ(import("-T 23 rows.csv examples"), 2);
  EXPECT_EQ(read_text("errors"),
            "vek-import: examples/import.json: the test "
            "list was begun with --test 22\n");
}

TEST_F(ImportTest, NearDoublesAreTold) {
  std::string rows = "text,class\n";
  for (int i = 0; i < 100; ++i) {
    std::string words;
    for (int word = 0; word < 60; ++word)
      words += "w" + std::to_string(i * 1000 + word) + " ";
    rows += words + ",a\n" + words + "and one more,b\n";
  }
  write_text("rows.csv", rows);
  ASSERT_EQ(import("rows.csv examples"), 0);
  const std::string likeness = column("examples/near.tsv", 3);
  // Of 100 pairs 42 are in two lists.
  EXPECT_NEAR(static_cast<double>(likeness.size()) / 5, 42, 15);
}

TEST_F(ImportTest, ClassNamesHoldInLists) {
  write_text("rows.jsonl",
             R"({"t": "one", "c": ["a b", "a_b", "?x:y", "..", "q\"\\r"]})"
             "\n"
             R"({"t": ["two", 2, true, null], "c": "x > y/z"})"
             "\n");
  ASSERT_EQ(import("-t t -c c -p ' > ' rows.jsonl examples"), 0);
  EXPECT_EQ(column("examples/names.tsv", 3),
            "a_b a_b-3f0c _x_y _. q__r x/y_z ");
  EXPECT_EQ(read_text("examples/files/" +
                      read_text("examples/train").substr(0, 17) + ".txt"),
            "one");
  EXPECT_NE(read_text("examples/vek.rc").find("maxranks 5"), std::string::npos);
  // The second and later classes of a document count as well.
  write_text("more.csv", "text,class\nthree,x\nfour,w;x\n");
  ASSERT_EQ(import("-s ';' more.csv examples"), 0);
  const std::string told = read_text("output");
  EXPECT_NE(told.find(" 8 classes\n2 documents are in classes that have sons"),
            std::string::npos)
      << told;
}

TEST_F(ImportTest, FiltersMakeText) {
  write_text("texts/a/one.up", "one text");
  write_text("texts/a/$(two) 'x'.name", "");
  write_text("texts/a/three.bad", "three");
  ASSERT_EQ(import("-F 'up=tr a-z A-Z' -F 'name=basename {} .name' "
                   "-F 'bad=exit 3' texts examples"),
            0);
  const Files files = files_of("examples/files");
  ASSERT_EQ(files.size(), 2U);
  EXPECT_EQ(files.begin()->second, "$(two) 'x'\n");
  EXPECT_EQ(files.at("a/one.up.txt"), "ONE TEXT");
  EXPECT_EQ(column("examples/rejects.tsv", 3),
            "the filter `exit 3' failed with status 3 ");
}

TEST_F(ImportTest, SaysWhatIsWrong) {
  write_text("rows.csv", "a,b\nc,d\n");
  write_text("unknown", "???");
  write_text("damaged/names.tsv", "name\nx\ty\n");
  write_text("damaged/files/x", "");
  const std::pair<const char *, const char *> cases[] = {
      {"rows.csv", "arguments: a source and an examples directory are needed"},
      {"nosuch examples", "nosuch: No such file or directory"},
      {"rows.csv examples",
       "DIR/rows.csv: line 1: no column `text'; there are `a' `b'; see --text, "
       "--class and --no-header"},
      {"-t a -c 3 rows.csv examples",
       "DIR/rows.csv: line 1: no column `3'; there are `a' `b'; see --text, "
       "--class and --no-header"},
      {"unknown examples", "DIR/unknown: its form cannot be told; see --form"},
      {"-e x-y rows.csv examples", "--encoding: unknown encoding `x-y'"},
      {"-T 1.5 rows.csv examples",
       "--test: neither a share, as 0.3, nor a number: 1.5"},
      {"rows.csv damaged",
       "damaged/import.dat: it does not belong to names.tsv"},
      {"- examples", "-: its form is to be told"}};
  const std::string here = fs::current_path();
  for (const auto &[arguments, message] : cases) {
    EXPECT_EQ(import(arguments), 2) << arguments;
    std::string errors = read_text("errors");
    if (const auto at = errors.find(here); at != std::string::npos)
      errors.replace(at, here.size(), "DIR");
    EXPECT_EQ(errors, "vek-import: " + std::string(message) + "\n");
  }
  write_text("rows.csv", "text,class\n");
  EXPECT_EQ(import("rows.csv examples"), 1);  // no document
}

TEST_F(ImportTest, KilledAtAnyMomentTheNextCallCompletes) {
  write_text("rows.csv", table(0, 2000) + "1,2\n");
  ASSERT_EQ(import("-g id rows.csv whole"), 0);
  const Files whole = files_of("whole");
  std::mt19937 random(1);
  for (int round = 0; round < 6; ++round) {
    for (int i = 0; i < 3; ++i) {
      const pid_t child = fork();
      if (child == 0) {
        execl(VEK_IMPORT_PROGRAM, "vek-import", "-q", "-g", "id", "rows.csv",
              "killed", nullptr);
        _exit(127);
      }
      std::this_thread::sleep_for(std::chrono::microseconds(random() % 250000));
      kill(child, SIGKILL);
      waitpid(child, nullptr, 0);
    }
    ASSERT_EQ(import("-g id rows.csv killed"), 0) << read_text("errors");
    ASSERT_EQ(files_of("killed"), whole);
    fs::remove_all("killed");
  }
}

TEST_F(ImportTest, WhatWasCommittedIsCompleted) {
  write_text("rows.csv", table(0, 20));
  ASSERT_EQ(import("rows.csv examples"), 0);
  const Files files = files_of("examples");
  // As if the second of two renames had not been done.
  fs::rename("examples/test", "examples/.vek-import-test");
  write_text("examples/.vek-import-commit", "train\ntest\n");
  write_text("examples/.vek-import-new-names", "of no use");
  ASSERT_EQ(import("rows.csv examples"), 0);
  EXPECT_EQ(files_of("examples"), files);
}

TEST_F(ImportTest, TwoAtATimeAreRefused) {
  write_text("rows.csv", table(0, 4));
  ASSERT_EQ(import("rows.csv examples"), 0);
  const int descriptor = open("examples", O_RDONLY);
  ASSERT_EQ(flock(descriptor, LOCK_EX), 0);
  EXPECT_EQ(import("rows.csv examples"), 2);
  EXPECT_EQ(read_text("errors"),
            "vek-import: examples: another import is under way\n");
  close(descriptor);
}

}  // namespace
}  // namespace vek::importing

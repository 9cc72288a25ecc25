// What vek-sort does with texts, as its users see it.
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <thread>

#include "import/naming.h"
#include "sort/sort_run.h"
#include "store/directorylock.h"

namespace vek::sorting {
namespace {

using Words = std::vector<std::string>;

class SortTest : public SortRun {};

TEST_F(SortTest, AnswersAsVekDoes) {
  const char *const texts[] = {"race bicycle", "bread bread race", "gas",
                               "bicycle [race, gas]", "nothing known"};
  for (int i = 0; i < 5; ++i) {
    const std::string name = "t" + std::to_string(i) + ".txt";
    write_text("in/" + name, texts[i]);
    write_text("files/" + name, texts[i]);
    write_text("input/in/" + name, "");
  }
  fs::copy("data", "own");
  write_text("vek.rc", read_text("vek.rc") + " predictions on");
  ASSERT_EQ(run(VEK_PROGRAM " -p -d own").status, 0);
  ASSERT_EQ(sort().status, 0);
  // Name, score and whether it is sure, in the order of the names.
  std::map<std::string, std::string> wanted;
  std::istringstream predictions(read_text("predictions0.tsv"));
  std::string line;
  std::getline(predictions, line);
  while (std::getline(predictions, line)) {
    std::istringstream fields(line);
    Words columns;
    for (std::string field; std::getline(fields, field, '\t');)
      columns.push_back(field);
    const bool is_sure = columns[7] == "1";
    wanted[columns[0]] =
        is_sure ? "sorted " + columns[2] + ' ' + columns[3] : "unsure";
  }
  const Words names = log_column(1);
  ASSERT_EQ(names.size(), 5U);
  EXPECT_EQ(wanted.size(), 5U);
  for (std::size_t i = 0; i < names.size(); ++i) {
    std::string got = log_column(2)[i];
    if (got == "sorted")
      got += ' ' + log_column(4)[i] + ' ' + log_column(5)[i];
    const std::string name = names[i].substr(0, names[i].find('.'));
    EXPECT_EQ(got, wanted[name]) << name;
  }
}

TEST_F(SortTest, TakesTextsOfAnyName) {
  write_text("in/a b.TXT", "race bicycle");
  write_text("in/odd \xFF\n", "race race");
  write_text("in/page.html", "<p>bread</p><script>race race race</script>");
  write_text("in/x", "bread");
  write_text("in/sub/x", "\"gas oven\"");
  write_text("in/.hidden", "race");
  write_text("in/.dir/x", "race");
  write_text("in/tab.csv", "text,class\nrace,sport\n");
  write_text("in/none", " \n");
  write_text("in/bad", std::string("race\0race", 9));
  fs::create_symlink("x", "in/link");
  fs::create_directories("disk");
  fs::create_directories("to");
  fs::create_symlink("../disk", "to/home");
  const Outcome outcome = sort();
  EXPECT_EQ(outcome.status, 1) << outcome.errors;
  EXPECT_EQ(outcome.errors.substr(outcome.errors.rfind('/')),
            "/link: no regular file\n");
  EXPECT_EQ(names_in("in"), ".dir/x .hidden");
  EXPECT_EQ(names_in("to"),
            "rejected/bad rejected/none rejected/tab.csv sport/a b.TXT "
            "sport/odd \xFF\n");
  EXPECT_EQ(names_in("disk"), "page.html x x-2");
  EXPECT_EQ(read_text("to/home/x") + read_text("to/home/x-2"),
            "\"gas oven\"bread");
  EXPECT_EQ(log_column(1), (Words{"a b.TXT", "bad", "none", "odd \xFF\\x0A",
                                  "page.html", "sub/x", "tab.csv", "x"}));
  EXPECT_EQ(log_column(3)[0], "sport/a\\x20b.TXT");
  EXPECT_EQ(log_column(8)[2], "empty");
  // Nothing is ever replaced.
  write_text("in/x", "bread gas");
  EXPECT_EQ(sort().status, 1);
  EXPECT_EQ(read_text("to/home/x-3"), "bread gas");
}

TEST_F(SortTest, ConvertsAsTheImportDid) {
  write_text("import.json",
             R"({"version":1,"test":"0.3","share":0.3,"sources":{)"
             R"("/a":{"filters":["rot=tr a-z n-za-m"]},)"
             R"("/b.csv":{"form":"csv","text":["title","body"]}}})");
  write_text("in/x.rot", "enpr ovplpyr");
  write_text("in/x.eml", "Subject: bread\n\ngas\n");
  EXPECT_EQ(sort().status, 0);
  EXPECT_EQ(names_in("to"), "home/x.eml sport/x.rot");
  write_text("lines", R"({"body":"race","title":"bicycle"})");
  const Outcome outcome = sort("--stream . <lines");
  EXPECT_NE(outcome.output.find("sport"), std::string::npos) << outcome.output;
  write_text("import.json", "{\"version\":2}");
  EXPECT_EQ(sort().errors,
            "vek-sort: ./import.json: no settings of this version\n");
}

// Each text gets both classes here.
class SortBothTest : public SortTest {
 protected:
  SortBothTest() {
    write_text("vek.rc", read_text("vek.rc") + " maxranks 2 minranks 2");
    write_text("in/a.txt", "race bicycle");
  }
  static nlink_t nr_links(const std::string &path) {
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 ? status.st_nlink : 0;
  }
};

TEST_F(SortBothTest, OneFileForSeveralClasses) {
  const std::pair<const char *, nlink_t> modes[] = {
      {"--move", 2}, {"--copy", 1}, {"--link", 3}};
  for (const auto &[mode, count] : modes) {
    SCOPED_TRACE(mode);
    fs::remove_all("to");
    write_text("in/a.txt", "race bicycle");
    const std::string call = std::string(mode) + " --to to . in";
    EXPECT_EQ(sort(call).output, "1 sorted, 0 unsure, 0 rejected, 0 left\n");
    EXPECT_EQ(names_in("to"), "home/a.txt sport/a.txt");
    EXPECT_EQ(nr_links("to/sport/a.txt"), count);
    EXPECT_EQ(nr_links("in/a.txt"), count == 2 ? 0 : count);
    EXPECT_EQ(log_column(3), (Words{"sport/a.txt home/a.txt"}));
    EXPECT_EQ(fs::exists("to/sport/.vek-sort-0"), false);
  }
}

TEST_F(SortBothTest, CopiesATextOnceForEachContent) {
  const std::string call = "--copy --to to . in";
  EXPECT_EQ(sort(call).status, 0);
  fs::remove("to/sport/a.txt");
  EXPECT_EQ(sort(call).output, "0 sorted, 0 unsure, 0 rejected, 0 left\n");
  write_text("in/a.txt", "race bicycle bicycle");
  EXPECT_EQ(sort(call).output, "1 sorted, 0 unsure, 0 rejected, 0 left\n");
  EXPECT_EQ(names_in("to"), "home/a-2.txt home/a.txt sport/a-2.txt");
}

TEST_F(SortTest, SaysWhatIsWrong) {
  const std::tuple<const char *, int, const char *> cases[] = {
      {". in", 2, "vek-sort: --to is needed: a directory to sort into\n"},
      {"", 2, "vek-sort: the directory of a model is needed\n"},
      {"--to in/to . in", 2, "in/to lies in it, and would be sorted\n"},
      {"--to to . .", 2, "ex lies in it, and would be sorted\n"},
      {"--to to . to/in", 2,
       "it lies in the directory into which it would be sorted\n"},
      {"--to . . in", 2, "ex: its folders would be among the model's\n"},
      {"--to to . none", 2, "vek-sort: none: No such file or directory\n"},
      {"--to to files in", 2,
       "vek-sort: files/data: No such file or directory\n"},
      {"--stream . in", 2,
       "vek-sort: one directory is enough for --stream and --learn\n"}};
  fs::create_directories("in");
  fs::create_directories("to/in");
  for (const auto &[call, status, words] : cases) {
    const Outcome outcome = sort(call);
    EXPECT_EQ(outcome.status, status) << call;
    EXPECT_TRUE(outcome.errors.ends_with(words)) << outcome.errors;
  }
  fs::create_directories("to/.vek-sort");
  for (const char *directory : {"to/.vek-sort", "in", "data"}) {
    DirectoryLock lock;
    lock.take(directory, DirectoryLock::Mode::exclusive);
    const Outcome outcome = sort();
    EXPECT_EQ(outcome.status, 11);
    EXPECT_TRUE(outcome.errors.ends_with(std::string(directory) + ": process " +
                                         std::to_string(getpid()) +
                                         " is using it\n"))
        << outcome.errors;
  }
}

TEST_F(SortTest, WaitsForWhatIsBeingWritten) {
  write_text("in/old", "race");
  write_text("in/new", "race");
  fs::last_write_time("in/old",
                      fs::file_time_type::clock::now() - std::chrono::hours(1));
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(run(VEK_SORT_PROGRAM " --settle 0.2 --to to . in").status, 0);
  EXPECT_GT(std::chrono::steady_clock::now() - begin,
            std::chrono::milliseconds(150));
  EXPECT_EQ(log_column(1), (Words{"old", "new"}));
}

TEST_F(SortTest, StreamAnswersEachLine) {
  write_text("lines",
             "{\"id\":7,\"text\":\"race bicycle\"}\n\nno\n"
             "{\"id\":{\"a\":[1]},\"text\":\" \"}\n{\"text\":\"bread\"}");
  const Outcome outcome = sort("--stream . <lines");
  EXPECT_EQ(outcome.status, 1);
  std::istringstream lines(outcome.output);
  const char *const begins[] = {
      R"({"line":1,"id":7,"result":"sorted","classes":["sport"],"scores":[)",
      R"({"line":2,"result":"rejected","reason":"empty"})",
      R"({"line":3,"result":"rejected","reason":"no JSON at byte 2"})",
      R"({"line":4,"id":{"a":[1]},"result":"rejected","reason":"empty"})",
      R"({"line":5,"result":"sorted","classes":["home"],"scores":[)"};
  std::string line;
  for (const char *begin : begins) {
    ASSERT_TRUE(std::getline(lines, line));
    EXPECT_TRUE(line.starts_with(begin)) << line;
  }
  EXPECT_FALSE(std::getline(lines, line));
}

TEST_F(SortTest, StreamEndsAtNoDepth) {
  const std::string deep(200'000, '[');
  const std::string ends(200'000, ']');
  write_text("lines", "{\"text\":\"gas\",\"id\":" + deep + ends + "}\n" +
                          "{\"text\":" + deep + "\n" +
                          R"({"text":"gas","id":[[3]]})");
  const Outcome outcome = sort("--stream . <lines");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_TRUE(outcome.output.starts_with(
      R"({"line":1,"result":"rejected","reason":"nested more than 100 deep"})"))
      << outcome.output;
  EXPECT_NE(outcome.output.find(R"({"line":3,"id":[[3]],)"), std::string::npos);
}

TEST_F(SortTest, StreamDoesNotKeepAnswersBack) {
  const Outcome outcome =
      run("mkfifo lines answers && { " VEK_SORT_PROGRAM
          " --stream . <lines >answers & exec 3>lines 4<answers; "
          "echo '{\"text\":\"race\"}' >&3; head -n 1 <&4; exec 3>&-; wait; }");
  EXPECT_TRUE(outcome.output.starts_with("{\"line\":1,")) << outcome.errors;
}

// Until it holds, or ten seconds have passed.
template <class Condition>
bool comes_true(Condition condition) {
  for (int i = 0; i < 1000 && !condition(); ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  return condition();
}

TEST_F(SortTest, WatchSortsWhatComesAndTakesUpModels) {
  fs::create_directory("in");
  ASSERT_EQ(std::system(VEK_SORT_PROGRAM
                        " --watch --to to . in >out 2>err & echo $! >pid"),
            0);
  const std::string pid = read_text("pid");
  ASSERT_TRUE(comes_true([] { return fs::exists("to/.vek-sort"); }));
  const auto moves_in = [](const std::string &name, const std::string &text) {
    write_text("in/.part", text);
    fs::rename("in/.part", "in/" + name);
  };
  moves_in("a", "race bicycle");
  EXPECT_TRUE(comes_true([] { return fs::exists("to/sport/a"); }));
  fs::create_directories("in/x/y");
  moves_in("x/y/b", "bread");
  EXPECT_TRUE(comes_true([] { return fs::exists("to/home/b"); }));
  fs::create_hard_link("files/a1.txt", "in/linked");
  EXPECT_TRUE(comes_true([] { return fs::exists("to/sport/linked"); }));
  // Another model: what was sport is home now.
  write_text("train", "a1 home\na2 home\nb1 sport\nb2 sport\n");
  ASSERT_EQ(keeping::run_vek().status, 0);
  EXPECT_TRUE(comes_true([&] {
    moves_in("c", "race bicycle");
    return comes_true([] { return !fs::exists("in/c"); }) &&
           fs::exists("to/home/c");
  }));
  EXPECT_EQ(std::system(("kill -TERM " + pid).c_str()), 0);
  EXPECT_TRUE(comes_true([] { return !read_text("out").empty(); }));
  EXPECT_EQ(names_in("in"), "");
  EXPECT_NE(read_text("err").find("vek-sort: the model is "),
            std::string::npos);
}

// So that nobody else locks one of that name and works there as well.
TEST_F(SortTest, WatchEndsWhenADirectoryIsGone) {
  for (const char *directory : {"in", "to"}) {
    SCOPED_TRACE(directory);
    fs::create_directory("in");
    ASSERT_EQ(std::system("(" VEK_SORT_PROGRAM
                          " -q --watch --to to . in 2>err; echo $? >status) &"),
              0);
    write_text("in/a", "bread");
    ASSERT_TRUE(comes_true([] { return fs::exists("to/home/a"); }));
    fs::rename(directory, "old");
    fs::create_directory(directory);
    write_text("in/b", "bread");
    EXPECT_TRUE(comes_true(
        [] { return fs::exists("status") && read_text("status") == "2\n"; }));
    EXPECT_TRUE(read_text("err").ends_with(": it is gone\n"));
    EXPECT_TRUE(fs::exists("in/b"));
    for (const char *rest : {"in", "to", "old", "status"})
      fs::remove_all(rest);
  }
}

TEST_F(SortTest, LeavesATextThatIsBeingWritten) {
  write_text("in/a", "race");
  std::ofstream writer("in/a", std::ios::app);
  EXPECT_EQ(sort().output, "0 sorted, 0 unsure, 0 rejected, 0 left\n");
  writer.close();
  EXPECT_EQ(sort().output, "1 sorted, 0 unsure, 0 rejected, 0 left\n");
}

// A machine that is started anew may number its disks in another way, and a
// text that is moved leaves its inode to the next one.
TEST_F(SortTest, CompletesAJournalOfBeforeTheStart) {
  write_text("in/a", "race bicycle");
  write_text("in/b", "bread gas");
  fs::create_directories("to/.vek-sort");
  fs::create_directories("to/home");
  fs::copy("in/b", "to/home/b");
  fs::last_write_time("to/home/b", fs::last_write_time("in/b"));
  std::string journal = "vek-sort 1\t0\t0\t0\t0\n";
  for (const std::string text : {"in/a\tsport/a", "in/b\thome/b"}) {
    struct stat status = {};
    ASSERT_EQ(stat(text.substr(0, 4).c_str(), &status), 0);
    journal += "77\t" + std::to_string(status.st_ino) + '\t' +
               std::to_string(status.st_size) + '\t' +
               std::to_string(status.st_mtim.tv_sec * 1'000'000'000 +
                              status.st_mtim.tv_nsec) +
               "\tt\\x09journal " + text[3] + '\t' +
               fs::current_path().string() + '/' + text + '\n';
  }
  write_text(
      "to/.vek-sort/journal",
      journal + importing::hexadecimal(importing::hash_of(journal)) + '\n');
  write_text("in/b", "bread");
  EXPECT_EQ(sort().output, "1 sorted, 0 unsure, 0 rejected, 0 left\n");
  EXPECT_EQ(names_in("to"), "home/b home/b-2 sport/a");
  EXPECT_EQ(log_column(1), (Words{"journal a", "journal b", "b"}));
}

bool has_line(const std::string &line) {
  return ('\n' + read_text("train")).find('\n' + line + '\n') !=
         std::string::npos;
}

TEST_F(SortTest, LearnsWhatPeopleMove) {
  write_text("in/one.txt", "race bicycle");
  write_text("in/text two.txt", "bread gas");
  ASSERT_EQ(sort().status, 0);
  const auto learn = [] { return sort("--learn to .").output; };
  const std::string nothing =
      "0 new training documents, 0 in other classes, 0 left out\n";
  EXPECT_EQ(learn(), nothing);
  fs::create_directories("to/new/class");
  fs::rename("to/sport/one.txt", "to/new/class/one.txt");
  fs::rename("to/home/text two.txt", "to/sport/2.txt");
  EXPECT_EQ(learn(),
            "2 new training documents, 0 in other classes, 0 left out\n");
  EXPECT_EQ(learn(), nothing);
  EXPECT_TRUE(has_line("one new/class"));
  EXPECT_EQ(read_text("files/one.txt"), "race bicycle");
  // Back again: to where it was brought.
  fs::rename("to/new/class/one.txt", "to/sport/one.txt");
  EXPECT_EQ(learn(),
            "0 new training documents, 1 in other classes, 0 left out\n");
  EXPECT_EQ(learn(), nothing);
  EXPECT_TRUE(has_line("one sport"));
  // It has size and time in common with one that nobody has moved.
  write_text("in/other.txt", "race goal x!");
  fs::last_write_time("in/other.txt", fs::last_write_time("to/sport/one.txt"));
  ASSERT_EQ(sort().status, 0);
  ASSERT_TRUE(fs::exists("to/sport/other.txt"));
  fs::rename("to/sport/one.txt", "to/home/one.txt");
  EXPECT_NE(learn(), nothing);
  fs::rename("to/home/one.txt", "to/sport/one.txt");
  EXPECT_EQ(learn(),
            "0 new training documents, 1 in other classes, 0 left out\n");
  EXPECT_EQ(keeping::run_vek().status, 0);
  // One that is brought later says nothing, though its words are known.
  write_text("in/three.txt", "bread gas");
  ASSERT_EQ(sort().status, 0);
  EXPECT_EQ(learn(), nothing);
}

TEST_F(SortTest, LearnsFromFoldersOfPeople) {
  write_text("own/sport/long name.txt", "race bicycle bicycle");
  write_text("own/home/long name.txt", "bread");
  write_text("own/home/empty.txt", " ");
  const Outcome outcome = sort("--learn own .");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output,
            "2 new training documents, 0 in other classes, 1 left out\n");
  EXPECT_EQ(sort("--learn own .").output,
            "0 new training documents, 0 in other classes, 1 left out\n");
  write_text("manifest.json", "{}");
  EXPECT_EQ(sort("--learn own .").errors,
            "vek-sort: .: a packed model has no training list to add to\n");
}

}  // namespace
}  // namespace vek::sorting

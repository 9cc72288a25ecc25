#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <functional>
#include <nlohmann/json.hpp>
#include <regex>
#include <vector>

#include "data/small_data.h"

namespace vek::keeping {
namespace {

std::string without_dates(const std::string &text) {
  static const std::regex date("20[0-9T:-]*Z");
  return std::regex_replace(text, date, "DATE");
}

class DataTest : public SmallData {};

TEST_F(DataTest, TellsWhatIsThere) {
  EXPECT_EQ(without_dates(vek_data("info data").output),
            "documents\t5\ndocuments_without_terms\t1\nterms\t6\natoms\t5\n"
            "classes\t3\nclasses_with_documents\t3\nclassifier\tWinnow\n"
            "classes_with_threshold\t1\nheldout_parts\t2\n"
            "shared_probabilities\ttrue\nbytes\t" +
                std::to_string([] {
                  std::size_t size = 0;
                  for (const auto &[name, text] : files_of("data"))
                    size += text.size();
                  return size;
                }()) +
                "\nrepository_bytes\t92\ndead_bytes\t0\n"
                "first_stored\tDATE\nlast_stored\tDATE\n");
  EXPECT_EQ(without_dates(vek_data("list data").output),
            "a1\t2\t20\tDATE\na2\t2\t20\tDATE\nb1\t2\t20\tDATE\n"
            "c1\t3\t28\tDATE\nnone\t0\t4\tDATE\n");
  EXPECT_EQ(without_dates(vek_data("list --empty data").output),
            "none\t0\t4\tDATE\n");
  EXPECT_EQ(vek_data("export data").output,
            "a1\tbicycle race\t1\na1\trace\t1\na2\trace\t1\na2\tbicycle\t1\n"
            "b1\tbread\t1\nb1\tgas oven\t1\n"
            "c1\trace\t1\nc1\tbread\t1\nc1\tnew\t1\n");
}

TEST_F(DataTest, WritesJson) {
  using Json = nlohmann::json;
  const auto info = Json::parse(vek_data("info --json data").output);
  EXPECT_EQ(info["documents"], 5);
  EXPECT_EQ(info["classifier"], "Winnow");
  EXPECT_EQ(without_dates(vek_data("list --empty --json data").output),
            "{\"name\":\"none\",\"terms\":0,\"bytes\":4,\"date\":\"DATE\"}\n");
  EXPECT_EQ(profiles().substr(0, profiles().find('\n')),
            R"({"name":"a1","terms":[{"term":"bicycle race","frequency":1},)"
            R"({"term":"race","frequency":1}]})");
}

TEST_F(DataTest, NamesWithControlCharactersGoRound) {
  fs::copy("files/a1.txt", "files/odd\tname\\\x1B.txt");
  fs::copy("files/a1.txt", "files/no\xFF.txt");
  write_text("train", "odd\tname\\\x1B sport\nno\xFF sport\n");
  ASSERT_EQ(run_vek().status, 0);
  const std::string odd = "odd\\x09name\\\\\\x1B";
  EXPECT_NE(vek_data("list data").output.find(odd + "\t2\t"),
            std::string::npos);
  EXPECT_NE(profiles().find("no\xEF\xBF\xBD"), std::string::npos);
  // The two must not want the directory at the same time.
  const Outcome piped =
      run("{ " VEK_DATA_PROGRAM
          " list data | grep odd | cut -f 1; } | " VEK_DATA_PROGRAM
          " forget data -");
  EXPECT_EQ(piped.status, 0) << piped.errors;
  EXPECT_EQ(vek_data("list data").output.find("odd"), std::string::npos);
}

TEST_F(DataTest, ForgottenDocumentIsAnalysedAnew) {
  const std::string others = profiles();
  const Outcome outcome = vek_data("forget data a2.txt unknown");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.errors, "vek-data: data: there is no document `unknown'\n");
  EXPECT_EQ(vek_data("verify data").output, "");
  // It alone has a text now, and another one.
  fs::remove_all("files");
  write_text("files/a2.txt", "bread");
  ASSERT_EQ(run_vek().status, 0);
  std::string expected = others;
  const std::size_t line = expected.find("{\"name\":\"a2\"");
  expected.replace(line, expected.find('\n', line) - line,
                   R"({"name":"a2","terms":[{"term":"bread","frequency":1}]})");
  EXPECT_EQ(profiles(), expected);
  EXPECT_NE(vek_data("info data").output.find("dead_bytes\t20\n"),
            std::string::npos);
}

TEST_F(DataTest, CompactKeepsAllButTheDeadBytes) {
  ASSERT_EQ(vek_data("forget data a2 none").status, 0);
  write_text("data/journal.tmp", "left over");
  fs::permissions("data", fs::perms::owner_all);
  const std::string profiles_before = profiles();
  const std::string list_before = vek_data("list data").output;
  auto files = files_of("data");
  const Outcome outcome = vek_data("compact data/");
  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  EXPECT_EQ(profiles(), profiles_before);
  EXPECT_EQ(vek_data("list data").output, list_before);
  EXPECT_EQ(vek_data("verify data").output, "");
  EXPECT_EQ(fs::file_size("data/profile-store.000"), 68U);
  EXPECT_EQ(fs::status("data").permissions(), fs::perms::owner_all);
  EXPECT_EQ(fs::status("data/profile-store.idx").permissions(),
            fs::status("before/profile-store.idx").permissions());
  EXPECT_FALSE(fs::exists("data.compact"));
  auto compact = files_of("data");
  files.erase("journal.tmp");
  for (auto *all : {&files, &compact}) {
    all->erase("profile-store.000");
    all->erase("profile-store.idx");
  }
  EXPECT_EQ(compact, files);
  EXPECT_EQ(run_vek().status, 0);
}

TEST_F(DataTest, CompactRefusesWhatItCannotKeep) {
  const std::pair<const char *, std::function<void()>> cases[] = {
      {"data/notes: no file of vek's", [] { write_text("data/notes", ""); }},
      {"data/classes: no file of vek's",
       [] {
         fs::rename("data/classes", "moved");
         fs::create_symlink("../moved", "data/classes");
       }},
      {"data/atoms.dat: line 2: the line is empty",
       [] { write_text("data/atoms.dat", "a\n\n"); }},
      {"data.compact/mine: it is in the way",
       [] { write_text("data.compact/mine", ""); }},
  };
  for (const auto &[words, prepare] : cases) {
    restore();
    prepare();
    const auto files = files_of("data");
    const Outcome outcome = vek_data("compact data");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_NE(outcome.errors.find(words), std::string::npos) << outcome.errors;
    EXPECT_EQ(files_of("data"), files);
  }
}

TEST_F(DataTest, CopyIsEqual) {
  write_text("copied.part/atoms.dat", "of a copy that was broken off");
  EXPECT_EQ(vek_data("copy data copied").status, 0);
  EXPECT_EQ(files_of("copied"), files_of("data"));
  EXPECT_FALSE(fs::exists("copied.part"));
  EXPECT_NE(vek_data("copy data copied").errors.find("there already"),
            std::string::npos);
}

TEST_F(DataTest, BrokenOffRunIsNoDamage) {
  fs::remove("files/c1.txt");
  fs::remove_all("data");
  EXPECT_NE(run_vek().status, 0);
  ASSERT_TRUE(fs::exists("data/journal.dat"));
  const std::string before = profiles();
  EXPECT_EQ(vek_data("verify data").status, 0);
  EXPECT_EQ(vek_data("compact data").status, 0);
  EXPECT_EQ(vek_data("verify data").output, "");
  EXPECT_EQ(profiles(), before);
}

TEST_F(DataTest, IsLocked) {
  const int fd = open("data", O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(flock(fd, LOCK_SH), 0);
  for (const char *command : {"list data", "info data", "verify data",
                              "export data", "copy data copied"})
    EXPECT_EQ(vek_data(command).status, 0) << command;
  for (const char *command : {"forget data a1", "compact data"}) {
    EXPECT_EQ(vek_data(command).status, 2);
    const std::string told = vek_data(command).errors;
    EXPECT_TRUE(told.starts_with("vek-data: data: ")) << told;
    EXPECT_TRUE(told.ends_with(" is using it\n")) << told;
  }
  close(fd);
  // Another call's, which is under way.
  fs::create_directory("data.compact");
  const int other = open("data.compact", O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(flock(other, LOCK_EX), 0);
  EXPECT_EQ(vek_data("compact data").status, 2);
  EXPECT_TRUE(fs::exists("data.compact"));
  close(other);
  EXPECT_EQ(vek_data("compact data").status, 0);
}

TEST_F(DataTest, RefusesWhatIsNoDataDirectory) {
  for (const char *directory : {"missing", "files", "train"}) {
    for (const char *command : {"info ", "list ", "verify ", "compact "})
      EXPECT_EQ(vek_data(std::string(command) + directory).status, 2);
  }
  EXPECT_EQ(run(VEK_DATA_PROGRAM " list data >/dev/full #").status, 2);
}

// ---- Damage.

void put_byte(const std::string &name, std::size_t position, char byte) {
  std::string text = read_text(name);
  text.at(position) = byte;
  write_text(name, text);
}

void cut(const std::string &name, std::size_t size) {
  fs::resize_file(name, size);
}

// Of a name's entry in the index: the repository's number, then offset, length
// and time of four bytes each.
std::size_t entry_of(const std::string &name) {
  return read_text("data/profile-store.idx").find(name + '\0') + name.size() +
         1;
}

struct Damage {
  std::string words;  // the begin of a line, behind "damage: data/" or "note: "
  std::function<void()> make;
};

TEST_F(DataTest, EachDamageIsTold) {
  const std::string index = "data/profile-store.idx";
  const std::string blocks = "data/profile-store.000";
  const Damage cases[] = {
      {"damage: data/atoms.dat: line 3: ",
       [] { write_text("data/atoms.dat", "race\nbicycle\nrace\n"); }},
      {"damage: data/terms.dat: line 1: ", [] { cut("data/terms.dat", 3); }},
      {"damage: data/terms.dat: No such", [] { fs::remove("data/terms.dat"); }},
      {"damage: data/terms.dat: there is no atoms.dat",
       [] { fs::remove("data/atoms.dat"); }},
      {"damage: data/journal.dat: format error",
       [] { write_text("data/journal.dat", "vek journal 1\n"); }},
      {"damage: data/journal.dat: it does not fit",
       [] {
         write_text("data/journal.dat", "vek journal 1\n9 99 0 0 0 0\nend\n");
       }},
      {"damage: data/profile-store.idx: it is missing",
       [=] { fs::remove(index); }},
      {"damage: data/profile-store.idx: damaged index: it ends too early",
       [=] { cut(index, 20); }},
      {"damage: data/profile-store.idx: damaged index: entry 1 has no position",
       [=] { put_byte(index, 18, '\x80'); }},
      {"damage: data/profile-store.000: it lacks bytes",
       [=] { cut(blocks, 80); }},
      {"damage: data/profile-store.idx: the profile of document `a2': it "
       "overlaps that of `a1'",
       [=] { put_byte(index, entry_of("a2") + 4, 16); }},
      {"damage: data/profile-store.000: the profile of document `a1': its "
       "length is wrong",
       [=] { put_byte(blocks, 0, 3); }},
      {"damage: data/profile-store.000: the profile of document `a1': it has "
       "terms that are not known",
       [=] { put_byte(blocks, 7, 1); }},
      {"damage: data/profile-store.000: the profile of document `a1': a term "
       "is there twice",
       [=] { put_byte(blocks, 12, 0); }},
      {"damage: data/classes: line 2: format error",
       [] { cut("data/classes", 8); }},
      {"damage: data/class0.cpf: there is no class table",
       [] { fs::remove("data/classes"); }},
      {"damage: data/class1.cpf: No such",
       [] { fs::remove("data/class1.cpf"); }},
      {"damage: data/class1.cpf: line 3: no class profile of Winnow: an entry",
       [] { cut("data/class1.cpf", 27); }},
      {"damage: data/class1.cpf: line 1: it does not belong",
       [] { put_byte("data/class1.cpf", 2, '7'); }},
      {"damage: data/class2.cpf: line 3: no class profile of Winnow: term 9 is "
       "not known",
       [] {
         const std::string text = read_text("data/class2.cpf");
         put_byte("data/class2.cpf", text.rfind('\n', text.size() - 2) + 1,
                  '9');
       }},
      {"damage: data/class1.cwt: the weights do not fit",
       [] {
         fs::copy_file("data/class2.cwt", "data/class1.cwt",
                       fs::copy_options::overwrite_existing);
       }},
      {"damage: data/classes.cal: format error",
       [] { cut("data/classes.cal", 30); }},
      {"damage: data/class-files.dat: format error",
       [] { write_text("data/class-files.dat", "vek files 1\nclasses 9\n"); }},
      {"damage: data/journal.dat: no regular file",
       [] { EXPECT_EQ(mkfifo("data/journal.dat", 0600), 0); }},
      {"note: data/class9.cpf: of no class",
       [] { write_text("data/class9.cpf", ""); }},
      {"note: data/journal.tmp: left by",
       [] { write_text("data/journal.tmp", ""); }},
      {"note: data/profile-store.new: ",
       [=] {
         fs::copy(index, "data/profile-store.new");
         cut(index, 20);
       }},
      {"note: data/class-files.dat: class files were being replaced",
       [] {
         const std::string table = read_text("data/classes");
         write_text("data/class-files.dat", "vek files 1\nclasses " +
                                                std::to_string(table.size()) +
                                                '\n' + table + "end\n");
         cut("data/classes", 8);
       }},
  };
  for (const Damage &damage : cases) {
    restore();
    damage.make();
    const Outcome outcome = vek_data("verify data");
    EXPECT_TRUE(('\n' + outcome.output).find('\n' + damage.words) !=
                std::string::npos)
        << damage.words << '\n'
        << outcome.output << outcome.errors;
    const bool is_note = damage.words.starts_with("note");
    EXPECT_EQ(outcome.status, is_note ? 0 : 1) << damage.words;
    EXPECT_EQ(outcome.output.find("damage:") == std::string::npos, is_note)
        << outcome.output;
  }
}

}  // namespace
}  // namespace vek::keeping

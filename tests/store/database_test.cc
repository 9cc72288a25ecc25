#include "store/database.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <initializer_list>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "classes/classtab.h"
#include "classes/termset.h"
#include "intake/docprof.h"
#include "params/params.h"
#include "run/textio.h"
#include "store/filestore.h"
#include "support/child_run.h"
#include "support/messages.h"
#include "support/temporary_directory.h"
#include "vocabulary/atomtab.h"
#include "vocabulary/termtab.h"

namespace {

// But not for what the store takes away itself.
constinit bool unlink_fails = false;

}  // namespace

// Every call of the database comes here, since a program goes before its
// libraries.
extern "C" int unlink(const char *path_P) noexcept {
  if (unlink_fails && !std::string_view(path_P).ends_with(".new")) {
    errno = EPERM;
    return -1;
  }
  return static_cast<int>(syscall(SYS_unlinkat, AT_FDCWD, path_P, 0));
}

namespace vek {
namespace {

using std::filesystem::exists;

using Counts = std::initializer_list<std::pair<std::uint32_t, std::uint32_t>>;

DocProfile profile_of(Counts counts) {
  DocProfile profile;
  for (const auto &[term, freq] : counts)
    profile.add_term(term, freq);
  return profile;
}

std::string text_of(const DocProfile &profile) {
  std::string text;
  for (const DocProfileEntry &entry : profile) {
    text += std::to_string(entry.term) + 'x' + std::to_string(entry.freq) + ' ';
  }
  return text;
}

void write_tables() {
  atom_table.write();
  term_table.write();
  data_base.vocabulary_written();
}

// Three terms, two documents, a class with a son.
void learn() {
  const std::uint32_t house = atom_table.enter("house");
  term_table.enter(house, EmptyAtom);
  term_table.enter(house, atom_table.enter("big"));
  term_table.enter(atom_table.enter("tree"), EmptyAtom);
  data_base.put("b", profile_of({{0, 2}, {2, 1}}));
  data_base.put("a", profile_of({}));
  write_tables();
  class_table.get_data(class_table.enter("ex", 0)).nr_docs = 2;
  ClassData &son = class_table.get_data(class_table.enter("earn", 0));
  son.nr_terms = 3;
  son.profile.set_threshold(0.5);
  son.profile[2] = {1, 1, 0.0, 1.0 / 3.0, 0.1, 4, 5};
  son.profile[0] = {2, 1, 0.0, 2.0, 1e-300, 0, 0};
}

// The weights that the class of id 1 was given, in full.
std::string weights() {
  std::string text;
  for (const ClassProfile::Slot &slot : class_table.get_profile(1)) {
    append_exact_real(text, slot.entry.pos_weight);
    text += ' ';
    append_exact_real(text, slot.entry.neg_weight);
    text += ' ';
  }
  return text;
}

class DataBaseTest : public testing::Test {
 protected:
  // A run over the data directory, which reads the classes or not.
  static RunResult run(const std::function<void()> &body,
                       bool with_classes = false) {
    return run_in_child([&] {
      data_base.open("data");
      data_base.read(with_classes);
      errno = 0;
      body();
    });
  }
  static RunResult learn_and_write() {
    return run([] {
      learn();
      data_base.write(true);
    });
  }
  static void expect_failure(const RunResult &result,
                             const std::string &message, int code) {
    EXPECT_EQ(result.screen, "ERROR: " + message + "\naborting... (errno = " +
                                 std::to_string(code) + ")\n");
    EXPECT_EQ(result.status, code);
  }
  static void expect_failure(const RunResult &result,
                             const std::string &message) {
    EXPECT_EQ(result.screen, "ERROR: " + message + "\naborting...\n");
    EXPECT_EQ(result.status, 1);
  }

  TemporaryDirectory directory_;
};

TEST_F(DataBaseTest, FirstRunLeavesTheseFiles) {
  umask(0);
  learn_and_write();
  std::string index = hexadecimal(read_text("data/profile-store.idx"));
  // The times of the two puts, the last field of each entry.
  ASSERT_EQ(index.size(), std::size_t{3 * 44 - 1});
  index.replace(std::size_t{3 * 22}, 11, "-- -- -- --");
  index.replace(std::size_t{3 * 40}, 11, "-- -- -- --");
  const struct {
    const char *name;
    std::string content;
    unsigned mode;
  } files[] = {
      {"atoms.dat", "house\nbig\ntree\n", 0664},
      {"terms.dat",
       "0 4294967295 0 4294967295\n0 1 1 0\n2 4294967295 2 4294967295\n", 0664},
      {"classes", "2\n0\t2\t0\t0\t0\t\"ex\"\n1\t0\t0\t3\t0\t\"earn\"\n", 0664},
      {"class0.cpf", "0\t0\t1\n", 0664},
      {"class0.cwt", "0\t1\n", 0664},
      {"class1.cpf", "2\t3\t0.5\n0\t2\t1\t0\t0\t\n2\t1\t1\t4\t5\t\n", 0664},
      {"class1.cwt", "2\t0.5\n0\t2\t1e-300\n2\t0.3333333333333333\t0.1\n",
       0664},
      {"profile-store.000",
       "02 00 00 00 00 00 00 00 02 00 00 00 02 00 00 00 01 00 00 00 "
       "00 00 00 00",
       0640},
      {"profile-store.idx",
       "01 00 00 00 02 00 00 00 "
       "61 00 00 00 00 00 14 00 00 00 04 00 00 00 -- -- -- -- "
       "62 00 00 00 00 00 00 00 00 00 14 00 00 00 -- -- -- --",
       0640},
  };
  for (const auto &[name, content, mode] : files) {
    const std::string path = std::string("data/") + name;
    std::string found = read_text(path);
    if (path.ends_with(".000"))
      found = hexadecimal(found);
    EXPECT_EQ(path.ends_with(".idx") ? index : found, content) << name;
    EXPECT_EQ(std::filesystem::status(path).permissions(),
              std::filesystem::perms(mode))
        << name;
  }
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator("data"), {}),
            std::ssize(files));
  EXPECT_EQ(std::filesystem::status("data").permissions(),
            std::filesystem::perms(0770));
}

TEST_F(DataBaseTest, DirectoryThatCannotBeMadeEndsTheRun) {
  const RunResult result = run_in_child([] { data_base.open("no/data"); });
  expect_failure(result, "could not create directory `no/data'", ENOENT);
}

TEST_F(DataBaseTest, SecondRunReadsWhatTheFirstWrote) {
  learn_and_write();
  const auto look = [] {
    log_always(1, std::to_string(atom_table.size()) + " atoms, " +
                      std::to_string(class_table.size()) + " classes");
    log_always(1, data_base.exists("b") ? text_of(*data_base.get("b")) : "-");
  };
  EXPECT_EQ(run(look).log,
            "reading profiles...\nread 3 terms\n"
            "3 atoms, 0 classes\n0x2 2x1 \n");
  EXPECT_EQ(run(look, true).log,
            "reading profiles...\nread 3 terms\nreading class profiles...\n"
            "read 2 classes\n3 atoms, 2 classes\n0x2 2x1 \n");
  const auto save = [] { data_base.write(true); };
  const std::string table = read_text("data/classes");
  const std::string profile = read_text("data/class1.cpf");
  run(save, true);
  EXPECT_EQ(read_text("data/classes"), table);
  EXPECT_EQ(read_text("data/class1.cpf"), profile);
}

TEST_F(DataBaseTest, DirectoryWithoutAtomsCountsAsNewButForItsDocuments) {
  learn_and_write();
  std::filesystem::remove("data/atoms.dat");
  const RunResult result = run(
      [] {
        log_always(1, data_base.has_classes() ? "classes" : "no classes");
        log_always(1, data_base.exists("b") ? "b" : "no b");
        log_always(1, text_of(*data_base.get("b")) + '.');
        DocProfile profile;
        data_base.read_profile("b", profile);
        log_always(1, text_of(profile) + '.');
      },
      true);
  const std::string warned =
      "WARNING: stored profile of document \"b\" has terms that are not "
      "known\n";
  EXPECT_EQ(result.log, "no classes\nb\n" + warned + ".\n" + warned + ".\n");
  EXPECT_EQ(result.status, 0);
}

TEST_F(DataBaseTest, UnknownTermsAreDroppedFromAProfile) {
  learn_and_write();
  run([] { data_base.put("c", profile_of({{1, 7}, {3, 1}, {2, 5}})); });
  const RunResult result =
      run([] { log_always(1, text_of(*data_base.get("c"))); });
  EXPECT_EQ(result.screen,
            "WARNING: stored profile of document \"c\" has terms that are not "
            "known\n");
  EXPECT_TRUE(result.log.ends_with("1x7 2x5 \n")) << result.log;
}

TEST_F(DataBaseTest, CacheKeepsTheProfilesThatWereRead) {
  learn_and_write();
  const RunResult result = run([] {
    active_terms.insert(2);
    const DocProfile *profile_P = data_base.get("b");
    log_always(1, text_of(*profile_P));
    // Neither read nor filtered again, and never replaced.
    active_terms.insert(0);
    data_base.put("b", profile_of({{1, 9}}));
    log_always(1, data_base.get("b") == profile_P ? "same" : "other");
    log_always(1, text_of(*profile_P));
    DocProfile whole;
    data_base.read_profile("b", whole);
    log_always(1, text_of(whole));
    // From the store again, with the set as it is now.
    data_base.clear_cache();
    active_terms.insert(7);
    log_always(1, text_of(*data_base.get("b")));
    data_base.release_profiles();
    log_always(1, data_base.cache().at("b") == nullptr ? "free" : "kept");
  });
  EXPECT_EQ(result.log,
            "reading profiles...\nread 3 terms\n"
            "2x1 \nsame\n2x1 \n0x2 2x1 \n0x2 2x1 \nfree\n");
  EXPECT_EQ(std::filesystem::file_size("data/profile-store.000"), 24U);
}

TEST_F(DataBaseTest, DocumentThatCannotBeHadEndsTheRun) {
  learn_and_write();
  FileStore *store_P = filestore_open("data/profile-store");
  const std::pair<const char *, std::string> blocks[] = {
      {"empty", ""},
      {"short", std::string("\1\0\0", 3)},
      {"cut", std::string("\1\0\0\0\2\0\0\0\1\0\0", 11)},
      {"more", std::string("\0\0\0\0\2", 5)},
      {"lies", std::string("\1\0\0\x20\0\0\0\0\1\0\0\0", 12)},
  };
  for (const auto &[name, block] : blocks) {
    filestore_put_file(store_P, name, block.data(),
                       static_cast<unsigned>(block.size()));
  }
  filestore_close(store_P);
  const auto get = [](const char *name) {
    return run([&] { data_base.get(name); });
  };
  const auto read = [](const char *name) {
    return run([&] {
      DocProfile profile;
      data_base.read_profile(name, profile);
    });
  };
  for (const auto &[name, block] : blocks) {
    const std::string message =
        std::string(
            "could not build profile from stored data for document "
            "\"") +
        name + '"';
    expect_failure(get(name), message);
    expect_failure(read(name), message);
  }
  const std::string message =
      "could not retrieve profile for \"none\" from profile store";
  expect_failure(get("none"), message);
  expect_failure(read("none"), message);
}

TEST_F(DataBaseTest, DamagedSetOfClassFilesTouchesNone) {
  learn_and_write();
  const std::string content = read_text("data/classes");
  const std::string start = "vek files 1\nclasses 3\nabc";
  for (const std::string &damaged :
       {std::string("vek files 1\nclasses 100000\nabc"), start,
        start + "end\nx", start + "atoms.dat 1\nxend\n",
        start + "../class1.cpf 1\nxend\n", start + "class.cpf 1\nxend\n"}) {
    write_text("data/class-files.dat", damaged);
    expect_failure(run([] {}), "format error in file `data/class-files.dat'");
    EXPECT_EQ(read_text("data/classes"), content);
  }
}

// Known before any is touched, so that the next run has nothing to complete.
TEST_F(DataBaseTest, ClassFileThatCannotBeOpenedLeavesAllOldOnes) {
  learn_and_write();
  write_text("data/classes", "old");
  std::filesystem::remove("data/class1.cpf");
  std::filesystem::create_directory("data/class1.cpf");
  EXPECT_EQ(learn_and_write().status, EISDIR);
  EXPECT_EQ(read_text("data/classes"), "old");
  EXPECT_FALSE(std::filesystem::exists("data/class-files.tmp"));
  EXPECT_EQ(run([] {}).status, 0);
}

TEST_F(DataBaseTest, ClassFilesThatCannotBeReadEndTheRun) {
  learn_and_write();
  for (const std::string name : {"classes", "class0.cpf", "class1.cpf"}) {
    const std::string path = "data/" + name;
    const std::string content = read_text(path);
    write_text(path, content + "x");
    expect_failure(run_in_child([] {
                     data_base.open("data");
                     errno = 0;
                     data_base.read(true);
                   }),
                   "error reading file `" + path + "'");
    std::filesystem::remove(path);
    expect_failure(run([] {}, true),
                   "cannot open file `" + path + "' for reading", ENOENT);
    write_text(path, content);
  }
  EXPECT_EQ(run([] {}, true).status, 0);
}

// Under a name that cannot be written to, and one that takes no byte.
TEST_F(DataBaseTest, ClassFilesThatCannotBeWrittenEndTheRun) {
  learn_and_write();
  const auto save = [] { data_base.write(true); };
  for (const std::string name :
       {"classes", "class0.cpf", "class1.cpf", "class1.cwt"}) {
    const std::string path = "data/" + name;
    const std::string content = read_text(path);
    std::filesystem::remove(path);
    std::filesystem::create_directory(path);
    const auto learn_and_save = [&] {
      learn();
      save();
    };
    expect_failure(run(learn_and_save),
                   "cannot open file `" + path + "' for writing", EISDIR);
    std::filesystem::remove(path);
    std::filesystem::create_symlink("/dev/full", path);
    expect_failure(run(learn_and_save), "error writing file `" + path + "'",
                   ENOSPC);
    // Half a file would be taken for a whole one.
    EXPECT_FALSE(std::filesystem::is_symlink(path));
    write_text(path, content);
  }
}

TEST_F(DataBaseTest, HalfWrittenFileThatStaysIsNamed) {
  learn_and_write();
  std::filesystem::remove("data/class1.cpf");
  std::filesystem::create_symlink("/dev/full", "data/class1.cpf");
  const RunResult result = run([] {
    learn();
    unlink_fails = true;
    data_base.write(true);
  });
  expect_failure(result,
                 "error writing file `data/class1.cpf'\n"
                 "ERROR: error deleting file `data/class1.cpf'",
                 EPERM);
}

TEST_F(DataBaseTest, JournalThatCannotBeRemovedEndsTheRun) {
  const RunResult result = run([] {
    learn();
    atom_table.enter("more");
    data_base.sync();
    unlink_fails = true;
    write_tables();
  });
  expect_failure(result, "error deleting file `data/journal.dat'", EPERM);
}

TEST_F(DataBaseTest, WritesOnlyWhenTold) {
  run([] {
    learn();
    data_base.write(false);
  });
  EXPECT_FALSE(exists("data/classes"));
  EXPECT_FALSE(exists("data/class0.cpf"));
  EXPECT_EQ(learn_and_write().log.substr(0, 60),
            "reading profiles...\nread 3 terms\nwriting class profiles...\n");
}

TEST_F(DataBaseTest, NameThatCannotBeStoredTouchesNoClassFile) {
  learn_and_write();
  const std::string before = read_text("data/classes");
  for (const std::string name : {"a\"b", "end\\", "two\nlines"}) {
    const RunResult result = run([&] {
      learn();
      class_table.enter(name, 0);
      class_table.get_data(0).nr_docs = 99;
      data_base.write(true);
    });
    expect_failure(result, "class name `" + name +
                               "' cannot be stored, class files are not "
                               "written");
    EXPECT_EQ(result.log.find("writing class profiles"), std::string::npos);
    EXPECT_EQ(read_text("data/classes"), before);
  }
}

TEST_F(DataBaseTest, WeightsComeBackToTheLastBit) {
  learn_and_write();
  const RunResult result = run(
      [] {
        data_base.read_weights();
        write_text("weights", weights());
      },
      true);
  EXPECT_EQ(result.screen, "");
  EXPECT_EQ(read_text("weights"), "2 1e-300 0.3333333333333333 0.1 ");
}

TEST_F(DataBaseTest, WeightsThatDoNotFitAreZero) {
  learn_and_write();
  const auto load = [] {
    return run(
        [] {
          data_base.read_weights();
          write_text("weights", weights());
        },
        true);
  };
  const char *const contents[] = {
      "",
      "1\n0\t2\t1\n",
      "3\n0\t2\t1\n2\t3\t4\n5\t6\t7\n",
      "2\n0\t2\t1\n1\t3\t4\n",
      "2\n0\t2\t1\n2\t3\n",
      "2\n0\t2\t1\n2\t3\tnan\n",
      "2\n0\t2\t1\n2\t3\t4\n5",
      "99999999999999999999\n",
  };
  for (const char *content : contents) {
    SCOPED_TRACE(content);
    write_text("data/class1.cwt", content);
    const RunResult result = load();
    EXPECT_EQ(result.screen,
              "WARNING: classifier weights in file `data/class1.cwt' do not "
              "fit the class, using 0\n");
    EXPECT_EQ(read_text("weights"), "0 0 0 0 ");
    EXPECT_EQ(result.status, 0);
  }
  std::filesystem::remove("data/class1.cwt");
  EXPECT_EQ(load().screen,
            "WARNING: cannot read classifier weights from file "
            "`data/class1.cwt', using 0\n");
  EXPECT_EQ(read_text("weights"), "0 0 0 0 ");
}

TEST_F(DataBaseTest, OnlyWinnowKeepsWeightsOfItsOwn) {
  for (const Algorithm algorithm : {Algorithm::rocchio, Algorithm::sbc}) {
    params.set_algorithm(algorithm);
    learn_and_write();
    EXPECT_FALSE(exists("data/class1.cwt"));
    EXPECT_EQ(run([] { data_base.read_weights(); }, true).screen, "");
  }
}

TEST_F(DataBaseTest, SyncNeedsAnOpenStore) {
  EXPECT_DEATH(data_base.sync(), "profile_store");
}

}  // namespace
}  // namespace vek

#include "store/database.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "classes/classtab.h"
#include "classes/termset.h"
#include "intake/docprof.h"
#include "params/params.h"
#include "store/filestore.h"
#include "support/child_run.h"
#include "support/collection_fixture.h"
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

unsigned mode_of(const std::filesystem::path &path) {
  return static_cast<unsigned>(std::filesystem::status(path).permissions());
}

std::string text_of(const DocProfile &profile) {
  std::string text;
  for (const DocProfileEntry &entry : profile)
    text += std::to_string(entry.term) + 'x' + std::to_string(entry.freq) + ' ';
  return text;
}

// Three terms, two documents, a class with a son.
void learn() {
  const std::uint32_t house = atom_table.enter("house");
  term_table.enter(house, EmptyAtom);
  term_table.enter(house, atom_table.enter("big"));
  term_table.enter(atom_table.enter("tree"), EmptyAtom);
  data_base.put("b", make_profile({{0, 2}, {2, 1}}));
  data_base.put("a", make_profile({}));
  data_base.write_vocabulary();
  class_table.get_data(class_table.enter("ex", 0)).nr_docs = 2;
  ClassData &son = class_table.get_data(class_table.enter("earn", 0));
  son.nr_terms = 3;
  son.profile.set_threshold(0.5);
  son.profile[2] = {1, 1, 0.0, 1.0 / 3.0, 0.1, 4, 5};
  son.profile[0] = {2, 1, 0.0, 2.0, 1e-300, 0, 0};
}

// After a first run.
class DataBaseTest : public testing::Test {
 protected:
  DataBaseTest() {
    umask(0);
    learn_and_write();
  }
  // A run over the data directory, which reads the classes or not.
  static RunResult run(const std::function<void()> &body,
                       bool with_classes = false) {
    return run_in_child([&] {
      data_base.open("data");
      errno = 0;
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
  // `code` is the errno of a failing call, or 0 for any other failure.
  static void expect_failure(const RunResult &result,
                             const std::string &message, int code = 0) {
    const std::string told =
        code == 0 ? "" : " (errno = " + std::to_string(code) + ')';
    EXPECT_EQ(result.screen,
              "ERROR: " + message + "\naborting..." + told + '\n');
    EXPECT_EQ(result.status, code == 0 ? 1 : code);
  }

  TemporaryDirectory directory_;
};

TEST_F(DataBaseTest, FirstRunLeavesTheseFiles) {
  const std::map<std::string, unsigned> modes = {
      {"atoms.dat", 0664},         {"terms.dat", 0664},
      {"classes", 0664},           {"class0.cpf", 0664},
      {"class0.cwt", 0664},        {"class1.cpf", 0664},
      {"class1.cwt", 0664},        {"profile-store.000", 0640},
      {"profile-store.idx", 0640}, {"", 0770},
  };
  std::map<std::string, unsigned> found = {{"", mode_of("data")}};
  for (const auto &item : std::filesystem::directory_iterator("data"))
    found[item.path().filename()] = mode_of(item.path());
  EXPECT_EQ(found, modes);
}

TEST_F(DataBaseTest, DirectoryThatCannotBeMadeEndsTheRun) {
  expect_failure(run_in_child([] { data_base.open("no/data"); }),
                 "could not create directory `no/data'", ENOENT);
}

TEST_F(DataBaseTest, SecondRunReadsWhatTheFirstWroteToTheLastBit) {
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
  const auto class_files = [] {
    return read_text("data/classes") + read_text("data/class1.cpf") +
           read_text("data/class1.cwt");
  };
  const std::string before = class_files();
  const auto read_and_write = [] {
    data_base.read_weights();
    data_base.write(true);
  };
  EXPECT_EQ(run(read_and_write, true).screen, "");
  EXPECT_EQ(class_files(), before);
}

TEST_F(DataBaseTest, DirectoryWithoutAtomsCountsAsNewButForItsDocuments) {
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

TEST_F(DataBaseTest, CacheKeepsTheProfilesThatWereRead) {
  const RunResult result = run([] {
    active_terms.insert(2);
    const DocProfile *profile_P = data_base.get("b");
    log_always(1, text_of(*profile_P));
    // Neither read nor filtered again, and never replaced.
    active_terms.insert(0);
    data_base.put("b", make_profile({{1, 9}}));
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
  FileStore *store_P = filestore_open("data/profile-store");
  filestore_put_file(store_P, "short", "\0\0", 3);
  filestore_put_file(store_P, "lies", "\1\0\0\x20\0\0\0\0\1\0\0", 12);
  filestore_close(store_P);
  for (const std::string name : {"short", "lies", "none"}) {
    const std::string message =
        name == "none"
            ? "could not retrieve profile for \"none\" from profile store"
            : "could not build profile from stored data for document \"" +
                  name + '"';
    expect_failure(run([&] { data_base.get(name); }), message);
    DocProfile profile;
    expect_failure(run([&] { data_base.read_profile(name, profile); }),
                   message);
  }
}

TEST_F(DataBaseTest, DamagedSetOfClassFilesTouchesNone) {
  const std::string content = read_text("data/classes");
  const std::string start = "vek files 1\nclasses 3\nabc";
  for (const std::string &damaged :
       {std::string("vek files 1\nclasses 100000\nabc"), start,
        std::string("vek files 2\nend\n"), start + "end\nx",
        start + "atoms.dat 1\nxend\n", start + "../class1.cpf 1\nxend\n",
        start + "class.cpf 1\nxend\n"}) {
    write_text("data/class-files.dat", damaged);
    expect_failure(run([] {}), "format error in file `data/class-files.dat'");
    EXPECT_EQ(read_text("data/classes"), content);
  }
}

TEST_F(DataBaseTest, ClassFilesThatCannotBeReadEndTheRun) {
  for (const std::string name : {"classes", "class0.cpf", "class1.cpf"}) {
    const std::string path = "data/" + name;
    const std::string content = read_text(path);
    write_text(path, content + "x");
    expect_failure(run([] {}, true), "error reading file `" + path + "'");
    std::filesystem::remove(path);
    expect_failure(run([] {}, true),
                   "cannot open file `" + path + "' for reading", ENOENT);
    write_text(path, content);
  }
  EXPECT_EQ(run([] {}, true).status, 0);
}

// Under a name that cannot be written to, and one that takes no byte.
TEST_F(DataBaseTest, ClassFilesThatCannotBeWrittenEndTheRun) {
  for (const std::string name :
       {"classes", "class0.cpf", "class1.cpf", "class1.cwt"}) {
    const std::string path = "data/" + name;
    const std::string other =
        name == "classes" ? "data/class0.cpf" : "data/classes";
    write_text(other, "old");
    std::filesystem::remove(path);
    std::filesystem::create_directory(path);
    expect_failure(learn_and_write(),
                   "cannot open file `" + path + "' for writing", EISDIR);
    // Known before any is touched: the next run has nothing to complete.
    EXPECT_EQ(read_text(other), "old");
    EXPECT_FALSE(exists("data/class-files.tmp"));
    EXPECT_FALSE(exists("data/class-files.dat"));
    std::filesystem::remove(path);
    std::filesystem::create_symlink("/dev/full", path);
    const std::string message = "error writing file `" + path + "'";
    expect_failure(run([] {
                     learn();
                     unlink_fails = true;
                     data_base.write(true);
                   }),
                   message + "\nERROR: error deleting file `" + path + "'",
                   EPERM);
    expect_failure(learn_and_write(), message, ENOSPC);
    // Half a file would be taken for a whole one.
    EXPECT_FALSE(std::filesystem::is_symlink(path));
    EXPECT_EQ(run([] {}).status, 0);
    EXPECT_NE(read_text(path), "");
  }
}

TEST_F(DataBaseTest, OnlyWinnowKeepsWeightsOfItsOwn) {
  for (const Algorithm algorithm : {Algorithm::rocchio, Algorithm::sbc}) {
    params.set_algorithm(algorithm);
    std::filesystem::remove("data/class1.cwt");
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

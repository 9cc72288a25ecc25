#include "store/database.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "store/data_run.h"

namespace vek {
namespace {

using std::filesystem::exists;

const ClassFileFormat format = {ProfileColumns::updates, ".cwt",
                                write_winnow_weights, parse_winnow_weights};

// Two terms, a document, a class with a son.
void learn_and_write(Data &data) {
  data.terms.enter(data.atoms.enter("house"), EmptyAtom);
  data.terms.enter(0, data.atoms.enter("big"));
  DocProfile profile;
  profile.add_term(1, 2);
  data.base.put("b", profile);
  data.base.write_vocabulary();
  data.classes.enter_path("earn", data.classes.enter("ex", 0));
  data.base.write(format, "");
}

// After a first run.
class DataBaseTest : public testing::Test {
 protected:
  DataBaseTest() { run_over_data(learn_and_write); }

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

TEST_F(DataBaseTest, DirectoryWithoutAtomsCountsAsNewButForItsDocuments) {
  std::filesystem::remove("data/atoms.dat");
  const RunResult result = run_over_data([](Data &data) {
    const bool is_right = !data.base.has_classes() && data.base.exists("b") &&
                          data.base.get("b")->size() == 0;
    std::exit(is_right ? 7 : 8);
  });
  EXPECT_EQ(result.screen,
            "WARNING: stored profile of document \"b\" has terms that are not "
            "known\n");
  EXPECT_EQ(result.status, 7);
}

TEST_F(DataBaseTest, DocumentThatCannotBeHadEndsTheRun) {
  FileStore *store_P = filestore_open("data/profile-store");
  filestore_put_file(store_P, "short", "\0\0", 3);
  filestore_put_file(store_P, "lies", "\1\0\0\x20\0\0\0\0\1\0\0", 12);
  filestore_close(store_P);
  for (const std::string name : {"short", "lies", "none"}) {
    expect_failure(
        run_over_data([&](Data &data) { data.base.get(name); }),
        name == "none"
            ? "could not retrieve profile for \"none\" from profile store"
            : "could not build profile from stored data for document \"" +
                  name + '"');
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
    expect_failure(run_over_data(learn_and_write),
                   "format error in file `data/class-files.dat'");
    EXPECT_EQ(read_text("data/classes"), content);
  }
}

// Under a name that cannot be written to, and one that takes no byte.
TEST_F(DataBaseTest, ClassFilesThatCannotBeWrittenEndTheRun) {
  for (const std::string name : {"classes", "class1.cwt"}) {
    const std::string path = "data/" + name;
    write_text("data/class0.cpf", "old");
    std::filesystem::remove(path);
    std::filesystem::create_directory(path);
    expect_failure(run_over_data(learn_and_write),
                   "cannot open file `" + path + "' for writing", EISDIR);
    // Known before any is touched: the next run has nothing to complete.
    EXPECT_EQ(read_text("data/class0.cpf"), "old");
    EXPECT_FALSE(exists("data/class-files.tmp"));
    EXPECT_FALSE(exists("data/class-files.dat"));
    std::filesystem::remove(path);
    std::filesystem::create_symlink("/dev/full", path);
    expect_failure(run_over_data(learn_and_write),
                   "error writing file `" + path + "'", ENOSPC);
    // Half a file would be taken for a whole one.
    EXPECT_FALSE(std::filesystem::is_symlink(path));
    EXPECT_EQ(run_over_data([](Data &) {}).status, 0);
    EXPECT_NE(read_text(path), "");
  }
}

}  // namespace
}  // namespace vek

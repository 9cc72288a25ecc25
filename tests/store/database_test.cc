#include "store/database.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "store/data_run.h"

namespace vek {
namespace {

using std::filesystem::exists;

const ClassFileFormat format = {ProfileColumns::updates, ".cwt",
                                write_winnow_weights, parse_winnow_weights};

std::string text_of(const DocProfile &profile) {
  std::string text;
  for (const DocProfileEntry &entry : profile)
    text += std::to_string(entry.term) + 'x' + std::to_string(entry.freq) + ' ';
  return text;
}

// Three terms, two documents, a class with a son.
void learn_and_write(Data &data) {
  data.terms.enter(data.atoms.enter("house"), EmptyAtom);
  data.terms.enter(0, data.atoms.enter("big"));
  data.terms.enter(data.atoms.enter("tree"), EmptyAtom);
  DocProfile profile;
  data.base.put("a", profile);
  profile.add_term(0, 2);
  profile.add_term(2, 1);
  data.base.put("b", profile);
  data.base.write_vocabulary();
  data.classes.get_data(data.classes.enter("ex", 0)).nr_docs = 2;
  ClassData &son = data.classes.get_data(data.classes.enter("earn", 0));
  son.nr_terms = 3;
  son.profile.set_threshold(0.5);
  son.profile[2] = {1, 1, 0.0, 1.0 / 3.0, 0.1, 4, 5};
  son.profile[0] = {2, 1, 0.0, 2.0, 1e-300, 0, 0};
  data.base.write(format);
}

// After a first run.
class DataBaseTest : public testing::Test {
 protected:
  DataBaseTest() { run(learn_and_write); }

  template <class Body>
  static RunResult run(Body body, bool with_classes = false) {
    return run_over_data(body, with_classes, format);
  }
  static void nothing(Data &) {}

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

TEST_F(DataBaseTest, SecondRunReadsWhatTheFirstWroteToTheLastBit) {
  const auto look = [](Data &data) {
    logf_always(1, "%u atoms, %zu classes", data.atoms.size(),
                data.classes.size());
    log_always(1, text_of(*data.base.get("b")));
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
  const auto read_and_write = [](Data &data) {
    data.base.read_weights(format);
    data.base.write(format);
  };
  EXPECT_EQ(run(read_and_write, true).screen, "");
  EXPECT_EQ(class_files(), before);
}

TEST_F(DataBaseTest, DirectoryWithoutAtomsCountsAsNewButForItsDocuments) {
  std::filesystem::remove("data/atoms.dat");
  const RunResult result = run(
      [](Data &data) {
        log_always(1, data.base.has_classes() ? "classes" : "no classes");
        log_always(1, data.base.exists("b") ? "b" : "no b");
        log_always(1, text_of(*data.base.get("b")) + '.');
      },
      true);
  EXPECT_EQ(result.log,
            "no classes\nb\nWARNING: stored profile of document \"b\" has "
            "terms that are not known\n.\n");
  EXPECT_EQ(result.status, 0);
}

TEST_F(DataBaseTest, DocumentThatCannotBeHadEndsTheRun) {
  FileStore *store_P = filestore_open("data/profile-store");
  filestore_put_file(store_P, "short", "\0\0", 3);
  filestore_put_file(store_P, "lies", "\1\0\0\x20\0\0\0\0\1\0\0", 12);
  filestore_close(store_P);
  for (const std::string name : {"short", "lies", "none"}) {
    expect_failure(
        run([&](Data &data) { data.base.get(name); }),
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
    expect_failure(run(nothing), "format error in file `data/class-files.dat'");
    EXPECT_EQ(read_text("data/classes"), content);
  }
}

TEST_F(DataBaseTest, ClassFilesThatCannotBeReadEndTheRun) {
  for (const std::string name : {"classes", "class0.cpf", "class1.cpf"}) {
    const std::string path = "data/" + name;
    const std::string content = read_text(path);
    write_text(path, content + "x");
    expect_failure(run(nothing, true), "error reading file `" + path + "'");
    std::filesystem::remove(path);
    expect_failure(run(nothing, true),
                   "cannot open file `" + path + "' for reading", ENOENT);
    write_text(path, content);
  }
  EXPECT_EQ(run(nothing, true).status, 0);
}

// Under a name that cannot be written to, and one that takes no byte.
TEST_F(DataBaseTest, ClassFilesThatCannotBeWrittenEndTheRun) {
  for (const std::string name : {"classes", "class1.cpf", "class1.cwt"}) {
    const std::string path = "data/" + name;
    write_text("data/class0.cpf", "old");
    std::filesystem::remove(path);
    std::filesystem::create_directory(path);
    expect_failure(run(learn_and_write),
                   "cannot open file `" + path + "' for writing", EISDIR);
    // Known before any is touched: the next run has nothing to complete.
    EXPECT_EQ(read_text("data/class0.cpf"), "old");
    EXPECT_FALSE(exists("data/class-files.tmp"));
    EXPECT_FALSE(exists("data/class-files.dat"));
    std::filesystem::remove(path);
    std::filesystem::create_symlink("/dev/full", path);
    expect_failure(run(learn_and_write), "error writing file `" + path + "'",
                   ENOSPC);
    // Half a file would be taken for a whole one.
    EXPECT_FALSE(std::filesystem::is_symlink(path));
    EXPECT_EQ(run(nothing).status, 0);
    EXPECT_NE(read_text(path), "");
  }
}

}  // namespace
}  // namespace vek

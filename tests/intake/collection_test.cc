#include "intake/collection.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <string>

#include "classes/classtab.h"
#include "intake/analyser.h"
#include "params/params.h"
#include "store/database.h"
#include "support/child_run.h"
#include "support/messages.h"
#include "support/temporary_directory.h"
#include "vocabulary/atomtab.h"
#include "vocabulary/termtab.h"

namespace vek {
namespace {

using namespace std::string_literals;

std::string lines_of(const std::string &text) {
  ListReader reader(text);
  std::string out;
  for (std::string line; reader.next(line);) {
    out += std::to_string(reader.line_number()) + '<' + line + '>';
  }
  return out + (reader.too_long() ? " too long" : "");
}

TEST(ListReader, GivesTheLinesUpToOneThatIsTooLong) {
  const std::string longest(2047, 'x');
  const struct {
    std::string text;
    std::string lines;
  } cases[] = {
      {"", ""},
      {"a b\nc d\n", "1<a b>2<c d>"},
      {"a b\nc d", "1<a b>2<c d>"},
      {"\n\na\n", "1<>2<>3<a>"},
      {"a\r\nb\0c\n"s, "1<a\r>2<b\0c>"s},
      {longest + "\nb\n", "1<" + longest + ">2<b>"},
      {longest, "1<" + longest + ">"},
      {"a\n" + longest + "x\nb\n", "1<a> too long"},
      {longest + "x", " too long"},
  };
  for (const auto &[text, lines] : cases)
    EXPECT_EQ(lines_of(text), lines);
}

std::string parsed(const std::string &line) {
  ListEntry entry;
  if (!parse_list_line(line, entry))
    return "malformed";
  std::string out = '<' + entry.document + '>';
  for (const std::string &path : entry.classes)
    out += '(' + path + ')';
  return out;
}

TEST(ListLine, IsADocumentAndItsCleanedClasses) {
  const struct {
    std::string line;
    std::string entry;
  } cases[] = {
      {"doc1 earn", "<doc1>(earn)"},
      {"doc1.txt earn acq", "<doc1>(earn)(acq)"},
      {"doc1   earn  acq  ", "<doc1>(earn)(acq)"},
      {"doc1 earn earn", "<doc1>(earn)(earn)"},
      {"sub/doc.txt.txt sport/tennis", "<sub/doc.txt>(sport/tennis)"},
      {".txt a", "<.txt>(a)"},
      {"x.txt.gz a", "<x.txt.gz>(a)"},
      {"x.TXT a", "<x.TXT>(a)"},
      // Colon first, then one question mark.
      {"d ?earn:0.5", "<d>(earn)"},
      {"d ??a ?:b :c ?", "<d>(?a)()()()"},
      {"d a:b:c a?b", "<d>(a)(a?b)"},
      // Only the blank separates.
      {"d\te a\tb\r", "<d\te>(a\tb\r)"},
      {" doc1 earn", "<>(doc1)(earn)"},
      {"  doc1", "<>(doc1)"},
      {"", "malformed"},
      {" ", "malformed"},
      {"doc1", "malformed"},
      {"doc1   ", "malformed"},
      {"doc1 e\0rn"s, "malformed"},
      {std::string(2045, 'd') + " c", "<" + std::string(2045, 'd') + ">(c)"},
  };
  for (const auto &[line, entry] : cases)
    EXPECT_EQ(parsed(line), entry) << line;
}

TEST(BaseName, IsTheLastComponentWithItsSlash) {
  const struct {
    const char *directory;
    const char *name;
  } cases[] = {
      {"/a/b", "b"},  {"/a/b/", "b/"}, {"a", "a"},   {"a/", "a/"},
      {"a//", "/"},   {"/", "/"},      {"//", "/"},  {"", ""},
      {"../x", "x"},  {"..", ".."},    {"./", "./"}, {"/a.b/c d", "c d"},
      {"a/./.", "."},
  };
  for (const auto &[directory, name] : cases)
    EXPECT_EQ(base_name(directory), name) << directory;
  TemporaryDirectory here;
  std::filesystem::create_directory("work");
  std::filesystem::current_path("work");
  EXPECT_EQ(base_name("."), "work");
}

// The class table, a line for each class: its name, and documents of either
// kind.
std::string classes() {
  std::string text;
  for (std::uint32_t id = 0; id < class_table.size(); ++id) {
    const ClassData &data = class_table.get_data(id);
    text += class_table.full_name(id) + " train";
    for (const auto &[name, list] : data.train_docs)
      text += ' ' + name;
    text += " test";
    for (const auto &[name, list] : data.test_docs)
      text += ' ' + name;
    text += '\n';
  }
  return text;
}

class Collection : public testing::Test {
 protected:
  Collection() {
    std::filesystem::create_directories("ex/files");
    for (const std::string name : {"a", "b", "c", "d"})
      write_text("files/" + name + ".txt", name);
  }

  static RunResult collect(const std::string &directory, unsigned verbosity) {
    set_verbosity(verbosity);
    return run_in_child([&] {
      analyser.open("");
      data_base.open("data");
      data_base.read(params.incremental());
      collect_documents(directory.c_str());
      write_text("classes", classes());
    });
  }

  TemporaryDirectory directory_;
};

TEST_F(Collection, FilesEachDocumentInItsClasses) {
  write_text("ex/train", "b.txt sport/tennis\na acq  earn:1\nb ?acq acq\n");
  write_text("ex/test", "c acq\nb acq\n");
  const RunResult run = collect("ex", 3);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(read_text("classes"),
            "ex train test\n"
            "sport train test\n"
            "sport/tennis train b test\n"
            "acq train a b test b c\n"
            "earn train a test\n");
  EXPECT_EQ(run.log,
            "creating data directory `data'\n"
            "profiling document `b'\n"
            "collected training document `b'\n"
            "profiling document `a'\n"
            "collected training document `a'\n"
            "collected training document `a'\n"
            "collected training document `b'\n"
            "collected training document `b'\n"
            "profiling document `c'\n"
            "collected testing document `c'\n"
            "collected testing document `b'\n");
}

TEST_F(Collection, MissingListIsEmpty) {
  const RunResult run = collect("ex/", 0);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.log, "");
  EXPECT_EQ(read_text("classes"), "ex/ train test\n");
}

TEST_F(Collection, ListEndsSilentlyAtALineThatIsTooLong) {
  write_text("ex/train", "a x\nb " + std::string(2045, 'y') + "\nc z\nd " +
                             std::string(2046, 'y') + "\nd x\n");
  const RunResult run = collect("ex", 0);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.screen, "WARNING: file ex/train: line 2: class name `" +
                            std::string(200, 'y') +
                            "' cannot be stored in the data directory\n");
  EXPECT_EQ(read_text("classes"), "ex train test\nx train a test\n" +
                                      std::string(2045, 'y') +
                                      " train b test\nz train c test\n");
}

TEST_F(Collection, MalformedListEndsTheRunBehindItsGoodLines) {
  for (const std::string &line : {"b"s, ""s, "b   "s, "b x\0y"s}) {
    write_text("ex/train", "a x\n" + line + "\n");
    const RunResult run = collect("ex", 3);
    EXPECT_NE(run.log.find("collected training document `a'\n"
                           "ERROR: format error in file `ex/train'\n"),
              std::string::npos)
        << run.log;
    EXPECT_NE(run.status, 0);
  }
}

TEST_F(Collection, EveryFailureIsNamed) {
  std::filesystem::create_directories("no files");
  write_text("flat/files", "");
  std::filesystem::create_directories("dir/files");
  std::filesystem::create_directories("dir/test");
  write_text("gone/train", "lost x\n");
  std::filesystem::create_directories("gone/files");
  const struct {
    const char *directory;
    const char *message;
    int status;  // 0 if another failure, long past, decides
  } cases[] = {
      {"none", "cannot find directory `none/files'", ENOENT},
      {"no files", "cannot find directory `no files/files'", ENOENT},
      {"flat", "cannot find directory `flat/files'", 0},
      {"dir", "error reading file `dir/test'", EISDIR},
      {"gone", "Cannot open file \"files/lost.txt\" for analysing stage",
       ENOENT},
  };
  for (const auto &[directory, message, status] : cases) {
    const RunResult run = collect(directory, 0);
    EXPECT_TRUE(run.screen.starts_with("ERROR: "s + message + "\naborting"))
        << run.screen;
    EXPECT_NE(run.status, 0);
    if (status != 0) {
      EXPECT_EQ(run.status, status) << directory;
    }
  }
}

TEST_F(Collection, ClassTableOfAnotherTopClassIsRefused) {
  write_text("ex/train", "a x\n");
  run_in_child([] {
    analyser.open("");
    data_base.open("data");
    data_base.read(false);
    collect_documents("ex");
    atom_table.write();
    term_table.write();
    data_base.vocabulary_written();
    data_base.write(true);
  });
  params.set_incremental(true);
  EXPECT_EQ(collect("ex", 0).status, 0);
  const RunResult run = collect("ex/", 0);
  EXPECT_EQ(run.screen.substr(0, run.screen.find('\n')),
            "ERROR: Cannot profile \"ex/\" with the same data as \"ex\"");
  EXPECT_NE(run.status, 0);
}

TEST_F(Collection, ClassThatCannotBeStoredIsNamedWithItsLine) {
  write_text("ex/train", "a x\nb good/b\\ad\\\nb good/b\\ad\\ \"\n");
  write_text("ex/test", "c \"/son y/z\"/\n");
  const RunResult run = collect("ex", 0);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.screen,
            "WARNING: file ex/train: line 2: class name `b\\ad\\' cannot be "
            "stored in the data directory\n"
            "WARNING: file ex/train: line 3: class name `\"' cannot be stored "
            "in the data directory\n"
            "WARNING: file ex/test: line 1: class name `\"' cannot be stored "
            "in the data directory\n"
            "WARNING: file ex/test: line 1: class name `z\"/' cannot be "
            "stored in the data directory\n");
}

}  // namespace
}  // namespace vek

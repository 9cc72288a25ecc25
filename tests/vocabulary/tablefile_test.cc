// The files of both tables: what is read, what is appended, what is refused.
#include "vocabulary/tablefile.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "support/child_run.h"
#include "support/messages.h"
#include "support/temporary_directory.h"
#include "vocabulary/atomtab.h"
#include "vocabulary/termtab.h"

namespace vek {
namespace {

using namespace std::string_literals;
using Texts = std::vector<std::string>;

std::uint32_t enter(AtomTable &table, const std::string &text) {
  return table.enter(text);
}
// The head and, behind a blank, the modifier if there is one.
std::uint32_t enter(TermTable &table, const std::string &text) {
  const auto number = [](char digit) {
    return static_cast<std::uint32_t>(digit - '0');
  };
  return table.enter(number(text[0]),
                     text.size() == 1 ? EmptyAtom : number(text[2]));
}

// The name of an atom file begins with an "a".
template <class Action>
void with_table(const std::string &file, Action action) {
  if (file.starts_with('a')) {
    AtomTable table;
    table.set_file(file);
    action(table);
  } else {
    for (int i = 0; i < 10; ++i)
      atom_table.enter(std::to_string(i));
    TermTable table;
    table.set_file(file);
    action(table);
  }
}

// What a run leaves that reads the file, enters more records, given as lines,
// and writes it.
RunResult run_over(const std::string &file, const std::string &more) {
  return run_in_child([&] {
    with_table(file, [&](auto &table) {
      table.read();
      std::istringstream lines(more);
      for (std::string text; std::getline(lines, text);)
        enter(table, text);
      table.write();
      // Has nothing more to write.
      table.write();
    });
  });
}

class TableFiles : public testing::Test {
  TemporaryDirectory directory_;
};

TEST_F(TableFiles, GrowByNewRecordsOnly) {
  const struct {
    std::string file, content, more, result, log;
  } cases[] = {
      {"atoms", "", "", "", ""},
      {"atoms", "", "a\nb", "a\nb\n", "creating atoms with 2 atoms\n"},
      {"atoms", "a\nb\n", "b", "a\nb\n", ""},
      {"atoms", "a\nb\n", "b\nc\nd", "a\nb\nc\nd\n",
       "updating atoms from 2 to 4 atoms\n"},
      // The last line counts without its line end, and stays a line.
      {"atoms", "a\nb", "a", "a\nb", ""},
      {"atoms", "a\nb", "b\nc", "a\nb\nc\n",
       "updating atoms from 2 to 3 atoms\n"},
      {"terms", "", "", "", ""},
      {"terms", "", "0 1\n2\n0",
       "0 1 0 2\n2 4294967295 1 4294967295\n0 4294967295 2 4294967295\n",
       "creating terms with 3 terms\n"},
      {"terms", "1 5 0 0\n", "1 5", "1 5 0 0\n", ""},
      // The first line still leads to the third term of the chain.
      {"terms", "1 5 0 1\n1 9 1 4294967295\n", "1 7\n1 8",
       "1 5 0 1\n1 9 1 4294967295\n1 7 2 3\n1 8 3 1\n",
       "updating terms from 2 to 4 terms\n"},
      // Nothing is made of the last two numbers.
      {"terms", "1 5 77 99\n1 3 0 0", "1 4", "1 5 77 99\n1 3 0 0\n1 4 2 0\n",
       "updating terms from 2 to 3 terms\n"}};
  set_verbosity(1);
  for (const auto &[file, content, more, result, log] : cases) {
    SCOPED_TRACE(content + " and " + more);
    write_text(file, content);
    const RunResult run = run_over(file, more);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.log, log);
    EXPECT_EQ(run.screen, log);
    EXPECT_EQ(read_text(file), result);
  }
}

TEST_F(TableFiles, AreRefusedIfDamaged) {
  const std::pair<std::string, Texts> cases[] = {
      {"atoms",
       {"\n", "a\n\nb\n", "a\n\n", "a\nb\na\n", "a\na", "a\nb\0c\n"s, "\0"s}},
      {"terms",
       {"\n", "1 2 0\n", "1 2 0 0 \n", "1 2 0 0 0\n", " 1 2 0 0\n",
        "1  2 0 0\n", "1\t2 0 0\n", "1 2 0 0\r\n", "1 -2 0 0\n",
        "1 2 0 4294967296\n", "1 x 0 0\n", "1 2 0 0\n\n3 4 0 0\n",
        // A head that is none, atoms that do not exist, a pair told twice.
        "4294967295 2 0 0\n", "10 2 0 0\n", "1 10 0 0\n", "1 4294967294 0 0\n",
        "1 2 0 0\n1 2 1 0\n"}}};
  for (const auto &[file, contents] : cases) {
    for (const std::string &content : contents) {
      SCOPED_TRACE(content);
      write_text(file, content);
      const RunResult run = run_over(file, "8 9");
      EXPECT_EQ(run.status, 1);
      EXPECT_EQ(run.screen,
                "ERROR: format error in file `" + file + "'\naborting...\n");
      EXPECT_EQ(read_text(file), content);
    }
  }
}

TEST_F(TableFiles, EndTheRunIfTheyFail) {
  write_text("a.d/x", "");
  write_text("t.d/x", "");
  std::filesystem::create_symlink("/dev/full", "a.full");
  std::filesystem::create_symlink("/dev/full", "t.full");
  for (const std::string table : {"a", "t"}) {
    const struct {
      std::string file;
      bool reads;
      int status;
      std::string before, behind;
    } cases[] = {
        {".missing", true, ENOENT, "cannot open file `", "' for reading"},
        {".d", true, EISDIR, "error reading file `", "'"},
        {".d", false, EISDIR, "cannot open file `", "' for writing"},
        {".full", false, ENOSPC, "error writing file `", "'"}};
    for (const auto &[end, reads, status, before, behind] : cases) {
      const std::string file = table + end;
      const RunResult run = run_in_child([&, reads = reads] {
        with_table(file, [&](auto &any) {
          enter(any, "1");
          reads ? any.read() : any.write();
        });
      });
      EXPECT_EQ(run.status, status) << file;
      EXPECT_EQ(run.screen,
                "ERROR: " + before + file + behind +
                    "\naborting... (errno = " + std::to_string(status) + ")\n");
    }
  }
}

// All kinds of bytes, and more than are written at once.
TEST_F(TableFiles, GiveBackWhatWasWritten) {
  Texts atoms = {"big \\\"house\"", std::string(70000, 'x'), "\x01\r\xFF", " "};
  for (int i = 0; i < 10000; ++i)
    atoms.push_back(std::to_string(i));
  const Texts terms = {"1 5", "1 3", "1 9", "1 7", "1"};
  std::string lines;
  for (const std::string &text : atoms)
    lines += text + '\n';
  for (const std::string file : {"atoms", "terms"}) {
    const Texts &texts = file == "atoms" ? atoms : terms;
    with_table(file, [&](auto &table) {
      for (const std::string &text : texts)
        enter(table, text);
      EXPECT_TRUE(table.has_unwritten());
      table.write();
      EXPECT_FALSE(table.has_unwritten());
    });
    with_table(file, [&](auto &table) {
      table.read();
      EXPECT_EQ(table.nr_written(), texts.size());
      for (std::uint32_t id = 0; id < texts.size(); ++id)
        ASSERT_EQ(enter(table, texts[id]), id) << texts[id];
      EXPECT_EQ(table.size(), texts.size());
    });
  }
  EXPECT_TRUE(read_text("atoms") == lines);
  EXPECT_EQ(read_text("terms"),
            "1 5 0 3\n1 3 1 0\n1 9 2 4\n1 7 3 2\n1 4294967295 4 4294967295\n");
}

}  // namespace
}  // namespace vek

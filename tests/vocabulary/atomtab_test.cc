#include "vocabulary/atomtab.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "support/child_run.h"
#include "support/messages.h"
#include "support/temporary_directory.h"

namespace vek {
namespace {

using Texts = std::vector<std::string>;

// A table of its own over the file atoms.dat.
class AtomTableTest : public testing::Test {
 protected:
  AtomTableTest() {
    set_verbosity(0);
    table_.set_file("atoms.dat");
  }

  void enter(const Texts &texts) {
    for (const std::string &text : texts) {
      table_.enter(text);
    }
  }
  Texts texts() const {
    Texts all;
    for (std::uint32_t id = 0; id < table_.size(); ++id) {
      all.push_back(table_.text(id));
    }
    return all;
  }

  TemporaryDirectory directory_;
  AtomTable table_;
};

// What a run says that reads `content` and then enters and writes `more`.
RunResult run_over(const std::string &content, const Texts &more) {
  write_text("atoms.dat", content);
  return run_in_child([&more] {
    AtomTable table;
    table.set_file("atoms.dat");
    table.read();
    for (const std::string &text : more) {
      table.enter(text);
    }
    table.write();
  });
}

TEST_F(AtomTableTest, NumbersTextsInTheirFirstOrder) {
  EXPECT_TRUE(table_.empty());
  EXPECT_EQ(table_.enter("house"), 0U);
  EXPECT_EQ(table_.enter("big"), 1U);
  EXPECT_EQ(table_.enter("house"), 0U);
  EXPECT_EQ(table_.enter("Big"), 2U);
  EXPECT_EQ(table_.enter("b\xC3\xA4r"), 3U);
  EXPECT_EQ(table_.next_id(), 4U);
  EXPECT_EQ(texts(), (Texts{"house", "big", "Big", "b\xC3\xA4r"}));
}

// Lengths around what the index holds of a text, and texts that differ in one
// place only.
TEST_F(AtomTableTest, TellsTextsOfAllLengthsApart) {
  std::map<std::string, std::uint32_t> ids;
  for (std::size_t length = 1; length <= 40; ++length) {
    const std::string text(length, 'a');
    ids.emplace(text, table_.enter(text));
    for (std::size_t place = 0; place < length; ++place) {
      std::string other = text;
      other[place] = '\xFF';
      ids.emplace(other, table_.enter(other));
    }
  }
  EXPECT_EQ(table_.size(), ids.size());
  for (const auto &[text, id] : ids) {
    EXPECT_EQ(table_.enter(text), id);
    EXPECT_EQ(table_.text(id), text);
  }
}

TEST_F(AtomTableTest, FindsAllOfManyTexts) {
  const std::string &first = table_.text(table_.enter("first"));
  for (int i = 0; i < 100000; ++i) {
    table_.enter("word" + std::to_string(i * 7));
  }
  EXPECT_EQ(table_.size(), 100001U);
  EXPECT_EQ(&table_.text(0), &first);
  for (std::uint32_t i = 0; i < 100000; ++i) {
    ASSERT_EQ(table_.enter("word" + std::to_string(i * 7)), i + 1);
  }
}

TEST_F(AtomTableTest, EntersAListAsOneByOne) {
  std::mt19937 random(1);
  Texts texts;
  for (int i = 0; i < 5000; ++i) {
    texts.push_back("w" + std::to_string(random() % 3000));
  }
  std::vector<std::uint32_t> expected;
  for (const std::string &text : texts) {
    expected.push_back(table_.enter(text));
  }
  AtomTable other;
  std::vector<std::uint32_t> ids = {7};
  other.enter_all(std::vector<std::string_view>(texts.begin(), texts.end()),
                  ids);
  EXPECT_EQ(ids, expected);
  other.enter_all({}, ids);
  EXPECT_TRUE(ids.empty());
}

TEST_F(AtomTableTest, WritesALineForEachAtom) {
  enter({"house", "big", "big house"});
  table_.write();
  EXPECT_EQ(hexadecimal(read_text("atoms.dat")),
            "68 6F 75 73 65 0A 62 69 67 0A "
            "62 69 67 20 68 6F 75 73 65 0A");
}

TEST_F(AtomTableTest, AppendsOnlyNewAtoms) {
  set_verbosity(1);
  const auto write = [this] { table_.write(); };
  EXPECT_EQ(screen(write), "");
  EXPECT_EQ(read_text("atoms.dat"), "");
  enter({"a", "b"});
  EXPECT_TRUE(table_.has_unwritten());
  EXPECT_EQ(screen(write), "creating atoms.dat with 2 atoms\n");
  EXPECT_FALSE(table_.has_unwritten());
  EXPECT_EQ(screen(write), "");
  enter({"b", "c"});
  EXPECT_EQ(table_.nr_written(), 2U);
  EXPECT_EQ(screen(write), "updating atoms.dat from 2 to 3 atoms\n");
  EXPECT_EQ(read_text("atoms.dat"), "a\nb\nc\n");
}

TEST_F(AtomTableTest, WritesManyAtomsInTheirOrder) {
  std::string expected;
  for (int i = 0; i < 10000; ++i) {
    table_.enter(std::to_string(i));
    expected += std::to_string(i) + "\n";
  }
  table_.write();
  EXPECT_EQ(table_.nr_written(), 10000U);
  EXPECT_EQ(read_text("atoms.dat"), expected);
}

TEST_F(AtomTableTest, ReadsWhatWasWritten) {
  const Texts written = {"house", "big \\\"house\"", std::string(70000, 'x'),
                         "\x01\r\xFF", " "};
  enter(written);
  table_.write();
  const std::string bytes = read_text("atoms.dat");
  AtomTable other;
  other.set_file("atoms.dat");
  other.read();
  EXPECT_EQ(other.nr_written(), 5U);
  for (std::uint32_t id = 0; id < written.size(); ++id) {
    EXPECT_EQ(other.text(id), written[id]);
    EXPECT_EQ(other.enter(written[id]), id);
  }
  other.write();
  EXPECT_EQ(read_text("atoms.dat"), bytes);
}

TEST_F(AtomTableTest, GoesOnFromWhatItRead) {
  const struct {
    std::string content;
    Texts more;
    std::string result;
    std::string log;
  } cases[] = {
      {"", {}, "", ""},
      {"a\nb\n", {}, "a\nb\n", ""},
      {"a\nb\n",
       {"b", "c", "d"},
       "a\nb\nc\nd\n",
       "updating atoms.dat from 2 to 4 atoms\n"},
      // The last line counts without its line end, and stays a line.
      {"a\nb", {}, "a\nb", ""},
      {"a\nb",
       {"b", "c"},
       "a\nb\nc\n",
       "updating atoms.dat from 2 to 3 atoms\n"},
  };
  for (const auto &[content, more, result, log] : cases) {
    const RunResult run = run_over(content, more);
    EXPECT_EQ(run.status, 0) << content;
    EXPECT_EQ(run.log, log) << content;
    EXPECT_EQ(read_text("atoms.dat"), result);
  }
}

TEST_F(AtomTableTest, RefusesADamagedFile) {
  const std::string cases[] = {"\n",
                               "a\n\nb\n",
                               "a\n\n",
                               "a\nb\na\n",
                               "a\na",
                               std::string("a\nb\0c\n", 6),
                               std::string("\0", 1)};
  for (const std::string &content : cases) {
    const RunResult run = run_over(content, {"new"});
    EXPECT_EQ(run.status, 1) << content;
    EXPECT_EQ(run.screen,
              "ERROR: format error in file `atoms.dat'\naborting...\n");
    EXPECT_EQ(read_text("atoms.dat"), content);
  }
}

TEST_F(AtomTableTest, EndsTheRunIfTheFileFails) {
  const struct {
    std::string file;
    void (AtomTable::*operation)();
    int status;
    std::string message;
  } cases[] = {
      {"missing", &AtomTable::read, ENOENT,
       "cannot open file `missing' for reading"},
      {".", &AtomTable::read, EISDIR, "error reading file `.'"},
      {"missing/atoms.dat", &AtomTable::write, ENOENT,
       "cannot open file `missing/atoms.dat' for writing"},
      {"/dev/full", &AtomTable::write, ENOSPC,
       "error writing file `/dev/full'"},
  };
  for (const auto &failure : cases) {
    const RunResult run = run_in_child([&failure] {
      AtomTable table;
      table.set_file(failure.file);
      if (failure.operation == &AtomTable::write)
        table.enter("a");
      (table.*failure.operation)();
    });
    EXPECT_EQ(run.status, failure.status);
    EXPECT_EQ(run.screen, "ERROR: " + failure.message +
                              "\naborting... (errno = " +
                              std::to_string(failure.status) + ")\n");
  }
}

}  // namespace
}  // namespace vek

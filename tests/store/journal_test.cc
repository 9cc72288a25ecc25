#include "store/journal.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "intake/docprof.h"
#include "store/database.h"
#include "support/child_run.h"
#include "support/temporary_directory.h"
#include "vocabulary/atomtab.h"
#include "vocabulary/termtab.h"

namespace vek {
namespace {

using std::filesystem::exists;

const std::string journal = "data/journal.dat";
const std::string atoms = "data/atoms.dat";
const std::string terms = "data/terms.dat";

const char *const two_documents =
    "vek journal 1\n"
    "0 0 0 0 4 4\n"
    "house\nbig\nnew\nend\n"
    "0 1\n0 4294967295\n2 1\n3 2\n"
    "end\n";

// A document whose terms are these pairs of words.
void learn(const std::string &name,
           const std::vector<std::pair<const char *, const char *>> &pairs) {
  DocProfile profile;
  for (const auto &[head, mod] : pairs) {
    const std::uint32_t head_id = atom_table.enter(head);
    const std::uint32_t mod_id =
        *mod == '\0' ? EmptyAtom : atom_table.enter(mod);
    profile.add_term(term_table.enter(head_id, mod_id), 1);
  }
  data_base.put(name, profile);
}

void learn_two() {
  learn("a", {{"house", "big"}, {"house", ""}});
  learn("b", {{"new", "big"}, {"end", "new"}});
}

void write_tables() {
  atom_table.write();
  term_table.write();
}

// What the stored profile means now.
std::string meaning(const std::string &name) {
  std::string text = name + ':';
  if (!data_base.exists(name))
    return text + " unknown";
  for (const DocProfileEntry &entry : *data_base.get(name)) {
    const std::uint32_t mod = term_table.mod(entry.term);
    text += ' ' + atom_table.text(term_table.head(entry.term));
    if (mod != EmptyAtom)
      text += ',' + atom_table.text(mod);
  }
  return text;
}

const char *const both = "a: house,big house\nb: new,big end,new\n";

class JournalTest : public testing::Test {
 protected:
  // A run over the data directory.
  static RunResult run(const std::function<void()> &body) {
    return run_in_child([&] {
      data_base.open("data");
      data_base.read(false);
      body();
    });
  }
  // What a run that only looks finds; it changes nothing.
  static std::string known() {
    return run([] {
             write_text("known", meaning("a") + '\n' + meaning("b") + '\n');
             be_killed();
           }).status == 0
               ? read_text("known")
               : "refused";
  }
  // Expects that a run is refused, again and again, and that the file of
  // which it complains stays as it is.
  static void expect_refused(const std::string &file) {
    const std::string content = read_text(file);
    for (int i = 0; i < 2; ++i) {
      const RunResult result = run([] {});
      EXPECT_TRUE(result.screen.starts_with("ERROR: format error in file `" +
                                            file + "'\naborting..."))
          << result.screen;
      EXPECT_NE(result.status, 0);
    }
    EXPECT_EQ(read_text(file), content);
  }

  TemporaryDirectory directory_;
};

TEST_F(JournalTest, IsSavedBeforeTheIndexAtSync) {
  run([] {
    learn_two();
    data_base.sync();
    be_killed();
  });
  EXPECT_EQ(read_text(journal), two_documents);
  EXPECT_FALSE(exists("data/journal.tmp"));
  EXPECT_FALSE(exists(atoms));
  EXPECT_EQ(known(), both);
}

TEST_F(JournalTest, IsSavedHoweverARunEnds) {
  const struct {
    const char *name;
    void (*end)();
  } cases[] = {
      {"return", [] {}},
      {"exit", [] { std::exit(5); }},
      {"abort_run", [] { abort_run(); }},
  };
  for (const auto &[name, end] : cases) {
    SCOPED_TRACE(name);
    std::filesystem::remove_all("data");
    run([end = end] {
      learn_two();
      end();
    });
    EXPECT_EQ(read_text(journal), two_documents);
    EXPECT_EQ(known(), both);
  }
}

TEST_F(JournalTest, KillBeforeAnySyncLosesTheDocumentsToo) {
  run([] {
    learn_two();
    be_killed();
  });
  EXPECT_FALSE(exists(journal));
  EXPECT_EQ(known(), "a: unknown\nb: unknown\n");
}

TEST_F(JournalTest, IsGoneOnceTheTablesHoldItAll) {
  run([] {
    learn_two();
    data_base.sync();
    write_tables();
    data_base.vocabulary_written();
    data_base.sync();
  });
  EXPECT_FALSE(exists(journal));
  EXPECT_EQ(known(), both);
  // Nor does a run leave one that has nothing new.
  run([] { data_base.sync(); });
  EXPECT_FALSE(exists(journal));
}

TEST_F(JournalTest, IdsKeepTheirMeaningFromRunToRun) {
  run([] {
    learn("a", {{"house", "big"}, {"house", ""}});
    write_tables();
    data_base.vocabulary_written();
    learn("b", {{"new", "big"}});
  });
  EXPECT_EQ(read_text(journal),
            "vek journal 1\n2 10 2 34 1 1\nnew\n2 1\nend\n");
  // The next run finds what it held and adds to it, ...
  run([] { learn("b", {{"new", "big"}, {"end", "new"}}); });
  EXPECT_EQ(read_text(journal),
            "vek journal 1\n2 10 2 34 2 2\nnew\nend\n2 1\n3 2\nend\n");
  EXPECT_EQ(known(), both);
  // ... and the one behind it brings all into the tables.
  run([] {
    write_tables();
    data_base.vocabulary_written();
  });
  EXPECT_EQ(read_text(atoms), "house\nbig\nnew\nend\n");
  EXPECT_EQ(read_text(terms),
            "0 1 0 1\n0 4294967295 1 4294967295\n"
            "2 1 2 4294967295\n3 2 3 4294967295\n");
  EXPECT_FALSE(exists(journal));
  EXPECT_EQ(known(), both);
}

// The tables were being written when the machine stopped: whatever part of
// them has reached the disk, all is there in the next run.
TEST_F(JournalTest, TornTablesAreMadeWhole) {
  for (const bool first_run : {true, false}) {
    std::filesystem::remove_all("data");
    run([&] {
      learn("a", {{"house", "big"}, {"house", ""}});
      if (first_run)
        return;
      write_tables();
      data_base.vocabulary_written();
    });
    const std::size_t old_atoms = read_text(atoms).size();
    const std::size_t old_terms = read_text(terms).size();
    run([] {
      learn("b", {{"new", "big"}, {"end", "new"}});
      data_base.sync();
      write_tables();
      be_killed();
    });
    const std::string all_atoms = read_text(atoms);
    const std::string all_terms = read_text(terms);
    for (std::size_t size = old_atoms; size <= all_atoms.size(); ++size) {
      write_text(atoms, all_atoms.substr(0, size));
      // Comes second; in a first run it need not be there yet.
      write_text(terms, all_terms.substr(0, old_terms));
      if (old_terms == 0)
        std::filesystem::remove(terms);
      ASSERT_EQ(known(), both) << size;
    }
    for (std::size_t size = old_terms; size <= all_terms.size(); ++size) {
      write_text(atoms, all_atoms);
      write_text(terms, all_terms.substr(0, size));
      ASSERT_EQ(known(), both) << size;
    }
    run([] {
      write_tables();
      data_base.vocabulary_written();
    });
    EXPECT_EQ(read_text(atoms), all_atoms);
    EXPECT_EQ(read_text(terms), all_terms);
  }
}

TEST_F(JournalTest, CutAnywhereIsRefused) {
  run([] { learn_two(); });
  const std::string whole = read_text(journal);
  for (std::size_t size = 0; size < whole.size(); ++size) {
    SCOPED_TRACE(size);
    write_text(journal, whole.substr(0, size));
    expect_refused(journal);
  }
  write_text(journal, whole);
  EXPECT_EQ(known(), both);
}

TEST_F(JournalTest, OfAnyOtherFormIsRefused) {
  run([] { learn_two(); });
  const struct {
    const char *what;
    std::string header;
    std::string body;
  } cases[] = {
      {"other tables", "1 0 0 0 2 1", "x\ny\n0 1\n"},
      {"other tables", "0 0 1 0 2 1", "x\ny\n0 1\n"},
      {"too few numbers", "0 0 0 0 2", "x\ny\n0 1\n"},
      {"too many numbers", "0 0 0 0 2 1 0", "x\ny\n0 1\n"},
      {"negative", "0 0 0 0 2 -1", "x\ny\n"},
      {"beyond 32 bits", "0 0 0 0 4294967298 1", "x\ny\n0 1\n"},
      {"more atoms than lines", "0 0 0 0 4294967295 1", "x\ny\n0 1\n"},
      {"more terms than lines", "0 0 0 0 2 4294967295", "x\ny\n0 1\n"},
      {"fewer than lines", "0 0 0 0 1 1", "x\ny\n0 0\n"},
      {"bytes to spare", "0 0 0 0 2 1", "x\ny\n0 1\nz\n"},
      {"empty atom", "0 0 0 0 2 1", "x\n\n0 1\n"},
      {"atom twice", "0 0 0 0 2 1", "x\nx\n0 1\n"},
      {"term twice", "0 0 0 0 2 2", "x\ny\n0 1\n0 1\n"},
      {"NUL", "0 0 0 0 2 1", std::string("x\n\0\n0 1\n", 8)},
      {"unknown head", "0 0 0 0 2 1", "x\ny\n2 1\n"},
      {"no head", "0 0 0 0 2 1", "x\ny\n4294967295 1\n"},
      {"unknown modifier", "0 0 0 0 2 1", "x\ny\n0 2\n"},
      {"half a term", "0 0 0 0 2 1", "x\ny\n0\n"},
      {"three numbers", "0 0 0 0 2 1", "x\ny\n0 1 1\n"},
      {"no line end before the last line", "0 0 0 0 1 0", "x"},
  };
  for (const auto &[what, header, body] : cases) {
    SCOPED_TRACE(what);
    write_text(journal, "vek journal 1\n" + header + "\n" + body + "end\n");
    expect_refused(journal);
  }
  write_text(journal, "vek journal 1\n0 0 0 0 2 1\nx\ny\n0 1\nend\n");
  EXPECT_EQ(run([] {}).status, 0);
}

// What would be cut off them might not come again from the journal.
TEST_F(JournalTest, DamagedLeavesLongerTablesAlone) {
  run([] { learn_two(); });
  const std::string whole = read_text(journal);
  const std::string damaged = whole.substr(0, whole.size() - 8) + "\nend\n";
  for (const std::string &table : {atoms, terms}) {
    write_text(journal, damaged);
    write_text(table, "longer\n");
    expect_refused(journal);
    EXPECT_EQ(read_text(table), "longer\n");
    write_text(journal, whole);
    EXPECT_EQ(known(), both);
    EXPECT_EQ(read_text(table), "");
  }
}

// As when a later state is copied over an earlier one.
TEST_F(JournalTest, OlderThanATableCutsNothing) {
  run([] { learn_two(); });
  const struct {
    const std::string &path;
    std::string later;
  } tables[] = {{atoms, "house\nbig\nnew\nend\nmore\n"},
                {terms,
                 "0 1 0 1\n0 4294967295 1 2\n2 1 2 3\n3 2 3 4\n"
                 "1 2 4 5\n"}};
  for (const auto &[path, later] : tables) {
    write_text(path, later);
    expect_refused(journal);
    EXPECT_EQ(read_text(path), later);
    write_text(path, later.substr(0, later.size() - 2));
    EXPECT_EQ(known(), both);
  }
}

TEST_F(JournalTest, TableShorterThanItSaysIsRefused) {
  run([] {
    learn("a", {{"house", "big"}, {"house", ""}});
    write_tables();
    data_base.vocabulary_written();
    learn("b", {{"new", "big"}, {"end", "new"}});
  });
  for (const std::string &table : {atoms, terms}) {
    const std::string content = read_text(table);
    write_text(table, content.substr(0, content.size() - 1));
    expect_refused(table);
    write_text(table, content);
  }
  EXPECT_EQ(known(), both);
  // A missing atoms.dat does not make this a new directory.
  std::filesystem::remove(atoms);
  const RunResult result = run([] {});
  EXPECT_TRUE(result.screen.starts_with("ERROR: format error in file `" +
                                        atoms + "'\n"));
  EXPECT_NE(result.status, 0);
}

TEST_F(JournalTest, DamagedTableDoesNotGetOne) {
  run([] {
    learn_two();
    write_tables();
    data_base.vocabulary_written();
  });
  const std::string content = read_text(terms);
  write_text(terms, content + "9 9 9 9\n");
  expect_refused(terms);
  EXPECT_FALSE(exists(journal));
  write_text(terms, content);
  EXPECT_EQ(known(), both);
}

TEST_F(JournalTest, TermsThatNobodyCanReadAreNeverAppendedTo) {
  run([] {
    learn_two();
    write_tables();
    data_base.vocabulary_written();
  });
  const std::string content = read_text(terms);
  const std::string all_atoms = read_text(atoms);
  std::filesystem::remove(atoms);
  for (int i = 0; i < 2; ++i) {
    const RunResult result = run([] {
      learn("c", {{"other", "word"}});
      write_tables();
    });
    EXPECT_TRUE(result.screen.starts_with("ERROR: format error in file `" +
                                          terms + "'\naborting..."))
        << result.screen;
    EXPECT_NE(result.status, 0);
    EXPECT_FALSE(exists(journal));
    EXPECT_FALSE(exists(atoms));
    EXPECT_EQ(read_text(terms), content);
  }
  write_text(atoms, all_atoms);
  EXPECT_EQ(known(), both);
}

// What the terms' ids stand for could not be saved, so the documents that use
// them must not be known to the next run.
TEST_F(JournalTest, FailureKeepsTheIndexFromTheDisk) {
  run([] { learn("a", {{"house", "big"}, {"house", ""}}); });
  const std::string old = read_text(journal);
  std::filesystem::create_directory("data/journal.tmp");
  for (const bool sync : {true, false}) {
    const RunResult result = run([&] {
      learn("b", {{"new", "big"}, {"end", "new"}});
      errno = 0;
      if (sync)
        data_base.sync();
    });
    EXPECT_EQ(result.screen,
              "ERROR: error writing file `data/journal.dat'\n" +
                  std::string(sync ? "aborting... (errno = 21)\n" : ""));
    EXPECT_EQ(result.status, sync ? EISDIR : 0);
    EXPECT_EQ(read_text(journal), old);
    EXPECT_EQ(known(), "a: house,big house\nb: unknown\n");
  }
  std::filesystem::remove("data/journal.tmp");
  run([] { learn("b", {{"new", "big"}, {"end", "new"}}); });
  EXPECT_EQ(known(), both);
}

TEST_F(JournalTest, StaysIfATableIsNotOnTheDisk) {
  const RunResult result = run([] {
    learn_two();
    data_base.sync();
    atom_table.write();
    data_base.vocabulary_written();
  });
  EXPECT_TRUE(result.screen.starts_with("ERROR: error writing file `" + terms +
                                        "'\naborting..."))
      << result.screen;
  EXPECT_EQ(result.status, ENOENT);
  EXPECT_EQ(read_text(journal), two_documents);
  EXPECT_EQ(known(), both);
}

}  // namespace
}  // namespace vek

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
const std::vector<std::string> paths = {journal, atoms, terms};

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

void learn_first() {
  learn("a", {{"house", "big"}, {"house", ""}});
}

void learn_second() {
  learn("b", {{"new", "big"}, {"end", "new"}});
}

void learn_two() {
  learn_first();
  learn_second();
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
  // Expects that a run is refused for that file, again and again, and that all
  // files stay as they are.
  static void expect_refused(const std::string &file) {
    const auto before = files();
    for (int i = 0; i < 2; ++i) {
      const RunResult result = run([] {
        learn("c", {{"other", "word"}});
        data_base.write_vocabulary();
      });
      EXPECT_EQ(result.screen.find("ERROR: format error in file `" + file +
                                   "'\naborting..."),
                0U);
      EXPECT_NE(result.status, 0);
    }
    EXPECT_EQ(files(), before);
  }
  static std::vector<std::string> files() {
    std::vector<std::string> found;
    for (const std::string &path : paths)
      found.push_back(exists(path) ? read_text(path) : "none");
    return found;
  }

  TemporaryDirectory directory_;
};

TEST_F(JournalTest, IsSavedBeforeTheIndexHoweverARunEnds) {
  const struct {
    const char *name;
    void (*end)();
    bool saved = true;
  } cases[] = {
      {"return", [] {}},
      {"exit", [] { std::exit(5); }},
      {"abort_run", [] { abort_run(); }},
      {"killed after a sync",
       [] {
         data_base.sync();
         be_killed();
       }},
      // Loses the documents too.
      {"killed", [] { be_killed(); }, false},
  };
  for (const auto &[name, end, saved] : cases) {
    SCOPED_TRACE(name);
    std::filesystem::remove_all("data");
    run([end = end] {
      learn_two();
      end();
    });
    EXPECT_EQ(read_text(journal), saved ? two_documents : "");
    EXPECT_FALSE(exists("data/journal.tmp") || exists(atoms));
    EXPECT_EQ(known(), saved ? both : "a: unknown\nb: unknown\n");
  }
}

TEST_F(JournalTest, KeepsTheMeaningOfIdsUntilTheTablesHoldAll) {
  run([] {
    learn_first();
    data_base.write_vocabulary();
    learn("b", {{"new", "big"}});
  });
  EXPECT_EQ(read_text(journal),
            "vek journal 1\n2 10 2 34 1 1\nnew\n2 1\nend\n");
  // The next run finds what it held and adds to it, ...
  run(learn_second);
  EXPECT_EQ(read_text(journal),
            "vek journal 1\n2 10 2 34 2 2\nnew\nend\n2 1\n3 2\nend\n");
  // ... and the one behind it brings all into the tables.
  run([] {
    data_base.write_vocabulary();
    data_base.sync();
  });
  EXPECT_EQ(read_text(atoms), "house\nbig\nnew\nend\n");
  EXPECT_EQ(read_text(terms),
            "0 1 0 1\n0 4294967295 1 4294967295\n"
            "2 1 2 4294967295\n3 2 3 4294967295\n");
  EXPECT_FALSE(exists(journal));
  EXPECT_EQ(known(), both);
}

TEST_F(JournalTest, CutAnywhereOrOfAnyOtherFormIsRefused) {
  const std::string good = "x\ny\n0 1\n";
  const std::string headers[] = {
      "1 0 0 0 2 1", "0 0 1 0 2 1",  // other tables
      "0 0 0 0 2", "0 0 0 0 2 1 0", "0 0 0 0 2 -1", "0 0 0 0 4294967298 1",
      // More and fewer of them than lines.
      "0 0 0 0 4294967295 1", "0 0 0 0 2 4294967295", "0 0 0 0 2 0"};
  const std::string bodies[] = {
      good + "z\n", "x\n\n0 1\n", std::string("x\n\0\n0 1\n", 8),
      "x\nx\n0 1\n",  // an atom twice
      // Terms of atoms that are not there, and what is no term.
      "x\ny\n2 1\n", "x\ny\n4294967295 1\n", "x\ny\n0 2\n", "x\ny\n0\n",
      "x\ny\n0 1 1\n"};
  std::vector<std::string> texts = {
      "vek journal 1\n0 0 0 0 1 0\nxend\n",
      "vek journal 1\n0 0 0 0 2 2\nx\ny\n0 1\n0 1\nend\n"};  // a term twice
  for (const std::string &header : headers)
    texts.push_back("vek journal 1\n" + header + "\n" + good + "end\n");
  for (const std::string &body : bodies)
    texts.push_back("vek journal 1\n0 0 0 0 2 1\n" + body + "end\n");
  const std::string whole = two_documents;
  for (std::size_t size = 0; size < whole.size(); ++size)
    texts.push_back(whole.substr(0, size));
  run(learn_two);
  for (const std::string &text : texts) {
    SCOPED_TRACE(text);
    write_text(journal, text);
    expect_refused(journal);
  }
  write_text(journal, "vek journal 1\n0 0 0 0 2 1\n" + good + "end\n");
  EXPECT_EQ(run([] {}).status, 0);
}

// Whatever part of the tables has reached the disk when a run is stopped, all
// is there in the next one. But nothing may be cut off them that the journal
// does not give back: it may be damaged, or older, as when a later state is
// copied over an earlier one.
TEST_F(JournalTest, MakesTornTablesWholeAndLeavesOthersAlone) {
  run([] {
    learn_first();
    data_base.write_vocabulary();
    learn_second();
  });
  const std::string whole = read_text(journal);
  const std::string damaged = whole.substr(0, whole.size() - 8) + "\nend\n";
  const std::string a = read_text(atoms);
  const std::string t = read_text(terms);
  const std::string more_a = a + "new\nend\nmore";
  const std::string more_t = t + "2 1 2 3\n3 2 3 4\n1 2 4 5";
  const struct {
    std::vector<std::string> contents;  // in the order of `paths`
    std::string refused;                // or empty
  } cases[] = {
      {{whole, a, t}, ""},
      {{whole, a + "n", t}, ""},
      {{whole, more_a, t + "2"}, ""},
      {{whole, more_a, more_t}, ""},
      {{two_documents, "hou", ""}, ""},
      {{two_documents, "house\nbig\nnew\nend\n", ""}, ""},
      {{two_documents, "house\nbig\nnew\nend\n", "0 1"}, ""},
      {{damaged, a + "longer\n", t}, journal},
      {{damaged, a, t + "longer\n"}, journal},
      {{whole, more_a + "\n", t}, journal},
      {{whole, a, more_t + "\n"}, journal},
      {{whole, a.substr(0, 9), t}, atoms},
      {{whole, a, t.substr(0, 33)}, terms},
      // Does not make this a new directory.
      {{whole, "", t}, atoms},
      // No journal comes of it, nor is what nobody can read appended to.
      {{"", a, t + "9 9 9 9\n"}, terms},
      {{"", "", t}, terms},
  };
  for (const auto &[contents, refused] : cases) {
    SCOPED_TRACE(testing::PrintToString(contents));
    for (std::size_t i = 0; i < paths.size(); ++i) {
      write_text(paths[i], contents[i]);
      if (contents[i].empty())
        std::filesystem::remove(paths[i]);
    }
    if (refused.empty())
      EXPECT_EQ(known(), both);
    else
      expect_refused(refused);
  }
}

// What the terms' ids stand for could not be saved, so the documents that use
// them must not be known to the next run.
TEST_F(JournalTest, FailureKeepsTheIndexFromTheDisk) {
  run(learn_first);
  const std::string old = read_text(journal);
  std::filesystem::create_directory("data/journal.tmp");
  for (const bool sync : {true, false}) {
    const RunResult result = run([&] {
      learn_second();
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
  run(learn_second);
  EXPECT_EQ(known(), both);
}

TEST_F(JournalTest, StaysIfATableIsNotOnTheDisk) {
  const RunResult result = run([] {
    learn_two();
    data_base.sync();
    atom_table.write();
    data_base.vocabulary_written();
  });
  EXPECT_EQ(result.screen.find("ERROR: error writing file `" + terms), 0U);
  EXPECT_EQ(result.status, ENOENT);
  EXPECT_EQ(read_text(journal), two_documents);
}

}  // namespace
}  // namespace vek

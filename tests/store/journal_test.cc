#include "store/journal.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "store/data_run.h"

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
void learn(Data &data, const std::string &name,
           const std::vector<std::pair<const char *, const char *>> &pairs) {
  DocProfile profile;
  for (const auto &[head, mod] : pairs) {
    const std::uint32_t head_id = data.atoms.enter(head);
    const std::uint32_t mod_id =
        *mod == '\0' ? EmptyAtom : data.atoms.enter(mod);
    profile.add_term(data.terms.enter(head_id, mod_id), 1);
  }
  data.base.put(name, profile);
}

void learn_first(Data &data) {
  learn(data, "a", {{"house", "big"}, {"house", ""}});
}

void learn_second(Data &data) {
  learn(data, "b", {{"new", "big"}, {"end", "new"}});
}

// What the stored profile means now.
std::string meaning(Data &data, const std::string &name) {
  std::string text = name + ':';
  for (const DocProfileEntry &entry : *data.base.get(name)) {
    const std::uint32_t mod = data.terms.mod(entry.term);
    text.append(" ").append(data.atoms.text(data.terms.head(entry.term)));
    if (mod != EmptyAtom)
      text.append(",").append(data.atoms.text(mod));
  }
  return text + '\n';
}

const char *const both = "a: house,big house\nb: new,big end,new\n";

std::vector<std::string> files() {
  std::vector<std::string> found;
  for (const std::string &path : paths)
    found.push_back(exists(path) ? read_text(path) : "none");
  return found;
}

class JournalTest : public testing::Test {
 protected:
  // What a run that only looks finds; it changes nothing.
  static std::string known() {
    write_text("known", "refused");
    run_over_data([](Data &data) {
      write_text("known", meaning(data, "a") + meaning(data, "b"));
      std::_Exit(0);
    });
    return read_text("known");
  }
  // Expects that a run is refused for that file, and all stay as they are.
  static void expect_refused(const std::string &file) {
    const auto before = files();
    const RunResult result = run_over_data([](Data &data) {
      learn(data, "c", {{"other", "word"}});
      data.base.write_vocabulary();
    });
    EXPECT_TRUE(result.screen.starts_with("ERROR: format error in file `" +
                                          file + "'\naborting..."));
    EXPECT_NE(result.status, 0);
    EXPECT_EQ(files(), before);
  }

  TemporaryDirectory directory_;
};

TEST_F(JournalTest, KeepsTheMeaningOfIdsUntilTheTablesHoldAll) {
  run_over_data([](Data &data) {
    learn_first(data);
    learn_second(data);
  });
  EXPECT_EQ(read_text(journal), two_documents);
  EXPECT_EQ(known(), both);
  std::filesystem::remove_all("data");
  run_over_data([](Data &data) {
    learn_first(data);
    data.base.write_vocabulary();
    learn(data, "b", {{"new", "big"}});
  });
  EXPECT_EQ(read_text(journal),
            "vek journal 1\n2 10 2 34 1 1\nnew\n2 1\nend\n");
  // The next run finds what it held and adds to it, ...
  run_over_data(learn_second);
  EXPECT_EQ(read_text(journal),
            "vek journal 1\n2 10 2 34 2 2\nnew\nend\n2 1\n3 2\nend\n");
  // ... and the one behind it brings all into the tables.
  run_over_data([](Data &data) {
    data.base.write_vocabulary();
    data.base.sync();
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
  run_over_data(learn_first);
  for (const std::string &text : texts) {
    SCOPED_TRACE(text);
    write_text(journal, text);
    expect_refused(journal);
  }
  write_text(journal, "vek journal 1\n0 0 0 0 2 1\n" + good + "end\n");
  EXPECT_EQ(run_over_data([](Data &) {}).status, 0);
}

// Whatever part of the tables has reached the disk when a run is stopped, all
// is there in the next one. But nothing may be cut off them that the journal
// does not give back: it may be damaged, or older, as when a later state is
// copied over an earlier one.
TEST_F(JournalTest, MakesTornTablesWholeAndLeavesOthersAlone) {
  run_over_data([](Data &data) {
    learn_first(data);
    data.base.write_vocabulary();
    learn_second(data);
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

}  // namespace
}  // namespace vek

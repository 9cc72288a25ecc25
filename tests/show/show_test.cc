// Whole runs of vek-show.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "show/confusions.h"
#include "support/small_collection.h"
#include "support/temporary_directory.h"

namespace vek::showing {
namespace {

namespace fs = std::filesystem;

struct Outcome {
  int status = 0;
  std::string output;
  std::string errors;
};

Outcome show(const std::string &arguments) {
  const int status = std::system(
      ("timeout 60 " VEK_SHOW_PROGRAM " " + arguments + " >output 2>errors")
          .c_str());
  return {WEXITSTATUS(status), read_text("output"), read_text("errors")};
}

bool has(const std::string &text, const std::string &part) {
  return text.find(part) != std::string::npos;
}

class ShowTest : public testing::Test {
 protected:
  static void learn(const std::string &settings) {
    write_text("vek.rc",
               "[General] analyser \"\" save on predictions on " + settings);
    fs::remove_all("data");
    ASSERT_EQ(std::system(VEK_PROGRAM " . 2>errors"), 0) << read_text("errors");
  }

  TemporaryDirectory directory_;
};

// Figures that can be counted in the texts and lists.
TEST_F(ShowTest, CountsAsAPersonWould) {
  write_text("files/a.txt", "house house [bicycle, race]");
  write_text("files/b.txt", "house bicycle \"odd\\tname\"");
  write_text("files/c.txt", "tree");
  write_text("train", "a x/y\nb x/y\nb x/z\nc w\n");
  write_text("test", "c w\n");
  learn("training sbc selectivity 0");
  EXPECT_EQ(show("tree --tsv").output,
            "class\tdocuments\tterms\n"
            "\t3\t5\nx\t2\t4\nx/y\t2\t4\nx/z\t1\t3\nw\t1\t1\n");
  // Three and one, of six occurrences.
  EXPECT_TRUE(has(show("class x/y --tsv").output,
                  "\nhouse\t0.6666666666666666\t2\t3\n"));
  EXPECT_EQ(show("term house").output,
            "term   documents  frequency  classes\n"
            "house          2          3        3\n\n"
            "Classes:\n"
            "term   class    weight  documents  frequency\n"
            "house  x      0.666667          2          3\n"
            "house  x/y    0.666667          2          3\n"
            "house  x/z    0.666667          1          1\n");
  EXPECT_TRUE(has(show("term race bicycle").output, "\nrace bicycle "));
  EXPECT_TRUE(has(show("term bicycle").output,
                  "\nPairs:\npair          documents  frequency\n"
                  "race bicycle          1          1\n"));
  // ln(3 / 1) and ln(3 / 2).
  EXPECT_EQ(show("document b --tsv").output,
            "term\tfrequency\tweight\tdocuments\n"
            "bicycle\t1\t1.0986122886681098\t1\n"
            "odd\\\\tname\t1\t1.0986122886681098\t1\n"
            "house\t1\t0.4054651081081644\t2\n");
}

TEST_F(ShowTest, TellsOfClassesTermsAndDocuments) {
  write_small_collection(true);
  learn("training winnow heldout 4 walk path maxranks 2");
  const std::string one = show("class animals/cats -n 2").output;
  for (const char *part :
       {"class                     animals/cats\n",
        "documents                 20\n", "documents of father       40\n",
        "held out parts            4\n", "promotions of terms       ",
        "\nHeaviest terms:\nterm  ", "  positive  ", "\n... and ",
        "predictions               ./pred"}) {
    EXPECT_TRUE(has(one, part)) << part << one;
  }
  // An inner class has no probability of its own to pass.
  const std::string inner = show("class animals").output;
  EXPECT_TRUE(has(inner, "  animals/cats animals/dogs\n")) << inner;
  EXPECT_FALSE(has(inner, "threshold of probability"));
  EXPECT_TRUE(show("class animals/cats --tsv")
                  .output.starts_with("term\tweight\tpositive\tnegative\tpromot"
                                      "ions\tdemotions\tdocuments"
                                      "\tfrequency\n"));
  const std::string pair = show("term m1 c0_1 --tsv").output;
  EXPECT_TRUE(has(pair, "\nm1 c0_1\tanimals/cats\t") ||
              has(show("term c0_1").output, "Pairs:\npair "))
      << pair;
  const std::string document = show("document d0 -n 1").output;
  EXPECT_TRUE(document.starts_with("document     d0\nterms        "))
      << document;
  const std::string tree = show("tree").output;
  EXPECT_TRUE(has(tree, "\n  animals   ")) << tree;
  EXPECT_TRUE(has(tree, "\n    dogs   ")) << tree;
}

TEST_F(ShowTest, CountsConfusionsAmongBrothers) {
  const std::string head =
      "document\ttrue\tassigned\tscore\tthreshold\tprobability\trank\t"
      "significant\tcandidates\tthresholds\n";
  int nr_documents = 0;
  const auto line = [&](const std::string &filed, const std::string &got) {
    return std::to_string(++nr_documents) + '\t' + filed + '\t' + got +
           (got.empty() ? "\t\t\t" : "\t1\t1\t") + "\t1\t1\t" + filed +
           ":1\t1\n";
  };
  write_text("p.tsv", head + line("a/b", "a/c/d") + line("a/b", "a/c/e") +
                          line("a/c/d", "a/c/e") + line("x", "a/b") +
                          line("a/b", "") + line("a/b", "a/b"));
  const struct {
    const char *path;
    const char *expected;
  } cases[] = {{"a/b", "a/c 2 0; 1 0;x 0 1;"},
               {"a/c", "a/b 0 2;"},
               {"a/c/d", "a/b 0 1;a/c/e 1 0;"},
               {"a", " 1 0;x 0 1;"}};
  for (const auto &[path, expected] : cases) {
    Confusions confusions;
    Failure failure;
    ASSERT_TRUE(find_confusions("p.tsv", path, confusions, failure))
        << failure.text();
    std::string text;
    for (const Confused &one : confusions.pairs) {
      text += one.with + ' ' + std::to_string(one.nr_lost) + ' ' +
              std::to_string(one.nr_won) + ';';
    }
    EXPECT_EQ(text, expected) << path;
  }
}

TEST_F(ShowTest, AsksTheAnalyserForWordsThatItDoesNotKnow) {
  write_small_collection(false);
  learn("");
  // It answers with the text itself.
  fs::create_symlink(VEK_SCRIPTED_ANALYSER, "scripted");
  write_text("vek.rc", "[General] analyser \"./scripted echo\"\n");
  EXPECT_TRUE(has(show("term '[c0_1' ',' 'm1]' c0_2").output, "\nc0_2 "));
}

TEST_F(ShowTest, RefusesInWords) {
  write_small_collection(false);
  learn("training sbc");
  const struct {
    const char *arguments;
    const char *message;
  } cases[] = {
      {"", "a command is needed; -h shows them"},
      {"--json --tsv tree", "only one of --json and --tsv"},
      {"-a Q tree", "valid arguments to -a are W, R, S and L"},
      {"-a L tree", "data/class1.cpf: line "},
      {"class birds", "data/classes: there is no class `birds'"},
      {"class cats -p none", "none: No such file or directory"},
      {"class cats -p files", "files: no predictions file"},
      {"document 'a\nb'", "data: there is no profile of document `a\\x0Ab'"},
      {"term odd", "data: there is no term `odd'"},
      {"tree -t terms", "--table=terms: `tree' has no such table"},
      {"tree -n -1", "--lines: -1 is no number from 0 up"},
      {"term", "word is required"},
      {"-d none tree", "none: there is no such directory"},
      {"-C none tree", "none: there is no such directory"},
      {"-d files tree", "files/classes: No such file or directory"}};
  for (const auto &[arguments, message] : cases) {
    const Outcome outcome = show(arguments);
    EXPECT_EQ(outcome.status, 2) << arguments;
    EXPECT_TRUE(outcome.errors.starts_with(std::string("vek-show: ") + message))
        << outcome.errors;
    EXPECT_EQ(outcome.output, "");
  }
  // Any file of the model damaged is told, and not shown.
  for (const char *file : {"atoms.dat", "terms.dat", "classes", "class1.cpf",
                           "profile-store.idx"}) {
    const std::string path = std::string("data/") + file;
    const std::string before = read_text(path);
    write_text(path,
               before.substr(0, before.size() / 2) + std::string(3, '\0'));
    const Outcome outcome = show("tree");
    EXPECT_EQ(outcome.status, 2) << file;
    EXPECT_TRUE(has(outcome.errors, "vek-show: data/")) << outcome.errors;
    write_text(path, before);
  }
  EXPECT_EQ(show("tree").status, 0);
}

}  // namespace
}  // namespace vek::showing

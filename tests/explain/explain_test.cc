// Whole runs of vek-explain, beside what vek has predicted.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "explain/decimals.h"
#include "support/small_collection.h"
#include "support/temporary_directory.h"

namespace vek::explaining {
namespace {

namespace fs = std::filesystem;

struct Outcome {
  int status = 0;
  std::string output;
  std::string errors;
};

Outcome run(const std::string &command) {
  const int status =
      std::system(("{ " + command + "; } >output 2>errors").c_str());
  return {WEXITSTATUS(status), read_text("output"), read_text("errors")};
}

constexpr char explain[] = "timeout 60 " VEK_EXPLAIN_PROGRAM " ";

std::vector<std::string> split(const std::string &text, char separator) {
  std::vector<std::string> parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, separator);)
    parts.push_back(part);
  return parts;
}

using Row = std::map<std::string, std::string>;

// Lines below a line with the names of the columns.
std::vector<Row> rows_of(const std::string &text) {
  const std::vector<std::string> lines = split(text, '\n');
  const std::vector<std::string> names = split(lines.at(0), '\t');
  std::vector<Row> rows;
  for (std::size_t i = 1; i < lines.size(); ++i) {
    const std::vector<std::string> fields = split(lines[i] + "\t ", '\t');
    for (std::size_t k = 0; k < names.size(); ++k)
      rows.resize(i), rows[i - 1][names[k]] = fields.at(k);
  }
  return rows;
}

std::string six_digits(const std::string &number) {
  char text[40];
  std::snprintf(text, sizeof text, "%g", std::stod(number));
  return text;
}

class ExplainTest : public testing::Test {
 protected:
  static void learn() {
    const Outcome learnt = run(VEK_PROGRAM " . && " VEK_PROGRAM " -xl .");
    ASSERT_EQ(learnt.status, 0) << learnt.errors;
  }

  static void write_settings(const std::string &settings) {
    write_text("vek.rc", "[General] save on predictions on " + settings);
    fs::remove_all("data");
  }

  // Assigned classes and candidates are those of the predictions.
  static void compare(const Row &prediction, const std::vector<Row> &rows,
                      const std::string &what) {
    std::string assigned;
    std::string candidates;
    int nr_candidates = 0;
    for (const Row &row : rows) {
      if (row.at("kind") != "assigned" && row.at("kind") != "leaf")
        continue;
      const std::string score =
          six_digits(row.at(row.at("score").empty() ? "probability" : "score"));
      if (row.at("kind") == "assigned") {
        assigned += row.at("class") + ' ' + score + ' ' +
                    six_digits(row.at("threshold")) + ' ';
      }
      if (++nr_candidates <= 20)
        candidates += row.at("class") + ':' + score + ' ';
    }
    std::string expected;
    const auto classes = split(prediction.at("assigned"), ' ');
    for (std::size_t i = 0; i < classes.size(); ++i) {
      expected += classes[i] + ' ' + split(prediction.at("score"), ' ').at(i) +
                  ' ' + split(prediction.at("threshold"), ' ').at(i) + ' ';
    }
    EXPECT_EQ(assigned, expected) << what;
    EXPECT_EQ(candidates, prediction.at("candidates") + ' ') << what;
  }

  // The parts of each sum give its total to the last digit, and that is the
  // score that stands with the class.
  static void add_up(const std::vector<Row> &rows, bool has_all,
                     bool is_logarithm, const std::string &what) {
    std::map<std::string, std::vector<double>> parts;
    std::map<std::string, std::string> rests;
    std::map<std::string, std::string> scores;
    int nr_totals = 0;
    for (const Row &row : rows) {
      const std::string &kind = row.at("kind");
      const std::string &name = row.at("class");
      const std::string &contribution = row.at("contribution");
      if (kind == "way" || kind == "brother")
        scores[name] = row.at("score");
      if (kind == "term" || kind == "bias")
        parts[name].push_back(std::stod(contribution));
      if (kind == "rest")
        rests[name] = contribution;
      if (kind != "total")
        continue;
      ++nr_totals;
      if (!is_logarithm) {
        EXPECT_EQ(contribution, scores.at(name)) << what;
      }
      const Column column(std::stod(contribution), Column::Precision::exact);
      EXPECT_EQ(rests.at(name), column.rest(parts[name])) << what;
      if (has_all) {
        EXPECT_LT(std::abs(std::stod(rests.at(name))), 1e-11) << what;
      }
    }
    EXPECT_GT(nr_totals, 0) << what;
  }

  TemporaryDirectory directory_;
};

TEST_F(ExplainTest, SaysWhatVekSaidOfTheExample) {
  fs::copy(VEK_EXAMPLE, ".", fs::copy_options::recursive);
  fs::create_symlink(VEK_ANALYSE_PROGRAM, "analyse.pl");
  for (const char *settings :
       {"training winnow strength ltc normalize vector heldout 5 walk path "
        "insignificant best",
        "training rocchio maxranks 3 walk path", "training sbc walk path",
        "training sbc maxranks 2",
        "training linear normalize vector maxranks 3 minranks 0"}) {
    write_settings(settings);
    learn();
    for (const Row &prediction : rows_of(read_text("predictions0.tsv"))) {
      const std::string name = prediction.at("document");
      const std::string what = settings + (": " + name);
      const Outcome all = run(explain + ("--tsv -t 0 " + name));
      ASSERT_EQ(all.status, 0) << what << all.errors;
      const std::vector<Row> rows = rows_of(all.output);
      compare(prediction, rows, what);
      const bool is_logarithm =
          settings == std::string("training sbc maxranks 2");
      add_up(rows, true, is_logarithm, what);
    }
  }
}

TEST_F(ExplainTest, TellsOfNewDocumentsOfOneClassAndOfCuts) {
  write_small_collection(true);
  write_settings("analyser \"\" training linear normalize vector maxranks 1");
  learn();
  fs::create_directory("elsewhere");
  fs::current_path("elsewhere");
  // A stored document, its file and its text are one; what is unknown is told.
  const std::string stored = run(explain + std::string("-C .. d0")).output;
  EXPECT_TRUE(stored.starts_with("d0: stored, ")) << stored;
  for (const char *way : {"../files/d0.txt", "- <../files/d0.txt"}) {
    const std::string text =
        run(explain + ("-C .. " + std::string(way))).output;
    EXPECT_EQ(text.substr(text.find('\n')), stored.substr(stored.find('\n')));
    EXPECT_NE(text.find(": new, "), std::string::npos) << text;
  }
  EXPECT_NE(run(explain + std::string("-C .. ../files/n0.txt"))
                .output.find(" of them unknown to the model; Linear\n"),
            std::string::npos);
  fs::current_path("..");
  const std::string other = run(explain + std::string("d0 plants")).output;
  EXPECT_NE(other.find("\nplants: below the threshold 1\n"), std::string::npos)
      << other;
  EXPECT_NE(run(explain + std::string("d0 animals"))
                .output.find("\nanimals is no leaf; of the leaves below it the "
                             "best is animals/cats: assigned\n"),
            std::string::npos);
  write_settings("analyser \"\" maxranks 1 minranks 4");
  learn();
  EXPECT_NE(run(explain + std::string("d0 stones"))
                .output.find("\nstones: MaxRanks 1\n"),
            std::string::npos);
  const std::vector<Row> few =
      rows_of(run(explain + std::string("-t 1 --tsv d0")).output);
  add_up(few, false, false, "d0");
}

// Markup and odd bytes in names and texts stay what they are.
TEST_F(ExplainTest, WritesAPageThatNothingBreaks) {
  write_small_collection(false);
  write_text("files/<i>.txt",
             "c0_1 c0_2 c0_3 </pre><script>alert(1)</script> \x1b[1m");
  write_text("train", read_text("train") + "<i> cats\n");
  write_settings("analyser \"\"");
  learn();
  ASSERT_EQ(run(explain + std::string("--html p.html '<i>'")).status, 0);
  const std::string page = read_text("p.html");
  EXPECT_EQ(page.find("<i>"), std::string::npos);
  EXPECT_EQ(page.find("<script"), std::string::npos);
  EXPECT_EQ(page.find('\x1b'), std::string::npos);
  EXPECT_NE(page.find("&lt;/pre&gt;&lt;"), std::string::npos);
  EXPECT_NE(page.find("default-src 'none'; style-src 'sha256-"),
            std::string::npos);
}

TEST_F(ExplainTest, MarksWordsByTheirTerms) {
  fs::copy(VEK_EXAMPLE, ".", fs::copy_options::recursive);
  fs::create_symlink(VEK_ANALYSE_PROGRAM, "analyse.pl");
  learn();
  ASSERT_EQ(run(explain + std::string("--html p.html cycling-15")).status, 0);
  const std::string page = read_text("p.html");
  // By their stems, in the pair, and no word that the analyser leaves out.
  EXPECT_NE(page.find("title=\"squad +"), std::string::npos);
  EXPECT_NE(page.find(">riders</mark>"), std::string::npos);
  EXPECT_NE(page.find("; coach ine +"), std::string::npos);
  EXPECT_EQ(page.find(">the</mark>"), std::string::npos);
}

TEST_F(ExplainTest, RefusesInWords) {
  write_small_collection(false);
  write_settings("analyser \"./none\"");
  write_text("bad.rc", "[General] walk on\n");
  fs::create_directory("empty");
  const struct {
    const char *arguments;
    const char *message;
  } early[] = {{"", "a document is needed"},
               {"-j --tsv d0", "only one of --json, --tsv and --html"},
               {"-a Wx d0", "valid arguments to -a are W, R, S and L"},
               {"-r bad d0", "bad.rc: line 1: before `on': parse error: "},
               {"d0", "data: there is no such directory"},
               {"-d empty d0", "empty/classes: No such file or directory"}};
  for (const auto &[arguments, message] : early) {
    const Outcome outcome = run(explain + std::string(arguments));
    EXPECT_EQ(outcome.status, 2);
    EXPECT_TRUE(
        outcome.errors.starts_with(std::string("vek-explain: ") + message))
        << outcome.errors;
  }
  write_settings("analyser \"\"");
  learn();
  write_text("vek.rc", "[General] analyser \"./none\"\n");
  const struct {
    const char *arguments;
    const char *message;
  } late[] = {
      {"'a\tb'", "a\\x09b: there is no such document and no such file\n"},
      {"d0 birds", "data/classes: there is no class `birds'\n"},
      {"-a R d0", ": no class profile of Rocchio: "},
      {"files/d0.txt", "files/d0.txt: analyser `./none' cannot be started: "},
      {"files", "files: no regular file\n"},
      {"- </dev/null", "standard input: analyser `./none' "},
      {"--html none/p d0", "vek-explain: the word `"}};
  for (const auto &[arguments, message] : late) {
    const Outcome outcome = run(explain + std::string(arguments));
    EXPECT_EQ(outcome.status, 2) << arguments;
    EXPECT_NE(outcome.errors.find(message), std::string::npos)
        << outcome.errors;
  }
}

}  // namespace
}  // namespace vek::explaining

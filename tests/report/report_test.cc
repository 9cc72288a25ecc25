// The units of vek-report: what is counted, what is refused, what is shown.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <numeric>
#include <regex>
#include <sstream>

#include "report/charts.h"
#include "report/comparison.h"
#include "report/excerpt.h"
#include "report/page.h"
#include "report/page_frame.h"
#include "report/predictions.h"
#include "report/table.h"
#include "report/tables.h"
#include "support/temporary_directory.h"

namespace vek::reporting {
namespace {

const std::string header =
    "document\ttrue\tassigned\tscore\tthreshold\tprobability\trank\t"
    "significant\tcandidates\tthresholds\n";

// Columns with `|` for the tab.
std::string lines(std::string text) {
  std::ranges::replace(text, '|', '\t');
  return text;
}

struct Read {
  explicit Read(const std::string &text) {
    is_good = parse_predictions(header + lines(text), "f", names,
                                run.predictions, failure);
    run.judge();
  }

  ClassNames names;
  Judged run{names, {}, {}, {}};
  Failure failure;
  bool is_good = false;
};

// Filed twice in a class, missed without any class, wrong, new.
const std::string small =
    "d1|a a|a|2|1|.9|1 1|1|a:2 b:.5|1 1\n"
    "d2|b|||||2|0|a:.9 b:.8|1 1\n"
    "d3|b c|b a|3 2|1 1|.9 .6|1 3|1|b:3 a:2 c:.1|1 1 1\n"
    "d4|c|c|2|1|.8|1|1|c:2 a:1|1 1\n"
    "n1||a|2|1|.7||1|a:2|1\n";

TEST(Predictions, DamageIsToldWithItsLine) {
  const struct {
    const char *text;
    const char *failure;
  } cases[] = {
      {"d|a|a|2", "f:2: columns: 4, and in the first line 10"},
      {"d|a|||||1|0||\n|a|||||1|0||\n", "f:3: a document without a name"},
      {"d|a|||||1|0||\nd|a|||||1|0||\n",
       "f:3: the document `d' stands there already"},
      {"d|a|||||1|0||", "f:2: the line has no end: the file is not complete"},
      {"d|a|||||x|0||\n",
       "f:2: `x' in column `rank' is not what belongs there"},
      {"d|a|||||1 2|0||\n",
       "f:2: entries in column `rank': 2, and 1 are wanted"},
      {"d|a  b|||||1|0||\n", "f:2: an empty entry in column `true'"},
      {"d|a |||||1|0||\n", "f:2: an empty entry in column `true'"},
      {"d|a|b|1|||1|0||\n",
       "f:2: entries in column `threshold': 0, and 1 are wanted"},
      {"d|a|||||1|2||\n", "f:2: significant is `2', not 0 or 1"},
      {"d|a|||||1|0|b|1\n",
       "f:2: `b' in column `candidates' is not what belongs there"},
      {"d|a|||||1|0|:1|1\n",
       "f:2: `:1' in column `candidates' is not what belongs there"},
      {"d|a|||||99999999999|0||\n",
       "f:2: `99999999999' in column `rank' is not what belongs there"},
  };
  for (const auto &[text, failure] : cases) {
    const Read read(text);
    EXPECT_FALSE(read.is_good) << text;
    EXPECT_EQ(read.failure.text(), failure);
  }
  ClassNames names;
  Predictions predictions;
  Failure failure;
  EXPECT_FALSE(parse_predictions("", "f", names, predictions, failure));
  EXPECT_FALSE(
      parse_predictions("document\n", "f", names, predictions, failure));
  EXPECT_EQ(failure.text(),
            "f:1: there is no column `true': this is no predictions file");
}

TEST(Predictions, ColumnsAreFoundByName) {
  ClassNames names;
  Predictions predictions;
  Failure failure;
  ASSERT_TRUE(
      parse_predictions(lines("later|" + header.substr(0, header.size() - 1) +
                              "\n"
                              "?|d|a:b|a:b|2|1||1|1|a:b:2|1\n"),
                        "f", names, predictions, failure))
      << failure.text();
  EXPECT_EQ(names[predictions.documents[0].candidates[0].class_id], "a:b");
  EXPECT_EQ(predictions.documents[0].candidates[0].score, 2);
}

TEST(Predictions, NamesAreUnescapedWhereTheyCan) {
  const Read read(
      "d\\x09\\\\e|a\\x09b|a\\x09b|2|1||1|1|a\\x09b:2|1\n"
      "d\\e|a|||||1|0||\n");
  ASSERT_TRUE(read.is_good) << read.failure.text();
  EXPECT_EQ(read.run.predictions.documents[0].name, "d\t\\e");
  EXPECT_EQ(read.run.predictions.documents[1].name, "d\\e");
  EXPECT_EQ(read.names[0], "a\tb");
  EXPECT_EQ(read.names.size(), 2U);
}

TEST(Predictions, TheNewestWithTestDocumentsIsTaken) {
  const TemporaryDirectory directory;
  const auto write = [](const std::string &name, const char *text, int age) {
    write_text(name, header + lines(text));
    std::filesystem::last_write_time(
        name, std::filesystem::file_time_type::clock::now() -
                  std::chrono::hours(age));
  };
  write("predictions0.tsv", "old|a|||||1|0||\n", 3);
  write("predictions1.tsv", "test|b|||||1|0||\n", 2);
  write("predictions2.tsv", "new||||||| 0||\n", 9);
  write("predictions3.tsv", "new|||||||0|z:1|1\n", 1);
  write("predictions.tsv", "nonsense", 0);
  ClassNames names;
  Predictions predictions;
  Failure failure;
  ASSERT_TRUE(find_predictions(".", names, predictions, failure))
      << failure.text();
  EXPECT_EQ(predictions.documents[0].name, "test");
  EXPECT_EQ(names.size(), 1U);
}

TEST(Figures, AreThoseOfTheRunsOwnReport) {
  const Read read(small);
  ASSERT_TRUE(read.is_good) << read.failure.text();
  const Figures &figures = read.run.figures;
  EXPECT_EQ(figures.nr_documents, 4U);
  EXPECT_EQ(figures.nr_new, 1U);
  std::ostringstream out;
  print_csv(class_table(read.run, "class", Order::usual), out);
  EXPECT_EQ(out.str(),
            "class,support,correct,missed,wrong,precision,recall,f1,accuracy\n"
            "a,2,1,1,1,0.5,0.5,0.5,0.5\n"
            "b,2,1,1,0,1,0.5,0.6666666666666666,0.75\n"
            "c,2,1,1,0,1,0.5,0.6666666666666666,0.75\n");
  EXPECT_EQ(figures.total.correct, 3U);
  EXPECT_DOUBLE_EQ(*figures.total.precision(), 3. / 4);
  EXPECT_DOUBLE_EQ(*figures.total.recall(), 3. / 6);
  EXPECT_DOUBLE_EQ(figures.macro_precision, 2.5 / 3);
  EXPECT_DOUBLE_EQ(figures.mean_reciprocal_rank, (1 + .5 + 1 + 1) / 4);
  EXPECT_EQ(figures.nr_first_right, 3U);
  EXPECT_EQ(figures.nr_right, 1U);
  EXPECT_EQ(figures.nr_without, 1U);
}

TEST(Figures, WhatDoesNotExistIsNoFigure) {
  const Read read(
      "d1|a|b|2|1||2|1|b:2 c:1|1 1\n"
      "d2|a|||||0|0||\n");
  std::ostringstream out;
  print_csv(class_table(read.run, "f1", Order::usual), out);
  // The larger one of equals first, and the one without figures last.
  EXPECT_EQ(out.str(),
            "class,support,correct,missed,wrong,precision,recall,f1,accuracy\n"
            "a,2,0,2,0,,0,0,0\n"
            "b,0,0,0,1,0,,0,0.5\n"
            "c,0,0,0,0,,,,1\n");
  EXPECT_EQ(read.run.figures.nr_counted, 2U);
  out.str("");
  print_json({class_table(read.run, "support", Order::reverse)}, out);
  EXPECT_TRUE(out.str().starts_with(
      R"({"classes":[{"class":"b","support":0,"correct":0,"missed":0,)"
      R"("wrong":1,"precision":0.0,"recall":null,)"))
      << out.str();
}

TEST(Confusions, PairWrongClassesWithMissedOrElseOwnOnes) {
  const Read read(small + "d5|b|b a|3 2|1 1||1|1|b:3|1\n");
  std::ostringstream out;
  print_csv(pair_table(read.run), out);
  EXPECT_EQ(out.str(), "documents,true,got\n1,a,\n1,b,a\n1,b,\n1,c,a\n");
}

TEST(Charts, CurveAndAveragePrecision) {
  // Members at 3 and 1, and one without a score; another document at 2.
  const Read read(
      "d1|a|||||1|0|a:3|1.5\nd2|b|||||1|0|a:2|1.5\n"
      "d3|a|||||1|0|a:1|1.5\nd4|a|||||0|0||\nd5|b|||||1|0|a:nan|1.5\n");
  const ScoreChart chart =
      chart_scores(read.run.predictions, read.names.size())[0];
  // Where recall stays, the curve has no point.
  ASSERT_EQ(chart.curve.size(), 2U);
  EXPECT_DOUBLE_EQ(chart.curve.back().recall, 2. / 3);
  EXPECT_DOUBLE_EQ(chart.curve.back().precision, 2. / 3);
  EXPECT_DOUBLE_EQ(chart.average_precision, (1 + 2. / 3) / 3);
  EXPECT_EQ(chart.members.front() + chart.members.back(), 2U);
  EXPECT_EQ(std::accumulate(chart.others.begin(), chart.others.end(), 0U), 1U);
  EXPECT_EQ(find_thresholds(read.run.predictions, read.names.size())[0], 1.5);
}

TEST(Charts, ReliabilityComparesPromiseAndShare) {
  const Reliability reliability =
      measure_reliability(Read(small).run.predictions);
  EXPECT_EQ(reliability.nr_assigned, 4U);
  EXPECT_EQ(reliability.bins[9].nr_correct, 2U);
  EXPECT_NEAR(reliability.error, (.2 + .2 + .6) / 4, 1e-12);
}

TEST(Charts, TreeCountsADocumentOnceInABranch) {
  const Read read(
      "d1|s/a s/b|s/a s/c|2 2|1 1||1 3|1|s/a:2|1\n"
      "d2|s/a|t//u|2|1||2|1|t//u:2|1\n"
      "d3|s/|s/a|2|1||0|1|s/a:2|1\n");
  const std::vector<TreeNode> nodes =
      build_tree(read.names, read.run.predictions);
  std::ostringstream text;
  for (const TreeNode &node : nodes) {
    text << node.name << ' '
         << (node.father == TreeNode::none ? "" : nodes[node.father].name)
         << ' ' << node.counts.correct << node.counts.missed
         << node.counts.wrong << '\n';
  }
  EXPECT_EQ(text.str(),
            "s  111\na s 111\nb s 010\nc s 001\nt  001\nu t 001\ns/  010\n");
  // Depth costs no more than a bound.
  std::string deep = "x";
  for (int i = 0; i < 400; ++i)
    deep += "/x";
  const Read far("d|" + deep + "|||||1|0||\n");
  EXPECT_EQ(build_tree(far.names, far.run.predictions).size(), 64U);
}

TEST(Comparison, TestsWhetherADifferenceIsChance) {
  EXPECT_DOUBLE_EQ(coin_probability(0, 0), 1);
  EXPECT_DOUBLE_EQ(coin_probability(5, 5), 1);
  EXPECT_NEAR(coin_probability(0, 6), 2. / 64, 1e-12);
  EXPECT_NEAR(coin_probability(9, 1), 2. * 11 / 1024, 1e-12);
  EXPECT_LT(coin_probability(400'000, 600'000), 1e-100);

  // The second run gets twelve of forty right that the first misses.
  ClassNames names;
  Predictions runs[2];
  for (int second = 0; second < 2; ++second) {
    std::string text = header;
    for (int i = 0; i < 40; ++i) {
      const bool is_right = i >= 12 || second == 1;
      text += lines("d" + std::to_string(i) + "|a|" +
                    (is_right ? "a|2|1" : "||") + "||1|0||\n");
    }
    // Only here; and filed differently.
    text += lines(second == 1 ? "x|a|||||1|0||\ny|b|||||1|0||\n"
                              : "y|a|||||1|0||\n");
    Failure failure;
    ASSERT_TRUE(parse_predictions(text, "f", names, runs[second], failure));
  }
  const Comparison comparison = compare(runs[0], runs[1], names.size());
  EXPECT_EQ(comparison.nr_common, 40U);
  EXPECT_EQ(comparison.nr_only_second, 1U);
  EXPECT_EQ(comparison.nr_refiled, 1U);
  EXPECT_EQ(comparison.nr_second_alone_right, 12U);
  EXPECT_NEAR(comparison.mcnemar, std::pow(.5, 11), 1e-12);
  const double difference = 1 - 2 * 28. / (28 + 40);
  EXPECT_NEAR(comparison.micro_f1.value, difference, 1e-12);
  EXPECT_LT(comparison.micro_f1.low, difference);
  EXPECT_GT(comparison.micro_f1.high, difference);
  EXPECT_TRUE(comparison.micro_f1.is_certain());
  const Comparison same = compare(runs[1], runs[1], names.size());
  EXPECT_TRUE(same.changed.empty());
  EXPECT_FALSE(same.micro_f1.is_certain());
}

TEST(Tables, NamesDoNoHarm) {
  const Table table{"t",
                    {"name", "value"},
                    {{std::string("a,\"b\""), 0.5},
                     {std::string("\x1B[31m\xFF\xE2\x80\xAE"), Share{0.12345}},
                     {Names{"\xE6\x97\xA5", "b"}, {}}}};
  std::ostringstream out;
  print_csv(table, out);
  const std::string bad = "\xEF\xBF\xBD";
  EXPECT_EQ(out.str(), "name,value\n\"a,\"\"b\"\"\",0.5\n" + bad + "[31m" +
                           bad + bad + ",0.12345\n\xE6\x97\xA5 b,\n");
  out.str("");
  print_aligned({table}, out);
  // A wide character takes two columns.
  EXPECT_NE(out.str().find("\xE6\x97\xA5 b          -\n"), std::string::npos)
      << out.str();
  EXPECT_NE(out.str().find("12.35%\n"), std::string::npos);
}

TEST(Excerpt, StaysInItsDirectory) {
  const TemporaryDirectory directory;
  write_text("files/d.txt",
             "ab\xC3\xA9"
             "d");
  write_text("secret.txt", "secret");
  EXPECT_EQ(excerpt("files", "d", 5),
            "ab\xC3\xA9"
            "d");
  EXPECT_EQ(excerpt("files", "d", 4), "ab\xC3\xA9...");
  EXPECT_EQ(excerpt("files", "d", 3), "ab...");
  EXPECT_EQ(excerpt("files", "../secret", 9), "");
  EXPECT_EQ(excerpt("files", "missing", 9), "");
  std::filesystem::create_directory("files/e.txt");
  EXPECT_EQ(excerpt("files", "e", 9), "");
}

TEST(Page, IsReplacedByACompleteOneOnly) {
  const TemporaryDirectory directory;
  Failure failure;
  EXPECT_TRUE(write_page("p.html", "old", failure));
  std::filesystem::create_directory("p.html.tmp");
  EXPECT_FALSE(write_page("p.html", "new", failure));
  EXPECT_EQ(failure.text(), "p.html: Is a directory");
  EXPECT_EQ(read_text("p.html"), "old");
  EXPECT_FALSE(write_page("/dev/full", std::string(1 << 20, 'x'), failure));
  EXPECT_EQ(failure.text(), "/dev/full: No space left on device");
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
}

}  // namespace
}  // namespace vek::reporting

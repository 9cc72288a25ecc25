#include "params/rcparser.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "learning/classifiers.h"
#include "support/recorded_messages.h"

namespace vek {
namespace {

// Every setting: the report of all algorithms, and what it leaves out.
std::vector<std::string> report(const Params &settings) {
  std::ostringstream text;
  text << (settings.rocchio.pivoted ? "Pivoted on\n" : "off\n")
       << settings.general_text(classifier_of(settings.algorithm).name);
  for (const Classifier &classifier : classifiers())
    classifier.write_settings(text, settings);
  std::istringstream stream(
      std::regex_replace(text.str(), std::regex(" +"), " "));
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);)
    lines.push_back(line);
  return lines;
}

// The settings that differ from their defaults.
std::string changes(const Params &settings) {
  const std::vector<std::string> before = report(Params());
  const std::vector<std::string> after = report(settings);
  std::string out;
  for (std::size_t n = 0; n < before.size(); ++n) {
    if (before[n] != after[n])
      out += (out.empty() ? "" : ", ") + after[n];
  }
  return out;
}

struct Case {
  std::string text;
  // Each as "<line> <token>: <what is wrong>;".
  std::string errors;
  std::string changes = "";
};

void check(const std::vector<Case> &cases) {
  const std::regex form(
      "ERROR: file f: line ([0-9]+): before `(.*)': parse error: (.*)\n");
  for (const Case &one : cases) {
    Params settings;
    RecordedMessages messages;
    RcParser parser(&settings, one.text, "f", messages);
    parser.parse();
    EXPECT_EQ(std::regex_replace(messages.text, form, "$1 $2: $3;"), one.errors)
        << one.text;
    EXPECT_EQ(parser.nr_errors(), std::ranges::count(one.errors, ';'))
        << one.text;
    EXPECT_EQ(changes(settings), one.changes) << one.text;
  }
}

TEST(RcParser, SetsEachParameterByItsKey) {
  check(
      {{"[General] datadirectory \"d\" inputdirectory \"i\" filedirectory "
        "\"l\" analyser \"a\" fparameter 0.5 selectivity 0 training sbc\n"
        "termselection tfidf incremental on save on scaling off maxranks 9\n"
        "minranks 8 normalize linear strength sqrt\n"
        "[Winnow] maxiters 7 alpha 1.5 beta .5 thetaplus 2 thetamin 0.25\n"
        "negativeweights off\n"
        "[Rocchio] pivoted on beta 8 gamma 2.0e1 negativeweights on\n"
        "[SBC] maxsignif 6 laplace off [Linear] cost 0.5 loss hinge\n",
        "",
        "Pivoted on, Analyser \"a\", DataDirectory \"d\", InputDirectory "
        "\"i\", FileDirectory \"l\", FParameter 0.5, MaxRanks 9, MinRanks 8, "
        "Algorithm SBC, TermSelection TfIdf, Incremental on, Save on, Scaling "
        "off, Selectivity off, Strength sqrt, Normalize linear, Alpha 1.5, "
        "Beta 0.5, ThetaPlus 2, ThetaMin 0.25, MaxIters 7, NegativeWeights "
        "off, Beta 8, Gamma 20, NegativeWeights on, Laplace off, MaxSignif "
        "6, Cost 0.5, Loss hinge"}});
}

TEST(RcParser, AcceptsWhatTheGrammarAllows) {
  using namespace std::string_literals;
  check(
      {{"", ""},
       {" # only a comment\n\n", ""},
       {"[General] maxranks 3 maxranks 5", "", "MaxRanks 5"},
       {"[Winnow] alpha 2 beta 3 [SBC] [Winnow] beta 4", "", "Alpha 2, Beta 4"},
       {"[\ngeneral # x\n]\nMAXRANKS\n# y\n\n3", "", "MaxRanks 3"},
       {"[General] maxranks 1,000 minranks 0", "", "MinRanks 0"},
       {"[General] maxranks 99999999999999999999", "", "MaxRanks 4294967295"},
       {"[General] fparameter 1.0e-999", "", "FParameter 0"},
       {"[General] analyser \"\\\"b\\\"[x]#c\"", "",
        "Analyser \"\\\"b\\\"[x]#c\""},
       {"[General] analyser \"a\0b\" save on"s, "", "Analyser \"a\", Save on"},
       // Each choice, and a selectivity that has an effect only with some.
       {"[General] training sbc training winnow termselection none strength "
        "ltc "
        "strength freq normalize vector normalize off",
        "", "TermSelection none, Selectivity off"},
       {"[General] training linear [linear] loss hinge loss logistic", "",
        "Algorithm Linear, Loss logistic"},
       {"[General] training rocchio termselection none termselection "
        "uncertainty strength bool normalize vector",
        "", "Algorithm Rocchio, Strength bool, Normalize vector"},
       {"[General] termselection termfreq strength ltc normalize cosine", "",
        "TermSelection TermFrequency, Strength ltc, Normalize vector"},
       {"[General] termselection docfreq selectivity .000000001", "",
        "TermSelection DocumentFrequency, Selectivity 1e-09"},
       {"[General] termselection infogain", "",
        "TermSelection InformationGain"}});
}

TEST(RcParser, ReportsAFaultAndKeepsTheOldValue) {
  check({{"maxranks 3 [General] minranks 4",
          "1 maxranks: section header expected;", "MinRanks 4"},
         {"[Foo] maxranks 3\n[Winnow] alpha 2", "1 Foo: invalid section name;",
          "Alpha 2"},
         {"[alpha]", "1 alpha: section name expected;"},
         {"[[Winnow] alpha 2", "1 [: section name expected;", "Alpha 2"},
         {"[", "1 <EOF>: section name expected;"},
         {"[Winnow", "1 <EOF>: `]' expected;"},
         {"[Winnow alpha 2 [SBC] laplace off", "1 alpha: `]' expected;",
          "Laplace off"},
         {"[General]\nalpha 1.5 maxranks 3 [Winnow] alpha 2",
          "2 alpha: general parameter expected;", "Alpha 2"},
         {"[Winnow] gamma 1", "1 gamma: Winnow parameter expected;"},
         {"[Rocchio] x", "1 x: invalid Rocchio parameter;"},
         {"[Rocchio] alpha 1", "1 alpha: Rocchio parameter expected;"},
         {"[SBC] x", "1 x: invalid SBC parameter;"},
         {"[Linear] loss square", "1 square: Loss expected;"},
         {"[SBC] \xFF", "1 \xFF: SBC parameter expected;"},
         {"[General] maxranks 3 3", "1 3: general parameter expected;",
          "MaxRanks 3"},
         {"[General] maxranks 2.5", "1 2.5: number expected;"},
         {"[General] save on maxranks -3", "1 -: number expected;", "Save on"},
         {"[General] maxranks 3 minranks", "1 <EOF>: number expected;",
          "MaxRanks 3"},
         {"[Winnow] alpha on", "1 on: rational number expected;"},
         {"[Winnow] alpha 1.0e999 beta 2",
          "1 1.0e999: rational number expected;"},
         {"[General] analyser a.pl [Winnow] alpha 3",
          "1 a: quoted string expected;", "Alpha 3"},
         {"[General] save 1", "1 1: `on' or `off' expected;"},
         {"[General] training on", "1 on: Training algorithm name expected;"},
         {"[General] termselection off",
          "1 off: Term selection algorithm name expected;"},
         {"[General] strength 5", "1 5: Strength mode expected;"},
         {"[General] normalize on", "1 on: normalize mode expected;"},
         // The rest of the section is skipped.
         {"[General] x y maxranks = \"[\" # [SBC] laplace off\n save on\n"
          "[Winnow] y\n[Bar]\n[Rocchio] beta 3",
          "1 x: invalid general parameter;3 y: invalid Winnow parameter;"
          "4 Bar: invalid section name;",
          "Beta 3"},
         // An unterminated string is told of, and not counted.
         {"[General] analyser \"a\nmaxranks 3 [SBC] laplace off \"\n",
          "ERROR: file f: line 1: unterminated string constant\n"
          "2 maxranks: quoted string expected;"
          "ERROR: file f: line 2: unterminated string constant\n",
          "Laplace off"}});
}

}  // namespace
}  // namespace vek

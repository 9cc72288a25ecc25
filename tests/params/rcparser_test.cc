#include "params/rcparser.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "support/messages.h"

namespace vek {
namespace {

// What the report shows of a record, for all algorithms, and what it leaves
// out.
std::map<std::string, std::string> all_settings(Params settings) {
  std::map<std::string, std::string> all;
  all["[Rocchio] Pivoted"] = settings.rocchio().pivoted() ? "on" : "off";
  for (const Algorithm algorithm : {settings.algorithm(), Algorithm::winnow,
                                    Algorithm::rocchio, Algorithm::sbc}) {
    settings.set_algorithm(algorithm);
    std::istringstream lines(settings.settings_text());
    std::string section;
    for (std::string line; std::getline(lines, line);) {
      const std::size_t value = line.find_last_of(' ') + 1;
      if (line.starts_with('['))
        section = line == "[General]" ? "" : line + ' ';
      else
        all.emplace(section + line.substr(0, line.find(' ')),
                    line.substr(value));
    }
  }
  return all;
}

// The settings that differ from their defaults.
std::string changes(const Params &settings) {
  const auto before = all_settings(Params());
  std::string out;
  for (const auto &[name, value] : all_settings(settings)) {
    if (before.at(name) != value)
      out += (out.empty() ? "" : ", ") + name + ' ' + value;
  }
  return out;
}

struct Case {
  std::string text;
  // Each as "<line> <token>: <what is wrong>; ".
  std::string errors;
  std::string changes = "";
};

void check(const std::vector<Case> &cases) {
  const std::regex form(
      "ERROR: file f: line ([0-9]+): before `(.*)': parse error: (.*)\n");
  for (const Case &one : cases) {
    Params settings;
    RcParser parser(&settings, one.text, "f");
    const std::string messages = screen([&] { parser.parse(); });
    EXPECT_EQ(std::regex_replace(messages, form, "$1 $2: $3; "), one.errors)
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
        "[SBC] maxsignif 6 laplace off\n",
        "",
        "Algorithm SBC, Analyser \"a\", DataDirectory \"d\", FParameter 0.5, "
        "FileDirectory \"l\", Incremental on, InputDirectory \"i\", MaxRanks "
        "9, MinRanks 8, Normalize linear, Save on, Scaling off, Selectivity "
        "off, Strength sqrt, TermSelection TfIdf, [Rocchio] Beta 8, "
        "[Rocchio] Gamma 20, [Rocchio] NegativeWeights on, [Rocchio] Pivoted "
        "on, [SBC] Laplace off, [SBC] MaxSignif 6, [Winnow] Alpha 1.5, "
        "[Winnow] Beta 0.5, [Winnow] MaxIters 7, [Winnow] NegativeWeights "
        "off, [Winnow] ThetaMin 0.25, [Winnow] ThetaPlus 2"}});
}

TEST(RcParser, KnowsEachChoice) {
  check({
      {"[General] training sbc training winnow", ""},
      {"[General] training rocchio", "", "Algorithm Rocchio"},
      {"[General] termselection none", "",
       "Selectivity off, TermSelection none"},
      {"[General] termselection none termselection uncertainty", ""},
      {"[General] termselection termfreq", "", "TermSelection TermFrequency"},
      {"[General] termselection docfreq", "",
       "TermSelection DocumentFrequency"},
      {"[General] termselection infogain", "", "TermSelection InformationGain"},
      {"[General] strength ltc strength freq", ""},
      {"[General] strength bool", "", "Strength bool"},
      {"[General] strength ltc", "", "Strength ltc"},
      {"[General] normalize vector normalize off", ""},
      {"[General] normalize vector", "", "Normalize vector"},
      {"[General] normalize cosine", "", "Normalize vector"},
  });
}

TEST(RcParser, AcceptsWhatTheGrammarAllows) {
  using namespace std::string_literals;
  check({
      {"", ""},
      {" # only a comment\n\n", ""},
      {"[General] maxranks 3 maxranks 5", "", "MaxRanks 5"},
      {"[Winnow] alpha 2 beta 3 [SBC] [Winnow] beta 4", "",
       "[Winnow] Alpha 2, [Winnow] Beta 4"},
      {"[\ngeneral # x\n]\nMAXRANKS\n# y\n\n3", "", "MaxRanks 3"},
      {"[General] maxranks 1,000 minranks 0", "", "MinRanks 0"},
      {"[General] maxranks 99999999999999999999", "", "MaxRanks 4294967295"},
      {"[General] fparameter 1.0e-999", "", "FParameter 0"},
      {"[General] analyser \"\\\"b\\\"[x]#c\"", "",
       "Analyser \"\\\"b\\\"[x]#c\""},
      {"[General] analyser \"a\0b\" save on"s, "", "Analyser \"a\", Save on"},
  });
}

TEST(RcParser, ReportsAFaultySection) {
  check({
      {"maxranks 3 [General] minranks 4",
       "1 maxranks: section header expected; ", "MinRanks 4"},
      {"[Foo] maxranks 3\n[Winnow] alpha 2", "1 Foo: invalid section name; ",
       "[Winnow] Alpha 2"},
      {"[alpha]", "1 alpha: section name expected; "},
      {"[\"winnow\"]", "1 winnow: section name expected; "},
      {"[[Winnow] alpha 2", "1 [: section name expected; ", "[Winnow] Alpha 2"},
      {"[", "1 <EOF>: section name expected; "},
      {"[Winnow", "1 <EOF>: `]' expected; "},
      {"[Winnow alpha 2 [SBC] laplace off", "1 alpha: `]' expected; ",
       "[SBC] Laplace off"},
  });
}

TEST(RcParser, ReportsAFaultyKeyInTheWordsOfItsSection) {
  check({
      {"[General] x 3 minranks 2", "1 x: invalid general parameter; "},
      {"[General]\nalpha 1.5 maxranks 3 [Winnow] alpha 2",
       "2 alpha: general parameter expected; ", "[Winnow] Alpha 2"},
      {"[Winnow] x", "1 x: invalid Winnow parameter; "},
      {"[Winnow] gamma 1", "1 gamma: Winnow parameter expected; "},
      {"[Rocchio] x", "1 x: invalid Rocchio parameter; "},
      {"[Rocchio] alpha 1", "1 alpha: Rocchio parameter expected; "},
      {"[SBC] x", "1 x: invalid SBC parameter; "},
      {"[SBC] \xFF", "1 \xFF: SBC parameter expected; "},
      {"[General] maxranks 3 3", "1 3: general parameter expected; ",
       "MaxRanks 3"},
  });
}

TEST(RcParser, ReportsAFaultyValueAndKeepsTheOldOne) {
  check({
      {"[General] maxranks 2.5", "1 2.5: number expected; "},
      {"[General] save on maxranks -3", "1 -: number expected; ", "Save on"},
      {"[General] maxranks 3 minranks", "1 <EOF>: number expected; ",
       "MaxRanks 3"},
      {"[Winnow] alpha on", "1 on: rational number expected; "},
      {"[Winnow] alpha 1.0e999 beta 2",
       "1 1.0e999: rational number expected; "},
      {"[General] analyser a.pl [Winnow] alpha 3",
       "1 a: quoted string expected; ", "[Winnow] Alpha 3"},
      {"[General] save 1", "1 1: `on' or `off' expected; "},
      {"[General] training on", "1 on: Training algorithm name expected; "},
      {"[General] termselection off",
       "1 off: Term selection algorithm name expected; "},
      {"[General] strength 5", "1 5: Strength mode expected; "},
      {"[General] normalize on", "1 on: normalize mode expected; "},
  });
}

TEST(RcParser, SkipsTheRestOfASectionAndStartsAnew) {
  check({
      {"[General] x y maxranks = \"[\" # [SBC] laplace off\n save on\n"
       "[Winnow] y\n[Bar]\n[Rocchio] beta 3",
       "1 x: invalid general parameter; 3 y: invalid Winnow parameter; "
       "4 Bar: invalid section name; ",
       "[Rocchio] Beta 3"},
      {"[[[",
       "1 [: section name expected; 1 [: section name expected; "
       "1 <EOF>: section name expected; "},
      // An unterminated string is told of, and not counted.
      {"[General] analyser \"a\nmaxranks 3 [SBC] laplace off \"\n",
       "ERROR: file f: line 1: unterminated string constant\n"
       "2 maxranks: quoted string expected; "
       "ERROR: file f: line 2: unterminated string constant\n",
       "[SBC] Laplace off"},
  });
}

// Whatever the tables hold, a keyword is a key of its own sections only, and a
// bracket is no value.
TEST(RcParser, AcceptsAKeywordInItsOwnSectionsOnly) {
  const std::vector<std::string> names = {"General", "Winnow", "Rocchio",
                                          "SBC"};
  ASSERT_EQ(resource_sections().size(), names.size());
  for (std::size_t n = 0; n < names.size(); ++n) {
    const ResourceSection &section = resource_sections()[n];
    for (const Keyword &keyword : keywords()) {
      const std::string word(keyword.text);
      std::istringstream input("[" + names[n] + "] " + word + " ]");
      Params settings;
      RcParser parser(&settings, input, "f");
      const std::string message = screen([&] { parser.parse(); });
      const bool is_key = std::ranges::any_of(
          section.keys,
          [&](const ResourceKey &key) { return key.keyword == keyword.code; });
      EXPECT_EQ(changes(settings), "");
      EXPECT_TRUE(message.starts_with("ERROR: file f: line 1: before `" +
                                      (is_key ? "]" : word) + "'"));
      EXPECT_EQ(message.find(section.missing_key) == message.npos, is_key);
    }
  }
}

TEST(ReadParameters, FillsTheGlobalRecordAndCountsErrors) {
  const TemporaryDirectory directory;
  write_text("a.rc", "[General] maxranks 3\n[Foo]\n[Winnow] alpha on");
  screen([] { EXPECT_EQ(read_parameters("a.rc"), 2U); });
  EXPECT_EQ(changes(params), "MaxRanks 3");
}

TEST(ReadParameters, EndsTheRunIfTheFileCannotBeRead) {
  const TemporaryDirectory directory;
  std::filesystem::create_directory("d.rc");
  EXPECT_EXIT(read_parameters("d.rc"), testing::ExitedWithCode(EISDIR),
              "error reading file `d.rc'\naborting");
}

}  // namespace
}  // namespace vek

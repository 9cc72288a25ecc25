#include "params/rcparser.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "run/options.h"

namespace vek {
namespace {

using Lines = std::vector<std::string>;

// Every field, a line each, by the name of its accessors.
Lines all_fields(const Params &p) {
  std::ostringstream out;
  out << "data_directory " << p.data_directory() << "\ninput_directory "
      << p.input_directory() << "\nfile_directory " << p.file_directory()
      << "\nanalyser " << p.analyser() << "\nf_parameter " << p.f_parameter()
      << "\nselectivity " << p.selectivity() << "\nalgorithm "
      << report_name(p.algorithm()) << "\nterm_selection "
      << report_name(p.term_selection()) << "\nincremental " << p.incremental()
      << "\nsave " << p.save() << "\nscaling " << p.scaling() << "\nmax_ranks "
      << p.max_ranks() << "\nmin_ranks " << p.min_ranks() << "\nnormalize "
      << report_name(p.normalize()) << "\nstrength "
      << report_name(p.strength()) << "\nwinnow.max_iters "
      << p.winnow().max_iters() << "\nwinnow.alpha " << p.winnow().alpha()
      << "\nwinnow.beta " << p.winnow().beta() << "\nwinnow.theta_plus "
      << p.winnow().theta_plus() << "\nwinnow.theta_min "
      << p.winnow().theta_min() << "\nwinnow.negative_weights "
      << p.winnow().negative_weights() << "\nrocchio.pivoted "
      << p.rocchio().pivoted() << "\nrocchio.beta " << p.rocchio().beta()
      << "\nrocchio.gamma " << p.rocchio().gamma()
      << "\nrocchio.negative_weights " << p.rocchio().negative_weights()
      << "\nsbc.max_signif " << p.sbc().max_signif() << "\nsbc.laplace "
      << p.sbc().laplace();
  Lines lines;
  std::istringstream in(out.str());
  for (std::string line; std::getline(in, line);)
    lines.push_back(line);
  return lines;
}

// The fields that differ from their defaults, parted by "; ".
std::string changes(const Params &settings) {
  const Lines before = all_fields(Params());
  const Lines after = all_fields(settings);
  std::string out;
  for (std::size_t n = 0; n < after.size(); ++n) {
    if (after[n] == before[n])
      continue;
    if (!out.empty())
      out += "; ";
    out += after[n];
  }
  return out;
}

struct Parse {
  std::string changes;
  // Without the part that all have: "ERROR: file f: ", and the line end.
  Lines messages;
  unsigned nr_errors = 0;
};

Lines without_prefix(const std::string &output) {
  const std::string prefix = "ERROR: file f: ";
  Lines lines;
  std::istringstream in(output);
  for (std::string line; std::getline(in, line);) {
    EXPECT_EQ(line.substr(0, prefix.size()), prefix);
    lines.push_back(line.substr(prefix.size()));
  }
  return lines;
}

Parse parse(std::string_view text) {
  Params settings;
  testing::internal::CaptureStderr();
  RcParser parser(&settings, text, "f");
  parser.parse();
  const std::string output = testing::internal::GetCapturedStderr();
  return {changes(settings), without_prefix(output), parser.nr_errors()};
}

TEST(RcParser, SetsEachParameterByItsKey) {
  const Parse result = parse(
      "[General] datadirectory \"d\" inputdirectory \"i\" filedirectory \"l\"\n"
      "analyser \"a b\" fparameter 0.5 selectivity 0 training sbc\n"
      "termselection tfidf incremental on save on scaling off maxranks 9\n"
      "minranks 8 normalize linear strength sqrt\n"
      "[Winnow] maxiters 7 alpha 1.5 beta .5 thetaplus 2 thetamin 0.25\n"
      "negativeweights off\n"
      "[Rocchio] pivoted on beta 8 gamma 2.0e1 negativeweights on\n"
      "[SBC] maxsignif 6 laplace off\n");
  EXPECT_EQ(result.messages, Lines{});
  EXPECT_EQ(result.changes,
            "data_directory d; input_directory i; file_directory l; "
            "analyser a b; f_parameter 0.5; selectivity 0; algorithm SBC; "
            "term_selection TfIdf; incremental 1; save 1; scaling 0; "
            "max_ranks 9; min_ranks 8; normalize linear; strength sqrt; "
            "winnow.max_iters 7; winnow.alpha 1.5; winnow.beta 0.5; "
            "winnow.theta_plus 2; winnow.theta_min 0.25; "
            "winnow.negative_weights 0; rocchio.pivoted 1; rocchio.beta 8; "
            "rocchio.gamma 20; rocchio.negative_weights 1; sbc.max_signif 6; "
            "sbc.laplace 0");
}

TEST(RcParser, KnowsEachChoice) {
  struct Choice {
    std::string entry;
    std::string changes;
  };
  const std::vector<Choice> choices = {
      {"training sbc training winnow", ""},
      {"training rocchio", "algorithm Rocchio"},
      {"training sbc", "algorithm SBC"},
      {"termselection none", "term_selection none"},
      {"termselection none termselection uncertainty", ""},
      {"termselection termfreq", "term_selection TermFrequency"},
      {"termselection docfreq", "term_selection DocumentFrequency"},
      {"termselection tfidf", "term_selection TfIdf"},
      {"termselection infogain", "term_selection InformationGain"},
      {"strength ltc strength freq", ""},
      {"strength bool", "strength bool"},
      {"strength sqrt", "strength sqrt"},
      {"strength ltc", "strength ltc"},
      {"normalize vector normalize off", ""},
      {"normalize linear", "normalize linear"},
      {"normalize vector", "normalize vector"},
      {"normalize cosine", "normalize vector"},
  };
  for (const Choice &choice : choices) {
    SCOPED_TRACE(choice.entry);
    const Parse result = parse("[General]" + choice.entry);
    EXPECT_EQ(result.messages, Lines{});
    EXPECT_EQ(result.changes, choice.changes);
  }
}

TEST(RcParser, AcceptsWhatTheGrammarAllows) {
  struct Accepted {
    std::string text;
    std::string changes;
  };
  const std::vector<Accepted> files = {
      {"", ""},
      {" # only a comment\n\n", ""},
      {"[General]", ""},
      {"[General] training winnow maxranks 3 analyser \"analyse.pl\" "
       "[Winnow] alpha 1.2 negativeweights on",
       "max_ranks 3; winnow.alpha 1.2"},
      {"[General] maxranks 3 maxranks 5", "max_ranks 5"},
      {"[Winnow] alpha 2 beta 3 [SBC] [Winnow] beta 4",
       "winnow.alpha 2; winnow.beta 4"},
      {"[general] MAXRANKS 3 [GENERAL] MinRanks 4", "max_ranks 3; min_ranks 4"},
      {"[\nGeneral # x\n]\nmaxranks\n# y\n\n3", "max_ranks 3"},
      {"[Winnow] alpha 2", "winnow.alpha 2"},
      {"[General] maxranks 1,000 minranks 0", "min_ranks 0"},
      {"[Winnow] alpha 1,000.5", "winnow.alpha 1"},
      {"[General] maxranks 99999999999999999999", "max_ranks 4294967295"},
      {"[General] fparameter 1.0e-999", "f_parameter 0"},
      {"[General] analyser \"\"", "analyser "},
      {"[General] analyser \"a \\\"b\\\" [x] # c\"",
       "analyser a \\\"b\\\" [x] # c"},
      {std::string("[General] analyser \"a\0b\" save on", 32),
       "analyser a; save 1"},
  };
  for (const Accepted &file : files) {
    SCOPED_TRACE(file.text);
    const Parse result = parse(file.text);
    EXPECT_EQ(result.messages, Lines{});
    EXPECT_EQ(result.nr_errors, 0U);
    EXPECT_EQ(result.changes, file.changes);
  }
}

struct Faulty {
  std::string text;
  Lines messages;
  std::string changes = "";
};

void check_faulty(const std::vector<Faulty> &files) {
  for (const Faulty &file : files) {
    SCOPED_TRACE(file.text);
    const Parse result = parse(file.text);
    EXPECT_EQ(result.messages, file.messages);
    EXPECT_EQ(result.nr_errors, file.messages.size());
    EXPECT_EQ(result.changes, file.changes);
  }
}

TEST(RcParser, ReportsAFaultySection) {
  check_faulty({
      {"maxranks 3 [General] minranks 4",
       {"line 1: before `maxranks': parse error: section header expected"},
       "min_ranks 4"},
      {"x", {"line 1: before `x': parse error: section header expected"}},
      {"[Foo] maxranks 3\n[Winnow] alpha 2",
       {"line 1: before `Foo': parse error: invalid section name"},
       "winnow.alpha 2"},
      {"[alpha]",
       {"line 1: before `alpha': parse error: section name "
        "expected"}},
      {"[\"winnow\"]",
       {"line 1: before `winnow': parse error: section name expected"}},
      {"[[Winnow] alpha 2",
       {"line 1: before `[': parse error: section name expected"},
       "winnow.alpha 2"},
      {"[", {"line 1: before `<EOF>': parse error: section name expected"}},
      {"[Winnow", {"line 1: before `<EOF>': parse error: `]' expected"}},
      {"[Winnow alpha 2 [SBC] laplace off",
       {"line 1: before `alpha': parse error: `]' expected"},
       "sbc.laplace 0"},
      {"[winnowfilter]",
       {"line 1: before `winnowfilter': parse error: section "
        "name expected"}},
  });
}

TEST(RcParser, ReportsAFaultyKeyInTheWordsOfItsSection) {
  check_faulty({
      {"[General] maxrank 3 minranks 2",
       {"line 1: before `maxrank': parse error: invalid general parameter"}},
      {"[General]\nalpha 1.5 maxranks 3 [Winnow] alpha 2",
       {"line 2: before `alpha': parse error: general parameter expected"},
       "winnow.alpha 2"},
      {"[Winnow] x",
       {"line 1: before `x': parse error: invalid Winnow "
        "parameter"}},
      {"[Winnow] gamma 1",
       {"line 1: before `gamma': parse error: Winnow "
        "parameter expected"}},
      {"[Rocchio] x",
       {"line 1: before `x': parse error: invalid Rocchio "
        "parameter"}},
      {"[Rocchio] alpha 1",
       {"line 1: before `alpha': parse error: Rocchio "
        "parameter expected"}},
      {"[SBC] x", {"line 1: before `x': parse error: invalid SBC parameter"}},
      {"[SBC] \xFF",
       {"line 1: before `\xFF': parse error: SBC parameter "
        "expected"}},
      {"[General] maxranks 3 3",
       {"line 1: before `3': parse error: general parameter expected"},
       "max_ranks 3"},
      {"[Winnow] winnowfilter 3",
       {"line 1: before `winnowfilter': parse "
        "error: Winnow parameter expected"}},
  });
}

TEST(RcParser, ReportsAFaultyValueAndKeepsTheOldOne) {
  check_faulty({
      {"[General] maxranks 2.5",
       {"line 1: before `2.5': parse error: number expected"}},
      {"[General] maxranks = 3",
       {"line 1: before `=': parse error: number expected"}},
      {"[General] save on maxranks -3",
       {"line 1: before `-': parse error: number expected"},
       "save 1"},
      {"[General] maxranks 3 minranks",
       {"line 1: before `<EOF>': parse error: number expected"},
       "max_ranks 3"},
      {"[Winnow] alpha on",
       {"line 1: before `on': parse error: rational number expected"}},
      {"[Winnow] alpha 1.0e999 beta 2",
       {"line 1: before `1.0e999': parse error: rational number expected"}},
      {"[General] analyser analyse.pl [Winnow] alpha 3",
       {"line 1: before `analyse': parse error: quoted string expected"},
       "winnow.alpha 3"},
      {"[General] save 1",
       {"line 1: before `1': parse error: `on' or `off' expected"}},
      {"[General] training on",
       {"line 1: before `on': parse error: Training algorithm name "
        "expected"}},
      {"[General] termselection off",
       {"line 1: before `off': parse error: Term selection algorithm name "
        "expected"}},
      {"[General] strength 5",
       {"line 1: before `5': parse error: Strength mode expected"}},
      {"[General] normalize on",
       {"line 1: before `on': parse error: normalize mode expected"}},
  });
}

TEST(RcParser, SkipsTheRestOfASectionAndStartsAnew) {
  check_faulty({
      {"[General] x y maxranks = \"[\" # [SBC] laplace off\n save on\n"
       "[Winnow] y\n[Bar]\n[Rocchio] beta 3",
       {"line 1: before `x': parse error: invalid general parameter",
        "line 3: before `y': parse error: invalid Winnow parameter",
        "line 4: before `Bar': parse error: invalid section name"},
       "rocchio.beta 3"},
      {"[[[",
       {"line 1: before `[': parse error: section name expected",
        "line 1: before `[': parse error: section name expected",
        "line 1: before `<EOF>': parse error: section name expected"}},
  });
}

TEST(RcParser, DoesNotCountAnUnterminatedString) {
  const Parse result =
      parse("[General] analyser \"a\nmaxranks 3 [SBC] laplace off \"\n");
  EXPECT_EQ(result.messages,
            (Lines{"line 1: unterminated string constant",
                   "line 2: before `maxranks': parse error: quoted string "
                   "expected",
                   "line 2: unterminated string constant"}));
  EXPECT_EQ(result.nr_errors, 1U);
  EXPECT_EQ(result.changes, "sbc.laplace 0");
}

bool has_key(const ResourceSection &section, Token::Code keyword) {
  for (const ResourceKey &key : section.keys) {
    if (key.keyword == keyword)
      return true;
  }
  return false;
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
      const std::string text(keyword.text);
      const Parse result = parse("[" + names[n] + "] " + text + " ]");
      EXPECT_EQ(result.changes, "");
      ASSERT_EQ(result.messages.size(), 1U);
      const std::string place = has_key(section, keyword.code) ? "]" : text;
      EXPECT_EQ(result.messages[0].find("line 1: before `" + place + "'"), 0U);
      EXPECT_EQ(
          result.messages[0].find(section.missing_key) != std::string::npos,
          place == text);
    }
  }
}

TEST(RcParser, ReadsAStream) {
  Params settings;
  std::istringstream input("[SBC] maxsignif 3");
  RcParser parser(&settings, input, "f");
  parser.parse();
  EXPECT_EQ(changes(settings), "sbc.max_signif 3");
}

class ReadParameters : public testing::Test {
 protected:
  void SetUp() override {
    std::string name = testing::TempDir() + "rcparserXXXXXX";
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    directory_ = name;
  }
  void TearDown() override { std::filesystem::remove_all(directory_); }

  std::string path(const std::string &name) const {
    return directory_ + "/" + name;
  }
  void write_file(const std::string &name, const std::string &text) const {
    std::ofstream(path(name)) << text;
  }

 private:
  std::string directory_;
};

TEST_F(ReadParameters, FillsTheGlobalRecordAndCountsErrors) {
  write_file("a.rc", "[General] maxranks 3\n[Foo]\n[Winnow] alpha on");
  testing::internal::CaptureStderr();
  EXPECT_EQ(read_parameters(path("a.rc")), 2U);
  const std::string prefix = "ERROR: file " + path("a.rc") + ": ";
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            prefix +
                "line 2: before `Foo': parse error: invalid section "
                "name\n" +
                prefix +
                "line 3: before `on': parse error: rational number "
                "expected\n");
  EXPECT_EQ(changes(params), "max_ranks 3");
}

TEST_F(ReadParameters, NamesTheFileAtVerbosityTwo) {
  write_file("a.rc", "");
  std::string program = "vek";
  std::string verbose = "-vv";
  std::string examples = "examples";
  std::vector<char *> arguments = {program.data(), verbose.data(),
                                   examples.data(), nullptr};
  testing::internal::CaptureStderr();
  options.parse_options(3, arguments.data());
  ASSERT_EQ(options.verbose(), 2U);
  EXPECT_EQ(read_parameters(path("a.rc")), 0U);
  const std::string output = testing::internal::GetCapturedStderr();
  EXPECT_NE(
      output.find("reading parameters from file `" + path("a.rc") + "'\n"),
      std::string::npos);
}

TEST_F(ReadParameters, EndsTheRunIfTheFileCannotBeRead) {
  EXPECT_EXIT(read_parameters(path("none.rc")), testing::ExitedWithCode(ENOENT),
              "cannot open file `.*none.rc' for reading\naborting");
  ASSERT_EQ(mkdir(path("d.rc").c_str(), 0700), 0);
  EXPECT_EXIT(read_parameters(path("d.rc")), testing::ExitedWithCode(EISDIR),
              "error reading file `.*d.rc'\naborting");
}

}  // namespace
}  // namespace vek

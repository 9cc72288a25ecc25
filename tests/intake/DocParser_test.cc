#include "intake/DocParser.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

#include "support/recorded_messages.h"
#include "vocabulary/atomtab.h"

namespace vek {
namespace {

std::string repeat(std::string_view part, std::size_t count) {
  std::string out;
  for (std::size_t i = 0; i < count; ++i)
    out += part;
  return out;
}

std::string dump(const AtomTable &atoms, const TermBag &bag) {
  std::string out;
  for (const auto &[pair, count] : bag) {
    out.append(out.empty() ? "" : "; ").append(atoms.text(pair.head));
    if (pair.mod != EmptyAtom)
      out.append("/").append(atoms.text(pair.mod));
    out += ':' + std::to_string(count);
  }
  return out;
}

// What comes of one text.
struct Parse {
  Parse(AtomTable &atoms, std::string_view text, const std::string &name) {
    DocParser parser(atoms, bag, text, name.c_str(), messages);
    EXPECT_TRUE(parser.parse());
    nr_errors = parser.nr_errors();
  }

  TermBag bag;
  RecordedMessages messages;
  std::uint32_t nr_errors = 0;
};

struct Case {
  std::string text;
  // "head/modifier:count" or "head:count", in the order of the bag.
  std::string terms;
  // The messages, those of errors as "<line> <token>: <what is wrong>!".
  std::string errors = "";
};

// Each case numbers its atoms from 0. Their order shows in that of the bag.
void check(const std::vector<Case> &cases) {
  const std::regex form(
      "ERROR: file doc: line ([0-9]+): before `(.*)': parse error: (.*)\n");
  for (const Case &one : cases) {
    StringPool pool;
    AtomTable atoms(pool);
    const Parse parse(atoms, one.text, "doc");
    EXPECT_EQ(dump(atoms, parse.bag), one.terms) << one.text;
    EXPECT_EQ(std::regex_replace(parse.messages.text, form, "$1 $2: $3!"),
              one.errors)
        << one.text;
    EXPECT_EQ(parse.nr_errors, std::ranges::count(one.errors, '!')) << one.text;
  }
}

TEST(AnalysisText, CountsWordsAndPhrases) {
  check({{"a b\n\ta", "a:2; b:1"},
         {"\"New York\" 1,000", "New York:1; 1,000:1"},
         {"a\\,b \"c\\\"d\"", "a\\,b:1; c\\\"d:1"},
         {"[ a | b , c | d ]", "a/c:1; a/d:1; b/c:1; b/d:1"},
         {"[ New\n\tYork ] [ \"New York\" ]", "New York:2"},
         {"[ [ oak , old ] tree , tall ]", "oak/old:1; oak tree/tall:1"},
         // The first group is the outer loop.
         {"[ [a|b] x [c|d] ]",
          "a:1; b:1; c:1; d:1; a x c:1; a x d:1; b x c:1; b x d:1"},
         // Nothing is handed on from braces and empty strings.
         {"[ { a , b } ]", "a/b:1", "1 ]: head expected!"},
         {"[ [ \"\" ] ]", "", "1 ]: head expected!"},
         {"[ [a] {b} , c ]", "a:1; b:1"},
         {"{ [a] , | b }", "a/b:1; a:1"},
         {"[ a \"\" ] [ \"\" a ] [ a | b , \"\" | a ]",
          "a :1; a/a:1; a:1; b/a:1"}});
}

TEST(AnalysisText, GoesOnBehindAnError) {
  check(
      {// Nothing is wrong at the level of the document.
       {"] a } | b ,", "a:1; b:1"},
       {"a \x01 b", "a:1; b:1"},
       {std::string("a\0b [", 5), "a:1"},
       // While recovery is pending nothing else is told.
       {"[ a } [ ] [ ]", "a:1", "1 }: `]' expected!1 ]: head expected!"},
       // The first bracket of the kind ends recovery, whatever it belongs to.
       {"[ , { a ] b } c", "a:1", "1 ,: head expected!1 <EOF>: `]' expected!"},
       {"\"a\n[ b ,\n", "",
        "ERROR: file doc: line 1: unterminated string constant\n"
        "3 <EOF>: `]' expected!"},
       {"[ x |\n" + repeat("[a|a]", 17) + "\ny, z ] [ b , c ]",
        "x/z:1; a:34; b/c:1", "3 y: too many alternatives in a compound!"}});
}

// "w0|w1|..." with that many words.
std::string alternatives(std::size_t count) {
  std::string out = "w0";
  for (std::size_t i = 1; i < count; ++i)
    out += "|w" + std::to_string(i);
  return out;
}

TEST(AnalysisText, MayNestWithoutEnd) {
  StringPool pool;
  AtomTable atoms(pool);
  constexpr std::size_t depth = 200000;
  const Parse deep(
      atoms, repeat("[", depth) + std::string(1000, 'a') + repeat("]", depth),
      "doc");
  EXPECT_EQ(deep.nr_errors, 0U);
  EXPECT_EQ(deep.bag.count({0, EmptyAtom}), depth);
  EXPECT_EQ(atoms.size(), 1U);
  // Each open group is told of once.
  EXPECT_EQ(Parse(atoms, repeat("{[", 5000), "doc").nr_errors, 10001U);
}

// A product that is too large counts as nothing; the phrase behind it does.
TEST(AnalysisText, LimitsProducts) {
  const std::string pairs = "too many pairs in a document";
  const std::string many = "too many alternatives in a compound";
  const std::string bytes = "too much text in compounds";
  const std::string twos = repeat("[a|b]", 16);
  const std::string words = alternatives(2000);
  // Each level makes a compound of what all levels inside of it hold.
  const auto onion = [](std::size_t depth) {
    return repeat("[", depth) + "a" + repeat(" abcdefgh ]", depth);
  };
  const struct {
    std::string name, text;
    std::string message;  // empty if the text is within the limit
  } cases[] = {
      {"16 groups of two", "[" + twos + "]", ""},
      {"17 groups of two", "[" + twos + "[a|b]]", many},
      {"65536 heads handed on", "[[" + alternatives(65536) + "]]", ""},
      {"65537 heads handed on", "[[" + alternatives(65537) + "]]", many},
      {"1024 by 1024",
       "[" + alternatives(1024) + "," + alternatives(1024) + "]", ""},
      {"2000 by 2000, alone", "[" + words + "," + words + "]", pairs},
      {"2000 by 2000, handed on", "[" + words + ",[" + words + "]]", pairs},
      {"heads handed on too often",
       repeat("[", 1000) + words + repeat("]", 1000), pairs},
      {"compounds in compounds", onion(1000), ""},
      {"compounds deep in compounds", onion(3000), bytes},
      {"long products", "[" + twos + std::string(1000, 'x') + "]", bytes}};
  for (const auto &[name, text, message] : cases) {
    StringPool pool;
    AtomTable atoms(pool);
    const Parse parse(atoms, text + repeat("]", 40) + "[ last ]", "doc");
    EXPECT_EQ(parse.nr_errors > 0, !message.empty()) << name;
    EXPECT_NE(parse.messages.text.find(message), std::string::npos) << name;
    EXPECT_EQ(parse.bag.count({atoms.find("last"), EmptyAtom}), 1U) << name;
  }
}

// So many that they are sorted in several times.
TEST(TermBag, CountsAsAMapDoes) {
  std::map<AtomPair, std::uint32_t> expected;
  TermBag bag;
  for (std::uint32_t i = 0; i < 300000; ++i) {
    const AtomPair pair = {i * 7919 % 100, i * 104729 % 1000};
    ++expected[pair];
    bag.add(pair);
  }
  EXPECT_EQ(bag.size(), expected.size());
  for (const auto &[pair, count] : expected)
    ASSERT_EQ(bag.count(pair), count);
}

// Errors of the scanner count as well.
TEST(AnalysisText, WithMoreThanAThousandErrorsHasTheRestCounted) {
  for (const std::size_t nr_errors : {999U, 1000U, 1001U, 200000U}) {
    StringPool pool;
    AtomTable atoms(pool);
    const Parse parse(atoms, "\"\n" + repeat("[]", nr_errors - 1), "doc");
    EXPECT_EQ(parse.nr_errors, nr_errors - 1);
    const std::string &text = parse.messages.text;
    EXPECT_EQ(std::ranges::count(text, '\n'), std::min(long(nr_errors), 1001L));
    EXPECT_EQ(text.ends_with("ERROR: file doc: " + std::to_string(nr_errors) +
                             " errors, of which 1000 are shown\n"),
              nr_errors > 1000);
  }
}

}  // namespace
}  // namespace vek

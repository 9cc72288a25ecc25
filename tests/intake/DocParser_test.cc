#include "intake/DocParser.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

#include "support/messages.h"
#include "vocabulary/atomtab.h"

namespace vek {
namespace {

using Texts = std::vector<std::string>;

std::string repeat(std::string_view part, std::size_t count) {
  std::string out;
  for (std::size_t i = 0; i < count; ++i)
    out += part;
  return out;
}

std::string dump(const TermBag &bag) {
  std::string out;
  for (const auto &[pair, count] : bag) {
    std::string term = atom_table.text(pair.head);
    if (pair.mod != EmptyAtom)
      term += "/" + atom_table.text(pair.mod);
    out += (out.empty() ? "" : "; ") + term + ":" + std::to_string(count);
  }
  return out;
}

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
    std::destroy_at(&atom_table);
    std::construct_at(&atom_table);
    TermBag bag;
    std::uint32_t nr_errors = 0;
    const std::string messages =
        screen([&] { nr_errors = parse_analysis(one.text, "doc", &bag); });
    EXPECT_EQ(dump(bag), one.terms) << one.text;
    EXPECT_EQ(std::regex_replace(messages, form, "$1 $2: $3!"), one.errors)
        << one.text;
    EXPECT_EQ(nr_errors, std::ranges::count(one.errors, '!')) << one.text;
  }
}

TEST(AnalysisText, CountsWordsAndPhrases) {
  check({{"", ""},
         {"a b\n\ta", "a:2; b:1"},
         {"\"New York\" 1,000", "New York:1; 1,000:1"},
         {"House house", "House:1; house:1"},
         {"a\\,b \"c\\\"d\"", "a\\,b:1; c\\\"d:1"},
         {"[ a | b , c | d ]", "a/c:1; a/d:1; b/c:1; b/d:1"},
         {"[ a , ] [ a b , | c ]", "a b/c:1"},
         {"{ a , b } { c }", "a/b:1; c:1"},
         {"[ New\n\tYork ] [ \"New York\" ]", "New York:2"},
         {"[ [ oak , old ] tree , tall ]", "oak/old:1; oak tree/tall:1"},
         // The first group is the outer loop.
         {"[ [a|b] x [c|d] ]",
          "a:1; b:1; c:1; d:1; a x c:1; a x d:1; b x c:1; b x d:1"},
         // A group alone hands its heads through.
         {"[ [ [ a | b ] ] , c ]", "a/c:1; a:2; b/c:1; b:2"},
         // Nothing is handed on from braces and empty strings.
         {"[ { a , b } ]", "a/b:1", "1 ]: head expected!"},
         {"[ x , { a } ]", "a:1"},
         {"\"\" [ \"\" , b ]", ""},
         {"[ \"\" [ a ] ]", "a:2"},
         {"[ [ \"\" ] ]", "", "1 ]: head expected!"}});
}

TEST(AnalysisText, GoesOnBehindAnError) {
  check(
      {// Nothing is wrong at the level of the document.
       {"] a } | b ,", "a:1; b:1"},
       {"a \x01 b", "a:1; b:1"},
       {std::string("a\0b [", 5), "a:1"},
       {"[ , a ]", "", "1 ,: head expected!"},
       {"[ a , b", "a/b:1", "1 <EOF>: `]' expected!"},
       {"{ a ] b }", "a:1; b:1", "1 ]: `}' expected!"},
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

// A plain reading of the language, with recursion, one atom after the other and
// all candidates spelled out at each step.
class PlainParser : public Scanner {
 public:
  PlainParser(std::string_view input, const char *name, Texts &atoms)
      : Scanner(Mode::document, input, name), atoms_(atoms) {}

  std::map<AtomPair, std::uint32_t> parse() {
    while (!at_end()) {
      Ids ids;
      if (is_word()) {
        enter(std::string(text()), ids);
        advance();
        count(ids, {EmptyAtom});
      } else if (!group(ids)) {
        advance();
      }
    }
    return bag_;
  }

 private:
  using Ids = std::vector<std::uint32_t>;

  bool is_word() const { return is(Token::word) || is(Token::string); }

  void enter(const std::string &text, Ids &ids) {
    if (text.empty())
      return;
    const auto place = std::ranges::find(atoms_, text);
    ids.push_back(static_cast<std::uint32_t>(place - atoms_.begin()));
    if (place == atoms_.end())
      atoms_.push_back(text);
  }

  void count(const Ids &heads, const Ids &modifiers) {
    for (const std::uint32_t head : heads) {
      for (const std::uint32_t mod : modifiers)
        ++bag_[{head, mod}];
    }
  }

  bool group(Ids &ids) {
    const bool braces = is('{');
    if (!braces && !is('['))
      return false;
    advance();
    phrase(ids);
    if (braces)
      ids.clear();
    if (has_error())
      skip_to(braces ? '}' : ']');
    expect(braces ? '}' : ']', braces ? "`}' expected" : "`]' expected");
    return true;
  }

  void phrase(Ids &heads) {
    do {
      if (!compound(heads))
        parse_error("head expected");
    } while (accept('|'));
    if (!accept(',')) {
      count(heads, {EmptyAtom});
      return;
    }
    do {
      Ids modifiers;
      compound(modifiers);
      count(heads, modifiers);
    } while (accept('|'));
  }

  bool compound(Ids &ids) {
    Texts candidates = {""};
    bool found = false;
    for (;;) {
      Ids handed;
      Texts parts;
      if (group(handed)) {
        for (const std::uint32_t id : handed)
          parts.push_back(atoms_[id]);
        found = found || (!candidates.empty() && !parts.empty());
      } else if (is_word()) {
        parts = {std::string(text())};
        advance();
        found = true;
      } else {
        break;
      }
      Texts longer;
      for (const std::string &candidate : candidates) {
        for (const std::string &part : parts)
          longer.push_back(candidate + (candidate.empty() ? "" : " ") + part);
      }
      candidates = longer;
    }
    for (const std::string &candidate : candidates) {
      if (found)
        enter(candidate, ids);
    }
    return found;
  }

  Texts &atoms_;
  std::map<AtomPair, std::uint32_t> bag_;
};

bool are_equal(const TermBag &bag,
               const std::map<AtomPair, std::uint32_t> &expected) {
  return std::ranges::equal(bag, expected,
                            [](const TermBagEntry &a, const auto &b) {
                              return a.pair == b.first && a.count == b.second;
                            });
}

// Parses all texts both ways, with the number of the text as its name.
void compare_with_plain_parser(const Texts &texts) {
  Texts atoms;
  std::vector<std::map<AtomPair, std::uint32_t>> bags;
  const std::string expected = screen([&] {
    for (std::size_t i = 0; i < texts.size(); ++i) {
      const std::string name = std::to_string(i);
      bags.push_back(PlainParser(texts[i], name.c_str(), atoms).parse());
    }
  });
  const std::string messages = screen([&] {
    for (std::size_t i = 0; i < texts.size(); ++i) {
      TermBag bag;
      parse_analysis(texts[i], std::to_string(i), &bag);
      ASSERT_TRUE(are_equal(bag, bags[i])) << texts[i];
    }
  });
  EXPECT_TRUE(messages == expected) << "messages differ";
  ASSERT_EQ(atom_table.size(), atoms.size());
  for (std::uint32_t id = 0; id < atoms.size(); ++id)
    ASSERT_EQ(atom_table.text(id), atoms[id]);
}

TEST(AnalysisText, IsReadPlainlyInAllShortSequences) {
  Texts texts = {"[ "};
  for (std::size_t i = 0; i < texts.size(); ++i) {
    for (const char *token : {"a", "b", "\"\"", "[", "]", "{", "}", "|", ","}) {
      if (std::ranges::count(texts[i], ' ') < 5)
        texts.push_back(texts[i] + token + " ");
    }
  }
  compare_with_plain_parser(texts);
}

// Brackets, bars and words in such proportions that groups nest and close.
TEST(AnalysisText, IsReadPlainlyAtRandom) {
  const std::vector<std::string> tokens = {
      "a", "b", "c",   "d", "\"x y\"", "\"\"", "1,2", "[", "[", "[",
      "]", "]", "] ]", "{", "}",       "|",    "|",   ",", ",", "\n\"z\n"};
  std::mt19937 random(1);
  Texts texts(4000);
  for (std::string &text : texts) {
    for (std::size_t length = random() % 60; length > 0; --length) {
      text += tokens[random() % tokens.size()];
      text += random() % 8 == 0 ? "\n" : " ";
    }
  }
  compare_with_plain_parser(texts);
}

// "w0|w1|..." with that many words.
std::string alternatives(std::size_t count) {
  std::string out = "w0";
  for (std::size_t i = 1; i < count; ++i)
    out += "|w" + std::to_string(i);
  return out;
}

TEST(AnalysisText, MayNestWithoutEnd) {
  constexpr std::size_t depth = 200000;
  TermBag bag;
  EXPECT_EQ(parse_analysis(repeat("[", depth) + std::string(1000, 'a') +
                               repeat("]", depth),
                           "doc", &bag),
            0U);
  EXPECT_EQ(bag.count({0, EmptyAtom}), depth);
  EXPECT_EQ(atom_table.size(), 1U);
  // Each open group is told of once.
  std::uint32_t nr_errors = 0;
  screen([&] { nr_errors = parse_analysis(repeat("{[", 5000), "doc", &bag); });
  EXPECT_EQ(nr_errors, 10001U);
  // A compound of many parts.
  const std::string text =
      "[ " + repeat("x [y] ", 50000) + "," + repeat("[z|z]", 10) + " ]";
  EXPECT_EQ(parse_analysis(text, "doc", &bag), 0U);
  EXPECT_EQ(bag.count({2, atom_table.size() - 1}), 1024U);
  EXPECT_EQ(atom_table.text(2).size(), 4 * 50000U - 1);
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
    const std::string whole = text + repeat("]", 40) + "[ last ]";
    TermBag bag;
    std::uint32_t nr_errors = 0;
    const std::string messages =
        screen([&] { nr_errors = parse_analysis(whole, "doc", &bag); });
    EXPECT_EQ(nr_errors > 0, !message.empty()) << name;
    EXPECT_NE(messages.find(message), std::string::npos) << name;
    EXPECT_EQ(bag.count({atom_table.enter("last"), EmptyAtom}), 1U) << name;
  }
}

// So many that they are sorted in several times, and looked at in between.
TEST(TermBag, CountsAsAMapDoes) {
  std::mt19937 random(1);
  std::map<AtomPair, std::uint32_t> expected;
  TermBag bag;
  for (int i = 0; i < 300000; ++i) {
    const auto number = static_cast<std::uint32_t>(random() % 100000);
    const AtomPair pair = {number / 1000, number % 1000};
    ++expected[pair];
    bag.add(pair);
    if (i % 50000 == 0) {
      EXPECT_EQ(bag.count(pair), expected[pair]);
      EXPECT_EQ(bag.size(), expected.size());
    }
  }
  EXPECT_TRUE(are_equal(bag, expected));
}

}  // namespace
}  // namespace vek

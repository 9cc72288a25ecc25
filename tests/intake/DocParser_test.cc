#include "intake/DocParser.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <ostream>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "support/messages.h"
#include "vocabulary/atomtab.h"

namespace vek {
namespace {

using Texts = std::vector<std::string>;

// Each case numbers its atoms from 0.
class AnalysisText : public testing::Test {
 protected:
  AnalysisText() {
    std::destroy_at(&atom_table);
    std::construct_at(&atom_table);
  }
};

struct Parse {
  std::string terms;   // "head/modifier:count" or "head:count", as in the bag
  std::string atoms;   // in the order of their ids
  std::string errors;  // the messages
};

bool operator==(const Parse &left, const Parse &right) {
  return left.terms == right.terms && left.atoms == right.atoms &&
         left.errors == right.errors;
}

std::ostream &operator<<(std::ostream &out, const Parse &parse) {
  return out << "{" << parse.terms << "} {" << parse.atoms << "} {"
             << parse.errors << "}";
}

void append_item(std::string &out, const std::string &item) {
  if (!out.empty())
    out += "; ";
  out += item;
}

std::string dump(const TermBag &bag) {
  std::string out;
  for (const auto &[pair, count] : bag) {
    std::string term = atom_table.text(pair.head);
    if (pair.mod != EmptyAtom)
      term += "/" + atom_table.text(pair.mod);
    append_item(out, term + ":" + std::to_string(count));
  }
  return out;
}

std::string dump(const AtomTable &table) {
  std::string out;
  for (std::uint32_t id = 0; id < table.size(); ++id) {
    append_item(out, table.text(id));
  }
  return out;
}

// The messages without what they have in common.
std::string brief(const std::string &messages) {
  const std::string opening = "ERROR: file doc: line ";
  std::string out;
  std::istringstream lines(messages);
  for (std::string line; std::getline(lines, line);) {
    append_item(out,
                line.starts_with(opening) ? line.substr(opening.size()) : line);
  }
  return out;
}

// The number of errors must be that of the messages.
Parse parse(const std::string &text) {
  std::destroy_at(&atom_table);
  std::construct_at(&atom_table);
  TermBag bag;
  std::uint32_t nr_errors = 0;
  const std::string messages =
      screen([&] { nr_errors = parse_analysis(text, "doc", &bag); });
  std::size_t nr_messages = 0;
  for (std::size_t place = messages.find("parse error");
       place != std::string::npos;
       place = messages.find("parse error", place + 1)) {
    ++nr_messages;
  }
  EXPECT_EQ(nr_errors, nr_messages) << text;
  return {dump(bag), dump(atom_table), brief(messages)};
}

struct Case {
  std::string text;
  Parse result;
};

void check(const std::vector<Case> &cases) {
  for (const auto &[text, result] : cases) {
    EXPECT_EQ(parse(text), result) << text;
  }
}

TEST_F(AnalysisText, CountsWordsAndPhrases) {
  check({
      {"", {"", "", ""}},
      {" \n\t", {"", "", ""}},
      {"house", {"house:1", "house", ""}},
      {"a b a", {"a:2; b:1", "a; b", ""}},
      {"\"New York\" 1,000", {"New York:1; 1,000:1", "New York; 1,000", ""}},
      {"House house", {"House:1; house:1", "House; house", ""}},
      {"a\\,b \"c\\\"d\"", {"a\\,b:1; c\\\"d:1", "a\\,b; c\\\"d", ""}},
      {"[ a ]", {"a:1", "a", ""}},
      {"[a,b]", {"a/b:1", "a; b", ""}},
      {"[ a | b ]", {"a:1; b:1", "a; b", ""}},
      {"[ a | b , c ]", {"a/c:1; b/c:1", "a; b; c", ""}},
      {"[ a , b | c ]", {"a/b:1; a/c:1", "a; b; c", ""}},
      {"[ a | b , c | d ]", {"a/c:1; a/d:1; b/c:1; b/d:1", "a; b; c; d", ""}},
      {"[ a b , c ]", {"a b/c:1", "a b; c", ""}},
      {"[ a , ]", {"", "a", ""}},
      {"[ a , | b ]", {"a/b:1", "a; b", ""}},
      {"[ a , b | ]", {"a/b:1", "a; b", ""}},
      {"[ a | a , b ]", {"a/b:2", "a; b", ""}},
      {"[ a , b ] [ a , b ]", {"a/b:2", "a; b", ""}},
      {"{ a , b }", {"a/b:1", "a; b", ""}},
      {"{ a }", {"a:1", "a", ""}},
      {"[ house , big ] [ car | automobile , red ] dog",
       {"house/big:1; car/red:1; automobile/red:1; dog:1",
        "house; big; car; automobile; red; dog", ""}},
  });
}

TEST_F(AnalysisText, PutsACompoundTogetherFromItsParts) {
  check({
      {"[ New\n\tYork ] [ \"New York\" ]", {"New York:2", "New York", ""}},
      {"[ [ oak , old ] tree , tall ]",
       {"oak/old:1; oak tree/tall:1", "oak; old; oak tree; tall", ""}},
      {"[ [ a | b ] c , d ]",
       {"a:1; b:1; a c/d:1; b c/d:1", "a; b; a c; b c; d", ""}},
      {"[ a [ b | c ] d ]",
       {"b:1; c:1; a b d:1; a c d:1", "b; c; a b d; a c d", ""}},
      // The first group is the outer loop.
      {"[ [a|b] x [c|d] ]",
       {"a:1; b:1; c:1; d:1; a x c:1; a x d:1; b x c:1; b x d:1",
        "a; b; c; d; a x c; a x d; b x c; b x d", ""}},
      // A group alone hands its heads through.
      {"[ [ [ a | b ] ] , c ]", {"a/c:1; a:2; b/c:1; b:2", "a; b; c", ""}},
      {"[ x , [ a , b ] ]", {"x/a:1; a/b:1", "x; a; b", ""}},
      {"[ x , [ a | b ] c ]",
       {"x/a c:1; x/b c:1; a:1; b:1", "x; a; b; a c; b c", ""}},
      {"[ [ a b ] [ c ] ]", {"a b:1; c:1; a b c:1", "a b; c; a b c", ""}},
  });
}

TEST_F(AnalysisText, HandsNothingOnFromBraces) {
  const std::string missing = "1: before `]': parse error: head expected";
  check({
      {"[ { a , b } ]", {"a/b:1", "a; b", missing}},
      {"[ { a , b } c , d ]", {"a/b:1", "a; b; d", ""}},
      {"[ c { a , b } , d ]", {"a/b:1", "a; b; d", ""}},
      {"[ c { a } [ b ] d ]", {"a:1; b:1", "a; b", ""}},
      {"[ { a } [ b ] ]", {"a:1; b:1", "a; b", missing}},
      {"[ x , { a } ]", {"a:1", "x; a", ""}},
      {"[ { a } | b ]",
       {"a:1; b:1", "a; b", "1: before `|': parse error: head expected"}},
  });
}

TEST_F(AnalysisText, DropsEmptyStrings) {
  check({
      {"\"\"", {"", "", ""}},
      {"\"\" a", {"a:1", "a", ""}},
      {"[ \"\" ]", {"", "", ""}},
      {"[ \"\" , b ]", {"", "b", ""}},
      {"[ a , \"\" | b ]", {"a/b:1", "a; b", ""}},
      {"[ \"\" a ]", {"a:1", "a", ""}},
      {"[ \"\" [ a ] ]", {"a:2", "a", ""}},
      {"[ \"\" \"\" ]", {"", "", ""}},
      {"[ a \"\" b ]", {"a  b:1", "a  b", ""}},
      // The inner group has nothing to hand on.
      {"[ [ \"\" ] ]", {"", "", "1: before `]': parse error: head expected"}},
  });
}

TEST_F(AnalysisText, GoesOnBehindAnError) {
  const std::string no_head = "parse error: head expected";
  const std::string no_bracket = "parse error: `]' expected";
  const std::string no_brace = "parse error: `}' expected";
  check({
      // Nothing is wrong at the level of the document.
      {"a , b", {"a:1; b:1", "a; b", ""}},
      {"] a } | b ,", {"a:1; b:1", "a; b", ""}},
      {"a \x01 b", {"a:1; b:1", "a; b", ""}},
      {std::string("a\0b [", 5), {"a:1", "a", ""}},
      {"[ ]", {"", "", "1: before `]': " + no_head}},
      {"[ , a ]", {"", "a", "1: before `,': " + no_head}},
      {"[ a | ]", {"a:1", "a", "1: before `]': " + no_head}},
      {"[ | a ] b", {"a:1; b:1", "a; b", "1: before `|': " + no_head}},
      {"{ } a", {"a:1", "a", "1: before `}': " + no_head}},
      {"[ a , b", {"a/b:1", "a; b", "1: before `<EOF>': " + no_bracket}},
      {"[ a } b ]", {"a:1; b:1", "a; b", "1: before `}': " + no_bracket}},
      {"{ a ] b }", {"a:1; b:1", "a; b", "1: before `]': " + no_brace}},
      {"[ a , b , c ] d",
       {"a/b:1; c:1; d:1", "a; b; c; d", "1: before `,': " + no_bracket}},
      // While recovery is pending nothing else is told.
      {"[ a } [ ] b", {"a:1; b:1", "a; b", "1: before `}': " + no_bracket}},
      {"[ a } [ ] [ ]",
       {"a:1", "a",
        "1: before `}': " + no_bracket + "; 1: before `]': " + no_head}},
      // The first bracket of the kind ends recovery, whatever it belongs to.
      {"[ , { a ] b } c",
       {"a:1", "a",
        "1: before `,': " + no_head + "; 1: before `<EOF>': " + no_bracket}},
      {"[ , [ a ] b ] c",
       {"a:1; c:1", "a; a b; c", "1: before `,': " + no_head}},
      {"[ , } ] c", {"c:1", "c", "1: before `,': " + no_head}},
      {"[\n[\na\n",
       {"a:2", "a",
        "4: before `<EOF>': " + no_bracket +
            "; 4: before `<EOF>': " + no_bracket}},
      {"[ [ ] ] a",
       {"a:1", "a",
        "1: before `]': " + no_head + "; 1: before `]': " + no_head}},
      {"\"a\n[ b ,\n",
       {"", "b",
        "1: unterminated string constant; 3: before `<EOF>': " + no_bracket}},
  });
}

// A plain reading of the language, with recursion, one atom after the other and
// all candidates spelled out at each step.
class PlainParser : public Scanner {
 public:
  PlainParser(std::string_view input, const char *name, Texts &atoms)
      : Scanner(Mode::document, input, name), atoms_(atoms) {}

  std::map<AtomPair, std::uint32_t> parse() {
    while (!at_end()) {
      Ids dropped;
      if (is_word()) {
        Ids ids;
        enter(std::string(text()), ids);
        advance();
        for (const std::uint32_t id : ids) {
          ++bag_[{id, EmptyAtom}];
        }
      } else if (!group(dropped)) {
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
    std::uint32_t id = 0;
    while (id < atoms_.size() && atoms_[id] != text) {
      ++id;
    }
    if (id == atoms_.size())
      atoms_.push_back(text);
    ids.push_back(id);
  }

  bool group(Ids &ids) {
    if (is('[')) {
      advance();
      phrase(ids);
      if (has_error())
        skip_to(']');
      expect(']', "`]' expected");
      return true;
    }
    if (is('{')) {
      advance();
      phrase(ids);
      ids.clear();
      if (has_error())
        skip_to('}');
      expect('}', "`}' expected");
      return true;
    }
    return false;
  }

  void phrase(Ids &heads) {
    do {
      if (!compound(heads))
        parse_error("head expected");
    } while (accept('|'));
    if (!accept(',')) {
      for (const std::uint32_t head : heads) {
        ++bag_[{head, EmptyAtom}];
      }
      return;
    }
    do {
      Ids modifiers;
      compound(modifiers);
      for (const std::uint32_t head : heads) {
        for (const std::uint32_t mod : modifiers) {
          ++bag_[{head, mod}];
        }
      }
    } while (accept('|'));
  }

  static std::string joined(const std::string &left, std::string_view right) {
    return left + (left.empty() ? "" : " ") + std::string(right);
  }

  bool compound(Ids &ids) {
    Texts candidates = {""};
    bool found = false;
    for (;;) {
      Ids handed;
      if (group(handed)) {
        Texts longer;
        for (const std::string &candidate : candidates) {
          for (const std::uint32_t id : handed) {
            longer.push_back(joined(candidate, atoms_[id]));
            found = true;
          }
        }
        candidates = longer;
      } else if (is_word()) {
        for (std::string &candidate : candidates) {
          candidate = joined(candidate, text());
        }
        advance();
        found = true;
      } else {
        break;
      }
    }
    if (found) {
      for (const std::string &candidate : candidates) {
        enter(candidate, ids);
      }
    }
    return found;
  }

  Texts &atoms_;
  std::map<AtomPair, std::uint32_t> bag_;
};

// Parses all texts both ways. Their messages are gathered, with the number of
// the text as the name.
void compare_with_plain_parser(const Texts &texts) {
  Texts atoms;
  std::vector<std::map<AtomPair, std::uint32_t>> bags;
  std::vector<std::uint32_t> nr_errors;
  const std::string expected = screen([&] {
    for (std::size_t i = 0; i < texts.size(); ++i) {
      const std::string name = std::to_string(i);
      PlainParser parser(texts[i], name.c_str(), atoms);
      bags.push_back(parser.parse());
      nr_errors.push_back(parser.nr_errors());
    }
  });
  std::size_t nr_different = 0;
  const std::string messages = screen([&] {
    for (std::size_t i = 0; i < texts.size(); ++i) {
      TermBag bag;
      bool same =
          parse_analysis(texts[i], std::to_string(i), &bag) == nr_errors[i] &&
          bag.size() == bags[i].size();
      auto place = bags[i].begin();
      for (auto entry = bag.begin(); same && entry != bag.end(); ++entry) {
        same = entry->pair == place->first && entry->count == place->second;
        ++place;
      }
      if (!same && nr_different++ == 0)
        ADD_FAILURE() << texts[i];
    }
  });
  EXPECT_EQ(nr_different, 0U);
  EXPECT_TRUE(messages == expected) << "messages differ";
  ASSERT_EQ(atom_table.size(), atoms.size());
  for (std::uint32_t id = 0; id < atoms.size(); ++id) {
    ASSERT_EQ(atom_table.text(id), atoms[id]);
  }
}

constexpr std::array<std::string_view, 9> short_tokens = {
    "a", "b", "\"\"", "[", "]", "{", "}", "|", ","};

TEST_F(AnalysisText, IsReadPlainlyInAllShortSequences) {
  Texts texts = {""};
  std::size_t begin = 0;
  for (int length = 1; length <= 4; ++length) {
    const std::size_t end = texts.size();
    for (; begin < end; ++begin) {
      for (const std::string_view token : short_tokens) {
        texts.push_back(texts[begin] + std::string(token) + " ");
      }
    }
  }
  for (std::string &text : texts) {
    text = "[ " + text;
  }
  compare_with_plain_parser(texts);
}

// Brackets, bars and words in such proportions that groups nest and close.
constexpr std::array<std::string_view, 20> soup_tokens = {
    "a", "b", "c",   "d", "\"x y\"", "\"\"", "1,2", "[", "[", "[",
    "]", "]", "] ]", "{", "}",       "|",    "|",   ",", ",", "\n\"z\n"};

TEST_F(AnalysisText, IsReadPlainlyAtRandom) {
  std::mt19937 random(1);
  Texts texts;
  for (int i = 0; i < 4000; ++i) {
    std::string text;
    for (std::size_t length = random() % 60; length > 0; --length) {
      text += soup_tokens[random() % soup_tokens.size()];
      text += random() % 8 == 0 ? "\n" : " ";
    }
    texts.push_back(text);
  }
  compare_with_plain_parser(texts);
}

std::string repeat(std::string_view part, std::size_t count) {
  std::string out;
  for (std::size_t i = 0; i < count; ++i) {
    out += part;
  }
  return out;
}

// "w0|w1|..." with that many words.
std::string alternatives(std::size_t count) {
  std::string out = "w0";
  for (std::size_t i = 1; i < count; ++i) {
    out += "|w" + std::to_string(i);
  }
  return out;
}

TEST_F(AnalysisText, MayNestWithoutEnd) {
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
}

TEST_F(AnalysisText, MayHaveACompoundOfManyParts) {
  TermBag bag;
  const std::string text =
      "[ " + repeat("x [y] ", 50000) + "," + repeat("[z|z]", 10) + " ]";
  EXPECT_EQ(parse_analysis(text, "doc", &bag), 0U);
  EXPECT_EQ(bag.count({1, atom_table.size() - 1}), 1024U);
  EXPECT_EQ(atom_table.text(1).size(), 4 * 50000U - 1);
}

struct LimitCase {
  std::string name;
  std::string text;
  std::string message;  // empty if the text is within the limit
};

// A product that is too large counts as nothing; the phrase behind it does.
TEST_F(AnalysisText, LimitsProducts) {
  const std::string pairs = "too many pairs in a document";
  const std::string many = "too many alternatives in a compound";
  const std::string bytes = "too much text in compounds";
  // Each level makes a compound of what all levels inside of it hold.
  const auto onion = [](std::size_t depth) {
    return repeat("[", depth) + "a" + repeat(" abcdefgh ]", depth);
  };
  const LimitCase cases[] = {
      {"16 groups of two", "[" + repeat("[a|b]", 16) + "]", ""},
      {"17 groups of two", "[" + repeat("[a|b]", 17) + "]", many},
      {"40 groups of two", "[" + repeat("[a|b]", 40) + "x, y]", many},
      {"65536 heads handed on", "[[" + alternatives(65536) + "]]", ""},
      {"65537 heads handed on", "[[" + alternatives(65537) + "]]", many},
      {"65537 heads", "[" + alternatives(65537) + "]", ""},
      {"1024 by 1024",
       "[" + alternatives(1024) + "," + alternatives(1024) + "]", ""},
      {"2000 by 2000, each modifier alone",
       "[" + alternatives(2000) + "," + alternatives(2000) + "]", pairs},
      {"2000 by 2000, modifiers handed on",
       "[" + alternatives(2000) + ",[" + alternatives(2000) + "]]", pairs},
      {"heads handed on too often",
       repeat("[", 1000) + alternatives(2000) + repeat("]", 1000), pairs},
      {"compounds in compounds", onion(1000), ""},
      {"compounds deep in compounds", onion(3000), bytes},
      {"long products",
       "[" + repeat("[a|b]", 16) + std::string(1000, 'x') + "]", bytes},
  };
  for (const auto &[name, text, message] : cases) {
    const std::string whole = text + repeat("]", 40) + "[ last ]";
    TermBag bag;
    std::uint32_t nr_errors = 0;
    const std::string messages =
        screen([&] { nr_errors = parse_analysis(whole, "doc", &bag); });
    EXPECT_EQ(nr_errors > 0, !message.empty()) << name;
    EXPECT_EQ(messages.find("parse error: " + message) != std::string::npos,
              !message.empty())
        << name;
    EXPECT_EQ(bag.count({atom_table.enter("last"), EmptyAtom}), 1U) << name;
  }
}

TEST_F(AnalysisText, TellsTheLimitAtItsPlace) {
  check(
      {{"[ x |\n" + repeat("[a|a]", 17) + "\ny, z ] [ b , c ]",
        {"x/z:1; a:34; b/c:1", "x; a; z; b; c",
         "3: before `y': parse error: too many alternatives in a compound"}}});
}

TEST(TermBag, IsInTheOrderOfHeadsAndThenModifiers) {
  TermBag bag;
  EXPECT_TRUE(bag.empty());
  EXPECT_TRUE(bag.begin() == bag.end());
  for (const AtomPair &pair : std::vector<AtomPair>{
           {2, 0}, {1, EmptyAtom}, {1, 5}, {2, 0}, {0, EmptyAtom}}) {
    bag.add(pair);
  }
  const std::vector<TermBagEntry> expected = {
      {{0, EmptyAtom}, 1}, {{1, 5}, 1}, {{1, EmptyAtom}, 1}, {{2, 0}, 2}};
  EXPECT_EQ(std::vector<TermBagEntry>(bag.begin(), bag.end()), expected);
  EXPECT_FALSE(bag.empty());
  EXPECT_EQ(bag.size(), 4U);
  EXPECT_EQ(bag.count({2, 0}), 2U);
  EXPECT_EQ(bag.count({2, 1}), 0U);
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
    }
  }
  ASSERT_EQ(bag.size(), expected.size());
  auto place = expected.begin();
  for (const auto &[pair, count] : bag) {
    ASSERT_EQ(pair, place->first);
    ASSERT_EQ(count, place->second);
    ++place;
  }
}

}  // namespace
}  // namespace vek

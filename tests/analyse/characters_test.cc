#include "analyse/characters.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace vek::analysis {
namespace {

bool is_utf8(std::string_view text) {
  Utf8Check check;
  check.add(text);
  return check.good();
}

bool is_utf8_in_two(std::string_view text, std::size_t cut) {
  Utf8Check check;
  check.add(text.substr(0, cut));
  check.add(text.substr(cut));
  return check.good();
}

TEST(Utf8Check, TellsValidTextsWhereverTheyAreCut) {
  struct Case {
    std::string_view text;
    bool is_valid;
  };
  const std::vector<Case> cases = {
      {"", true},
      {"plain text of more than eight bytes", true},
      {"caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 end of it all", true},
      {"\xF4\x8F\xBF\xBF", true},     // the last character
      {"\xF4\x90\x80\x80", false},    // one behind the last
      {"caf\xE9 in Latin-1", false},  //
      {"\x80", false},                // continuation alone
      {"\xC0\xAF", false},            // overlong
      {"\xC1\xBF", false},            //
      {"\xE0\x9F\xBF", false},        //
      {"\xF0\x8F\xBF\xBF", false},    //
      {"\xED\x9F\xBF", true},         // before the surrogates
      {"\xED\xA0\x80", false},        // a surrogate
      {"\xF5\x80\x80\x80", false},    //
      {"\xFF", false},                //
      {"cut \xE2\x82", false},        //
      {"cut \xF0\x9F\x98", false},    //
      {"\xE2\x82 goes on", false},    //
      {"eight by\xC3\xA9tes, then wrong \xC3", false}};
  for (const Case &c : cases) {
    EXPECT_EQ(is_utf8(c.text), c.is_valid) << c.text;
    for (std::size_t cut = 0; cut <= c.text.size(); ++cut) {
      EXPECT_EQ(is_utf8_in_two(c.text, cut), c.is_valid)
          << c.text << " cut at " << cut;
    }
  }
}

TEST(Utf8Check, TakesACharacterByteByByte) {
  Utf8Check check;
  for (const char byte : std::string_view("\xF0\x9F\x98\x80")) {
    EXPECT_TRUE(check.good_so_far());
    check.add(std::string_view(&byte, 1));
  }
  EXPECT_TRUE(check.good());
}

TEST(Characters, DecodesAndEncodesTheSame) {
  const std::string_view texts[] = {"a",
                                    "\x7F",
                                    "\xC2\x80",
                                    "\xDF\xBF",
                                    "\xE0\xA0\x80",
                                    "\xEF\xBF\xBF",
                                    "\xF0\x90\x80\x80",
                                    "\xF4\x8F\xBF\xBF"};
  for (const std::string_view text : texts) {
    const Character character = first_character(text);
    EXPECT_EQ(character.size, text.size());
    std::string encoded;
    append_utf8(encoded, character.value);
    EXPECT_EQ(encoded, text);
  }
}

TEST(Characters, ReadsABrokenCharacterAsOneByte) {
  for (const std::string_view text : {"\xE2\x82", "\xFFx", "\xC3(", "\x80"}) {
    EXPECT_EQ(first_character(text).value, 0xFFFD);
    EXPECT_EQ(first_character(text).size, 1U);
  }
}

TEST(Characters, CutsBetweenCharacters) {
  const std::string_view text = "a\xC3\xA9\xE2\x82\xAC";
  const std::size_t sizes[] = {0, 1, 1, 3, 3, 3, 6, 6};
  for (std::size_t limit = 0; limit < std::size(sizes); ++limit) {
    EXPECT_EQ(cut_at_character(text, limit).size(), sizes[limit]) << limit;
  }
}

TEST(Characters, ReadsWindows1252) {
  std::string text;
  append_windows_1252(text, "na\xEFve \x80 \x93quoted\x94 \x9F \x81");
  EXPECT_EQ(text, "naïve € “quoted” Ÿ \xEF\xBF\xBD");
}

TEST(Characters, KnowsItsKinds) {
  struct Case {
    std::int32_t character;
    CharKind kind;
  };
  const Case cases[] = {{'a', CharKind::letter},
                        {0x00E9, CharKind::letter},
                        {0x0416, CharKind::letter},
                        {0x4E2D, CharKind::letter},
                        {0x0301, CharKind::mark},
                        {0x093E, CharKind::mark},
                        {'7', CharKind::digit},
                        {0x0667, CharKind::digit},
                        {0x00AD, CharKind::invisible},
                        {0x200D, CharKind::invisible},
                        {0xFEFF, CharKind::invisible},
                        {0x00A0, CharKind::blank},
                        {0x200B, CharKind::blank},
                        {0x3000, CharKind::blank},
                        {'\n', CharKind::line_end},
                        {0x0085, CharKind::line_end},
                        {0x2028, CharKind::line_end},
                        {0x2029, CharKind::paragraph_end},
                        {0x2011, CharKind::hyphen},
                        {0x2013, CharKind::other},
                        {0x2019, CharKind::inner_mark},
                        {0x2026, CharKind::sentence_end},
                        {0x3002, CharKind::sentence_end},
                        {0, CharKind::other},
                        {1, CharKind::other},
                        {'[', CharKind::other},
                        {0xFFFD, CharKind::other},
                        {-1, CharKind::other},
                        {0x110000, CharKind::other},
                        {0xE000, CharKind::other}};
  for (const Case &c : cases) {
    EXPECT_EQ(kind_of(c.character), c.kind) << c.character;
  }
}

}  // namespace
}  // namespace vek::analysis

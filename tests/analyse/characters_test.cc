#include "analyse/characters.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vek::analysis {
namespace {

TEST(Characters, TellsHowFarATextIsValid) {
  const std::pair<std::string_view, std::size_t> cases[] = {
      {"", 0},
      {"caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 end", 18},
      // The last character, and one behind it.
      {"\xF4\x8F\xBF\xBF", 4},
      {"\xF4\x90\x80\x80", 0},
      {"caf\xE9 in Latin-1", 3},
      {"\x80", 0},
      // Overlong.
      {"\xC1\xBF", 0},
      {"\xE0\x9F\xBF", 0},
      {"\xF0\x8F\xBF\xBF", 0},
      // The last before the surrogates, and the first of them.
      {"\xED\x9F\xBF", 3},
      {"\xED\xA0\x80", 0},
      {"\xF5\x80\x80\x80", 0},
      {"cut \xF0\x9F\x98", 4},
      {"\xE2\x82 goes on", 0}};
  for (const auto &[text, size] : cases)
    EXPECT_EQ(valid_utf8_size(text), size) << text;
}

TEST(Characters, DecodesWhatItEncodesAndABrokenOneAsOneByte) {
  for (const std::string_view text :
       {"a", "\x7F", "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xEF\xBF\xBF",
        "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"}) {
    const Character character = first_character(text);
    EXPECT_EQ(character.size, text.size());
    std::string encoded;
    append_utf8(encoded, character.value);
    EXPECT_EQ(encoded, text);
  }
  for (const std::string_view text : {"\xE2\x82", "\xFFx", "\xC3(", "\x80"}) {
    EXPECT_EQ(first_character(text).value, 0xFFFD);
    EXPECT_EQ(first_character(text).size, 1U);
  }
}

TEST(Characters, CutsBetweenCharacters) {
  const std::string_view text = "a\xC3\xA9\xE2\x82\xAC";
  const std::size_t sizes[] = {0, 1, 1, 3, 3, 3, 6, 6};
  for (std::size_t limit = 0; limit < std::size(sizes); ++limit)
    EXPECT_EQ(cut_at_character(text, limit).size(), sizes[limit]) << limit;
}

TEST(Characters, ReadsWindows1252) {
  std::string text;
  append_windows_1252(text, "na\xEFve \x80 \x93quoted\x94 \x9F \x81");
  EXPECT_EQ(text, "naïve € “quoted” Ÿ \xEF\xBF\xBD");
}

TEST(Characters, KnowsItsKinds) {
  const std::pair<CharKind, std::vector<std::int32_t>> kinds[] = {
      {CharKind::letter, {'a', 0x00E9, 0x0416, 0x4E2D}},
      {CharKind::mark, {0x0301, 0x093E}},
      {CharKind::digit, {'7', 0x0667}},
      {CharKind::invisible, {0x00AD, 0x200D, 0xFEFF}},
      {CharKind::blank, {0x00A0, 0x200B, 0x3000}},
      {CharKind::line_end, {'\n', 0x0085, 0x2028}},
      {CharKind::paragraph_end, {0x2029}},
      {CharKind::hyphen, {0x2011}},
      {CharKind::inner_mark, {0x2019}},
      {CharKind::sentence_end, {0x2026, 0x3002}},
      {CharKind::other, {0x2013, 0, 1, '[', 0xFFFD, -1, 0x110000, 0xE000}}};
  for (const auto &[kind, characters] : kinds) {
    for (const std::int32_t character : characters)
      EXPECT_EQ(kind_of(character), kind) << character;
  }
}

}  // namespace
}  // namespace vek::analysis

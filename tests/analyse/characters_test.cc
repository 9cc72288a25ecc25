#include "analyse/characters.h"

#include <gtest/gtest.h>

#include <string_view>
#include <utility>

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

}  // namespace
}  // namespace vek::analysis

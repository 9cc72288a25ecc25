#include "base/helpers.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace vek {
namespace {

using Pair = std::pair<std::string, std::string>;

TEST(Path, JoinsWithoutDoublingTheExtension) {
  const Pair cases[] = {{Path("d", "n.x", ".x"), "d/n.x"},
                        {Path("", "n", ".x"), "n.x"},
                        {Path("d/", "n", ".x"), "d//n.x"},
                        {Path("d", "", ".x"), "d"},
                        {Path("d", ".x", ".x"), "d/.x.x"}};
  for (const auto &[path, text] : cases)
    EXPECT_EQ(path, text);
}

TEST(Printable, ShowsControlCharactersAsNumbers) {
  EXPECT_EQ(printable("a \t\x7F\xC3\xA4"), "a \\x09\\x7F\xC3\xA4");
}

}  // namespace
}  // namespace vek

#include "sort/folders.h"

#include <gtest/gtest.h>

namespace vek::sorting {
namespace {

TEST(Folders, NoTwoClassesShareOne) {
  const std::pair<const char *, const char *> cases[] = {
      {"sport", "sport"},
      {"sport/tennis", "sport/tennis"},
      {"unsure", "unsure_"},
      {"unsure_", "unsure__"},
      {"unsure/a", "unsure_/a"},
      {"a/unsure", "a/unsure"},
      {"rejected", "rejected_"},
      {"sorted.tsv", "sorted.tsv_"},
      {".vek-sort", "_.vek-sort"},
      {"_.vek-sort", "__.vek-sort"},
      {"..", "_.."},
      {"a/../b", "a/_../b"},
      {"_", "_"}};
  for (const auto &[name, folder] : cases) {
    EXPECT_EQ(folder_of_class(name), folder);
    EXPECT_EQ(class_of_folder(folder), name);
  }
  for (const char *folder : {"unsure", "rejected/x", "sorted.tsv", "a/.b"})
    EXPECT_EQ(class_of_folder(folder), "") << folder;
}

TEST(Folders, ChoicesOfNamesFitAndDiffer) {
  EXPECT_EQ(choice_of_name("a b.txt", 1), "a b.txt");
  EXPECT_EQ(choice_of_name("a b.tar.gz", 2), "a b.tar-2.gz");
  EXPECT_EQ(choice_of_name("Makefile", 10), "Makefile-10");
  const std::string longest =
      std::string(124, 'a') + "ä" + std::string(125, 'b') + ".txt";
  ASSERT_EQ(longest.size(), 255U);
  EXPECT_EQ(choice_of_name(longest, 3).size(), 255U);
  EXPECT_TRUE(choice_of_name(longest, 3).ends_with("b-3.txt"));
  EXPECT_EQ(choice_of_name(std::string(253, 'a') + "ä", 2),
            std::string(253, 'a') + "-2");
}

}  // namespace
}  // namespace vek::sorting

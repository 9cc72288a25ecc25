// A collection in the working directory, flat or as a tree, of texts that are
// their own analysis: words and pairs, mostly those of the class.
#ifndef VEK_TESTS_SUPPORT_SMALL_COLLECTION_H_
#define VEK_TESTS_SUPPORT_SMALL_COLLECTION_H_

#include <random>
#include <string>

#include "support/temporary_directory.h"

namespace vek {

// Documents for training are d0 and so on, those for a test t0 and so on; the
// new ones n0 and so on are not in a list and have words of their own.
inline void write_small_collection(bool is_tree) {
  std::minstd_rand dice(11);
  const auto write = [&](const std::string &name, int number, bool is_new) {
    std::string text;
    for (auto k = 6 + dice() % 30; k > 0; --k) {
      const std::string word =
          dice() % 3 == 0
              ? "n" + std::to_string(dice() % 20)
              : "c" + std::to_string(number) + '_' + std::to_string(dice() % 9);
      text += is_new && dice() % 4 == 0
                  ? "[new" + std::to_string(dice() % 9) + ", " + word + "] "
              : dice() % 3 == 0
                  ? "[" + word + ", m" + std::to_string(dice() % 4) + "] "
                  : word + ' ';
    }
    write_text("files/" + name + ".txt", text);
    const char *const classes[] = {"animals/cats", "animals/dogs", "plants",
                                   "stones"};
    std::string path = classes[number];
    if (!is_tree)
      path.erase(0, path.find('/') + 1);
    return name + ' ' + path + '\n';
  };
  std::string train;
  std::string test;
  for (int i = 0; i < 80; ++i)
    train += write("d" + std::to_string(i), i % 4, false);
  for (int i = 0; i < 12; ++i)
    test += write("t" + std::to_string(i), i % 4, false);
  for (int i = 0; i < 12; ++i) {
    const std::string name = "n" + std::to_string(i);
    write(name, i % 4, true);
    write_text("input/in/" + name + ".txt", "");
  }
  write_text("train", train);
  write_text("test", test);
}

}  // namespace vek

#endif  // VEK_TESTS_SUPPORT_SMALL_COLLECTION_H_

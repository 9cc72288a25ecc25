// A small kept model, texts that come in, and calls of vek-sort.
#ifndef VEK_TESTS_SORT_SORT_RUN_H_
#define VEK_TESTS_SORT_SORT_RUN_H_

#include <sstream>
#include <string>
#include <vector>

#include "data/small_data.h"

namespace vek::sorting {

namespace fs = std::filesystem;
using keeping::Outcome;
using keeping::run;

// In the working directory: the model, `in`, and `to` after a call.
class SortRun : public keeping::SmallData {
 protected:
  SortRun() {
    write_text("train", "a1 sport\na2 sport\nb1 home\nb2 home\n");
    write_text("files/b2.txt", "bread gas");
    fs::remove_all("data");
    EXPECT_EQ(keeping::run_vek().status, 0);
  }

  static Outcome sort(const std::string &options = "--to to . in",
                      const std::string &fault = "") {
    return run(VEK_SORT_PROGRAM " --settle 0 " + options, fault);
  }

  // The files of a directory with their texts, without what is of vek-sort.
  static std::map<std::string, std::string> texts_in(const fs::path &top) {
    std::map<std::string, std::string> texts;
    if (!fs::exists(top))
      return texts;
    for (const auto &entry : fs::recursive_directory_iterator(top)) {
      const std::string path = fs::relative(entry.path(), top);
      if (entry.is_regular_file() && path != "sorted.tsv" &&
          path.find(".vek-sort/") == std::string::npos)
        texts[path] = read_text(entry.path());
    }
    return texts;
  }
  static std::string names_in(const fs::path &top) {
    std::string names;
    for (const auto &[name, text] : texts_in(top))
      names += (names.empty() ? "" : " ") + name;
    return names;
  }

  // Columns of the log, from 0, of each line but the first.
  static std::vector<std::string> log_column(std::size_t number) {
    std::vector<std::string> values;
    std::istringstream log(read_text("to/sorted.tsv"));
    std::string line;
    for (bool is_first = true; std::getline(log, line); is_first = false) {
      std::istringstream fields(line);
      std::string field;
      for (std::size_t i = 0; i <= number; ++i)
        std::getline(fields, field, '\t');
      if (!is_first)
        values.push_back(field);
    }
    return values;
  }
};

}  // namespace vek::sorting

#endif  // VEK_TESTS_SORT_SORT_RUN_H_

// Calls vek-import in a directory of its own.
#ifndef VEK_TESTS_IMPORT_IMPORT_RUN_H_
#define VEK_TESTS_IMPORT_IMPORT_RUN_H_

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>

#include "support/temporary_directory.h"

namespace vek::importing {

using Files = std::map<std::string, std::string>;

inline Files files_of(const std::string &directory) {
  Files files;
  for (const auto &entry :
       std::filesystem::recursive_directory_iterator(directory)) {
    if (entry.is_regular_file())
      files[std::filesystem::relative(entry.path(), directory)] =
          read_text(entry.path());
  }
  return files;
}

class ImportRun : public ::testing::Test {
 protected:
  // Returns the status; what it wrote is in the files `output` and `errors`.
  static int import(const std::string &arguments) {
    const int status = std::system(
        (VEK_IMPORT_PROGRAM " " + arguments + " >output 2>errors").c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  // A column of a table, without its heading, with a blank behind each field.
  static std::string column(const std::string &file, std::size_t number) {
    std::ifstream table(file);
    std::string line;
    std::string result;
    std::getline(table, line);
    while (std::getline(table, line)) {
      std::size_t begin = 0;
      for (std::size_t i = 1; i < number; ++i)
        begin = line.find('\t', begin) + 1;
      result += line.substr(begin, line.find('\t', begin) - begin) + ' ';
    }
    return result;
  }

  TemporaryDirectory directory_;
};

}  // namespace vek::importing

#endif  // VEK_TESTS_IMPORT_IMPORT_RUN_H_

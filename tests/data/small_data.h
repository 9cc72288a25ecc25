// A small collection, what vek has learnt from it, and runs of both programs.
#ifndef VEK_TESTS_DATA_SMALL_DATA_H_
#define VEK_TESTS_DATA_SMALL_DATA_H_

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>

#include "support/temporary_directory.h"

namespace vek::keeping {

namespace fs = std::filesystem;

struct Outcome {
  int status;  // of the shell: above 128 for a signal
  std::string output;
  std::string errors;
};

// `fault` as in failing_calls.cc; what was hit is in the file `report` then.
inline Outcome run(const std::string &command, const std::string &fault = "") {
  std::string line = "exec 2>errors; ";
  if (!fault.empty()) {
    fs::remove("report");
    line += "VEK_FAULT='" + fault +
            "' VEK_FAULT_REPORT=report LD_PRELOAD=" VEK_FAILING_CALLS
            " "
            "ASAN_OPTIONS=verify_asan_link_order=0:detect_leaks=0 ";
  }
  const int status = std::system((line + command + " >output").c_str());
  return {WEXITSTATUS(status), read_text("output"), read_text("errors")};
}

inline Outcome run_vek() {
  return run(VEK_PROGRAM " .");
}
inline Outcome vek_data(const std::string &words,
                        const std::string &fault = "") {
  return run(VEK_DATA_PROGRAM " " + words, fault);
}

inline std::string profiles() {
  return vek_data("export -j data").output;
}

inline std::map<std::string, std::string> files_of(const fs::path &directory) {
  std::map<std::string, std::string> files;
  for (const auto &entry : fs::directory_iterator(directory))
    files[entry.path().filename()] = read_text(entry.path());
  return files;
}

class SmallData : public testing::Test {
 protected:
  SmallData() {
    fs::create_directory("ex");
    fs::current_path("ex");
    write_text("train", "a1 sport\na2 sport\nb1 home\nnone home\n");
    write_text("test", "c1 home\n");
    write_text("files/a1.txt", "[race, bicycle] race");
    write_text("files/a2.txt", "race bicycle");
    write_text("files/b1.txt", "bread \"gas oven\"");
    write_text("files/none.txt", "");
    write_text("files/c1.txt", "bread race new");
    write_text("vek.rc",
               "[general] analyser \"\" termselection none save on "
               "heldout 2");
    EXPECT_EQ(run_vek().status, 0);
    fs::copy("data", "before");
  }

  static void restore() {
    for (const char *name : {"data", "data.compact", "copied", "copied.part"})
      fs::remove_all(name);
    fs::copy("before", "data");
  }

 private:
  TemporaryDirectory directory_;
};

}  // namespace vek::keeping

#endif  // VEK_TESTS_DATA_SMALL_DATA_H_

#include "import/resource.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>

namespace vek::importing {
namespace {

constexpr char analyser[] = "vek-analyse";

bool is_program(const std::filesystem::path &path) {
  return access(path.c_str(), X_OK) == 0;
}

}  // namespace

std::string find_analyser() {
  std::error_code error;
  const std::filesystem::path self =
      std::filesystem::read_symlink("/proc/self/exe", error);
  if (!error && is_program(self.parent_path() / analyser))
    return self.parent_path() / analyser;
  const char *path_P = std::getenv("PATH");
  std::istringstream directories(path_P == nullptr ? "" : path_P);
  std::string directory;
  while (std::getline(directories, directory, ':')) {
    const std::filesystem::path path =
        std::filesystem::absolute(directory, error) / analyser;
    if (!error && !directory.empty() && is_program(path))
      return path;
  }
  return std::string("/usr/bin/") + analyser;
}

std::string resource_text(const std::string &language, std::size_t nr_classes) {
  std::string text =
      "# Settings for these examples, made by vek-import, which writes no "
      "file\n"
      "# of this name again: change what you like. See vek.rc(5).\n"
      "\n"
      "[General]\n"
      "# The language was told by the texts; `vek-analyse -l ?' has all.\n";
  text += "analyser \"" + find_analyser() + " -l " + language + "\"\n";
  text +=
      "# Longer than this, in seconds, no text can take it.\n"
      "analysertimeout 300\n"
      "training winnow\n"
      "# All terms; Winnow finds out by itself which ones matter.\n"
      "selectivity 0\n"
      "# Logarithmic frequencies, and documents of equal length.\n"
      "strength ltc\n"
      "normalize vector\n";
  text += nr_classes > 1 ? "# As many classes as a document had at most; the "
                           "thresholds decide.\n"
                         : "# One class to a document.\n";
  text += "maxranks " + std::to_string(nr_classes) + "\n";
  text +=
      "# What scores mean is learnt from held-out documents; leaves are "
      "compared "
      "by\n"
      "# the probability of their path; and each document belongs somewhere.\n"
      "heldout 5\n"
      "walk path\n"
      "insignificant best\n"
      "# For vek-report.\n"
      "predictions on\n"
      "# The model is kept, for vek-sort and others.\n"
      "save on\n"
      "\n"
      "[Winnow]\n"
      "# A thick threshold, and small steps.\n"
      "thetaplus 5\n"
      "thetamin 0.3\n"
      "alpha 1.05\n"
      "beta 0.95\n"
      "maxiters 10\n";
  return text;
}

}  // namespace vek::importing

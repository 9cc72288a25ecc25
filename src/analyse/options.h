// The command line of vek-analyse.
#ifndef VEK_ANALYSE_OPTIONS_H_
#define VEK_ANALYSE_OPTIONS_H_

#include <span>
#include <string>
#include <vector>

#include "analyse/analysis_writer.h"
#include "analyse/language.h"
#include "analyse/lexicon.h"

namespace vek::analysis {

struct Options {
  const Language *language_P = find_language("english");
  Terms terms = Terms::both;
  Numbers numbers = Numbers::drop;
  std::string stop_file;       // empty: none
  std::string to_directory;    // empty: answer on standard output
  std::string from_directory;  // empty: results named by last component
  bool has_progress = false;
  bool wants_help = false;
  bool wants_version = false;
};

// Fills `options` from the arguments behind the program's name. Returns what
// is wrong with them, or an empty string.
std::string read_options(std::span<char *const> arguments, Options &options);

// What -h prints.
std::string usage();

}  // namespace vek::analysis

#endif  // VEK_ANALYSE_OPTIONS_H_

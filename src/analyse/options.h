// The command line of vek-analyse.
#ifndef VEK_ANALYSE_OPTIONS_H_
#define VEK_ANALYSE_OPTIONS_H_

#include <optional>
#include <string>

#include "analyse/analysis_writer.h"
#include "analyse/language.h"
#include "analyse/lexicon.h"

namespace vek::analysis {

inline constexpr auto program_name = "vek-analyse";

struct Options {
  const Language *language_P = find_language("english");
  Terms terms = Terms::both;
  Numbers numbers = Numbers::drop;
  std::string stop_file;       // empty: none
  std::string to_directory;    // empty: answer on standard output
  std::string from_directory;  // empty: results named by last component
  bool has_progress = false;
};

// Fills `options`. Returns the status to exit with if the program is to end
// now, as CommandLine::parse() does.
std::optional<int> read_options(int nr_arguments, const char *const *arguments,
                                Options &options);

}  // namespace vek::analysis

#endif  // VEK_ANALYSE_OPTIONS_H_

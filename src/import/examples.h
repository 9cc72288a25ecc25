// What is known of an examples directory: its documents, classes and settings,
// and how they are read from its files.
#ifndef VEK_IMPORT_EXAMPLES_H_
#define VEK_IMPORT_EXAMPLES_H_

#include <tsl/robin_map.h>
#include <tsl/robin_set.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "base/failure.h"
#include "convert/settings.h"
#include "import/directory.h"
#include "import/document.h"
#include "import/naming.h"

namespace vek::importing {

inline constexpr char names_header[] =
    "name\tlist\tclasses\tsource\tplace\tkey";
inline constexpr char classes_header[] = "class\toriginal";
inline constexpr char rejects_header[] = "source\tplace\treason\tbegin";
inline constexpr char near_header[] = "test\ttrain\tlikeness";
inline constexpr int settings_version = 1;
// Begin of numbers_file.
inline constexpr std::string_view numbers_mark = "vekimp1\n";

struct Examples {
  ClassNames classes;
  std::vector<Document> documents;  // in the order of names_file
  // By key and by content, the place in `documents`.
  tsl::robin_map<std::uint64_t, std::uint32_t> known;
  tsl::robin_set<std::uint64_t> names;         // hashes of those that are taken
  tsl::robin_set<std::uint64_t> reject_lines;  // hashes
  std::string test;   // the option that the dealing began with, or empty
  double share = -1;  // of documents for the test list; -1: not known yet
  std::map<std::string, convert::Settings> sources;
  // How many documents have these classes, with blanks between them.
  std::map<std::string, std::size_t, std::less<>> filed_in;
  std::size_t most_classes = 0;     // of a document
  std::size_t nr_with_several = 0;  // documents with more than one class

  // A document with the classes `fields`, with blanks between them.
  void add(const Document &document, std::string_view name,
           std::string_view fields);
};

// Reads what the directory has. False if it is damaged.
bool load(const ExamplesDirectory &directory, Examples &examples,
          Failure &failure);

// The bytes of a document in numbers_file.
void append_numbers(std::string &out, const Document &document);

// Gives `take` each line of a file, without its end, and its number from 1. A
// missing file has none. False if it cannot be read, or if `take` says that a
// line is damaged.
bool for_each_line(const std::string &path,
                   const std::function<bool(const std::string &line,
                                            std::size_t number)> &take,
                   Failure &failure);

}  // namespace vek::importing

#endif  // VEK_IMPORT_EXAMPLES_H_

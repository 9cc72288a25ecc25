// The lists of a collection, which name documents with their classes, and the
// names of the files that documents lie in. Pure text: no file is opened here
// but by read_list().
#ifndef VEK_INTAKE_LISTS_H_
#define VEK_INTAKE_LISTS_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "base/input_file.h"

namespace vek {

// The ending of a document's file.
inline constexpr char document_suffix[] = ".txt";

enum class ListKind { train, test };

// The name of the list's file in the examples directory.
const char *list_name(ListKind kind);

// read_file() of a list, which has at most 4 GiB.
ReadResult read_list(const std::string &path, std::string &text,
                     std::string &reason);

// What is odd about a list as a whole, though it is read as it stands: a
// byte-order mark, carriage returns at the ends of lines. Empty: nothing.
std::string list_oddity(std::string_view text);

// A line of a list, its line end excluded, has at most this many bytes; a
// longer one ends the list without a message.
inline constexpr std::size_t longest_list_line = 2047;

// What a line of a list says.
struct ListEntry {
  // Without its ".txt".
  std::string document;
  // Class paths below the top class, cleaned, in the order of the line.
  std::vector<std::string> classes;
};

// Takes a line apart. False if no class stands behind the document's name, or
// if the line holds a NUL byte.
bool parse_list_line(const std::string &line, ListEntry &entry);
// Why parse_list_line() refuses the line.
std::string list_line_fault(const std::string &line);

// Goes through the lines of a list. A last line without its line end counts.
class ListReader {
 public:
  explicit ListReader(std::string_view text) : rest_(text) {}

  // False at the end of the list, and at a line that is too long.
  bool next(std::string &line);
  // The number of the line read last, from 1.
  std::size_t line_number() const { return line_number_; }
  // The list ended at a line that is too long.
  bool too_long() const { return too_long_; }

 private:
  std::string_view rest_;
  std::size_t line_number_ = 0;
  bool too_long_ = false;
};

// Removes from a class field everything from the first colon on, then one
// leading question mark.
void clean_class_name(std::string &field);

// Whether an entry of the input directory names a document: it ends in ".txt"
// and does not begin with a full stop. Sets `name` to it without the ending.
bool is_input_document(const std::string &entry, std::string &name);

// Why a document with that text cannot be polled: a request is one line, and a
// path has a longest length. Empty: it can.
std::string request_fault(const std::string &name, const std::string &path);

}  // namespace vek

#endif  // VEK_INTAKE_LISTS_H_

// From an examples directory to classes with documents.
//
// Two list files name documents with their classes. Collection creates the
// classes, has every listed document analysed and stored, and files its name
// under its classes as a training or a testing document. It handles names
// only; where the texts lie is the analyser's business.
#ifndef VEK_INTAKE_COLLECTION_H_
#define VEK_INTAKE_COLLECTION_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vek {

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

// The last component of a directory's path, a trailing slash included; that of
// the working directory for ".".
std::string base_name(const std::string &directory);

// On return both lists are done. Ends the run if a directory is missing, if a
// list is malformed, or if the class table belongs to another collection.
void collect_documents(const char *examples);

enum class ListKind { train, test };
void collect_list(const char *examples, std::uint32_t top_id, ListKind kind);

// Files a document under a class, analysing it first if it is new.
void collect_document(const std::string &name, std::uint32_t class_id,
                      ListKind kind);

}  // namespace vek

#endif  // VEK_INTAKE_COLLECTION_H_

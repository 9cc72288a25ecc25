// Several files in one, as text: for the run that replaces them at once
// (atomicfiles.h) and for readers of a data directory.
//
// A first line, then each file behind a line with its name, which has no blank,
// and its size in bytes, then a last line.
#ifndef VEK_STORE_FILESETFORMAT_H_
#define VEK_STORE_FILESETFORMAT_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vek {

inline constexpr std::string_view file_set_begin = "vek files 1\n";
inline constexpr std::string_view file_set_end = "end\n";

struct FileSetMember {
  std::string_view name;  // both are parts of the text
  std::string_view content;
};

// The line in front of a file.
std::string file_set_line(std::string_view name, std::uint64_t size);

// Fills the empty list. False unless the text is complete and all its names are
// those of class files of a data directory: no other file is ever to be written
// from it, even if it was not vek that made it.
bool parse_file_set(std::string_view text, std::vector<FileSetMember> &members);

}  // namespace vek

#endif  // VEK_STORE_FILESETFORMAT_H_

// The one way to read a file that comes from outside.
//
// Only regular files are read. Whatever else may stand in a file's place, as a
// pipe that nobody writes to or a device without an end, is refused at once.
#ifndef VEK_BASE_INPUT_FILE_H_
#define VEK_BASE_INPUT_FILE_H_

#include <cstdint>
#include <string>

namespace vek {

// Bytes of the largest file that is read; far more than the vocabulary of
// anybody has. Where less is enough, the caller says so.
inline constexpr std::uint64_t largest_input = std::uint64_t{1} << 36;

// Opens the regular file `path` for reading, without waiting. Returns the
// descriptor, or -1 with errno set and `reason` in words. For a file of another
// kind errno is EISDIR or EINVAL.
int open_input(const std::string &path, std::string &reason);

enum class ReadResult { ok, cannot_open, read_error };

// Replaces `content` by all the bytes of the regular file `path`, of which
// there may be `largest` at most. Reports nothing, as the caller knows what the
// file is for, but sets `reason`: the text of errno, or "no regular file", or
// "larger than ... bytes" (errno is EFBIG then). `cannot_open` is what the
// system refuses to open; the other reasons are a `read_error`.
ReadResult read_file(const std::string &path, std::string &content,
                     std::string &reason,
                     std::uint64_t largest = largest_input);

// The same for those who need no reason.
ReadResult read_file(const std::string &path, std::string &content);

}  // namespace vek

#endif  // VEK_BASE_INPUT_FILE_H_

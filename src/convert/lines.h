// Lines of a source of any size, in UTF-8.
#ifndef VEK_CONVERT_LINES_H_
#define VEK_CONVERT_LINES_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "convert/encoding.h"

namespace vek::convert {

// Reads up to `size` bytes; 0 at the end, -1 with errno set on failure.
using ByteReader = std::function<std::ptrdiff_t(char *to, std::size_t size)>;

// A reader of bytes in memory, which must outlive it.
ByteReader reader_of(std::string_view text);

class Lines {
 public:
  enum class Result { line, too_long, end, failed };

  // An empty encoding takes the bytes as they are, without a mark in front.
  // The encoding must be known.
  explicit Lines(ByteReader reader, const std::string &encoding = "");

  // Sets `line`, with its line end if it has one. Of a line that is too long
  // the begin, and the rest is skipped. `failed`: errno tells why.
  Result next(std::string &line);
  // That of the line read last, from 1.
  std::uint64_t number() const { return number_; }

 private:
  bool fill();
  Result skip_line(std::string &line);

  ByteReader reader_;
  std::optional<Transcoder> transcoder_;
  std::string buffer_;
  std::string piece_;  // to be transcoded
  std::size_t begin_ = 0;
  std::uint64_t number_ = 0;
  bool is_first_ = true;
  bool at_end_ = false;
  bool has_failed_ = false;
};

}  // namespace vek::convert

#endif  // VEK_CONVERT_LINES_H_

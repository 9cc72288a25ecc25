// Any encoding to UTF-8.
#ifndef VEK_CONVERT_ENCODING_H_
#define VEK_CONVERT_ENCODING_H_

#include <iconv.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace vek::convert {

bool is_utf8(std::string_view text);  // and has no NUL

// The encoding of a text: by its byte order mark; UTF-8 if it is valid; UTF-16
// if every other byte is mostly 0; else what its bytes look like. Empty if that
// cannot be told.
std::string detect_encoding(std::string_view text);

// Bytes of an encoding to UTF-8, piece by piece. What is invalid becomes the
// byte 0xFF, which no valid text has, so a reader finds the place again.
class Transcoder {
 public:
  explicit Transcoder(const std::string &encoding);
  ~Transcoder();
  Transcoder(const Transcoder &) = delete;
  Transcoder &operator=(const Transcoder &) = delete;

  // The encoding is known.
  bool is_good() const { return handle_ != iconv_t(-1); }
  // Appends to `out`. A character may begin in one piece and end in the next.
  void convert(std::string_view piece, std::string &out);
  // The last piece is done.
  void finish(std::string &out);

 private:
  iconv_t handle_;
  std::string rest_;
};

// `text` to UTF-8, without a byte order mark. An empty encoding is found out.
// Returns what is wrong with it: not of that encoding, not known of which, or
// with NUL; or an empty string.
std::string to_utf8(std::string &text, std::string encoding);

}  // namespace vek::convert

#endif  // VEK_CONVERT_ENCODING_H_

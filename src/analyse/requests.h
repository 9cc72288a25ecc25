// The requests: one path a line, read as they come.
#ifndef VEK_ANALYSE_REQUESTS_H_
#define VEK_ANALYSE_REQUESTS_H_

#include <array>
#include <cstddef>
#include <string>

namespace vek::analysis {

class RequestReader {
 public:
  // Longer than any path that a system opens, so that a cut one fails too.
  static constexpr std::size_t longest_path = 64 * 1024;

  // The descriptor stays the caller's.
  explicit RequestReader(int descriptor) : descriptor_(descriptor) {}

  // Sets `path` to the next line, without its line end; the last line needs
  // none. What lies behind longest_path bytes is dropped. Waits only while
  // there is no whole line. False at the end of the input, and if it can't be
  // read: then errno tells why, and is 0 otherwise.
  bool next(std::string &path);

 private:
  bool fill();
  bool take_line(std::string &path);

  int descriptor_;
  std::array<char, 16 * 1024> buffer_{};
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
};

}  // namespace vek::analysis

#endif  // VEK_ANALYSE_REQUESTS_H_

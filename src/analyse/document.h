// A document on its way from its bytes to the tokeniser: read in pieces, so
// that its size does not matter, and decoded.
#ifndef VEK_ANALYSE_DOCUMENT_H_
#define VEK_ANALYSE_DOCUMENT_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "analyse/tokeniser.h"

namespace vek::analysis {

// Bytes that can be read from any place.
class ByteSource {
 public:
  virtual ~ByteSource() = default;

  // Reads up to `size` bytes from `offset` on; fewer only at the end. Returns
  // how many there were, -1 if they could not be read.
  virtual std::ptrdiff_t read(std::uint64_t offset, char *to,
                              std::size_t size) = 0;
};

// A regular file. Anything else that a path can name, such as a pipe or a
// device, could block or never end, and is not opened.
class FileSource : public ByteSource {
 public:
  FileSource() = default;
  ~FileSource() override;
  FileSource(const FileSource &) = delete;
  FileSource &operator=(const FileSource &) = delete;

  // Returns what went wrong, or an empty string. `path` can hold any bytes.
  std::string open(const std::string &path);

  // Reads no more than the size that the file had when it was opened: a file
  // that grows meanwhile does not hold up the others.
  std::ptrdiff_t read(std::uint64_t offset, char *to,
                      std::size_t size) override;

 private:
  int descriptor_ = -1;
  std::uint64_t size_ = 0;  // bytes; of no meaning if has_size_ is false
  bool has_size_ = false;
};

class DocumentReader {
 public:
  // No buffer may be smaller, in bytes.
  static constexpr std::size_t least_buffer = 4 * Tokeniser::look_ahead;
  static constexpr std::size_t usual_buffer = 64 * 1024;

  explicit DocumentReader(std::size_t buffer_size = usual_buffer);

  // Feeds the whole document to `tokeniser`, without the byte order mark that
  // it may begin with. It is read as UTF-8 if all of it is valid UTF-8, and
  // else as Windows-1252. One that is larger than the buffer is therefore read
  // twice. False if the source fails; the words up to there were fed.
  bool read(ByteSource &source, Tokeniser &tokeniser);

 private:
  enum class Encoding { utf8, windows_1252 };

  bool load(ByteSource &source, std::uint64_t offset);
  bool load_next(ByteSource &source);
  bool find_encoding(ByteSource &source);
  bool feed_all(ByteSource &source, Tokeniser &tokeniser);
  void decode_piece();

  const std::size_t buffer_size_;
  std::unique_ptr<char[]> buffer_;
  // The piece of the source at hand, in the buffer.
  std::string_view piece_;
  std::uint64_t offset_ = 0;  // of the piece, in bytes
  bool is_last_ = false;      // nothing follows the piece
  Encoding encoding_ = Encoding::utf8;
  // Decoded, and not read by the tokeniser yet.
  std::string text_;
};

}  // namespace vek::analysis

#endif  // VEK_ANALYSE_DOCUMENT_H_

#include "convert/lines.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "convert/record.h"

namespace vek::convert {
namespace {

constexpr std::size_t piece_size = std::size_t{64} << 10;
// Of a line that is too long, for the report.
constexpr std::size_t shown_begin = 200;
constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";

}  // namespace

ByteReader reader_of(std::string_view text) {
  return [text](char *to, std::size_t size) mutable {
    size = std::min(size, text.size());
    std::memcpy(to, text.data(), size);
    text.remove_prefix(size);
    return static_cast<std::ptrdiff_t>(size);
  };
}

Lines::Lines(ByteReader reader, const std::string &encoding)
    : reader_(std::move(reader)) {
  if (!encoding.empty() && encoding != "UTF-8")
    transcoder_.emplace(encoding);
}

bool Lines::fill() {
  if (at_end_)
    return false;
  buffer_.erase(0, begin_);
  begin_ = 0;
  const std::size_t size = buffer_.size();
  std::string &piece = transcoder_ ? piece_ : buffer_;
  const std::size_t begin = transcoder_ ? 0 : size;
  piece.resize(begin + piece_size);
  const std::ptrdiff_t count = reader_(piece.data() + begin, piece_size);
  at_end_ = count <= 0;
  has_failed_ = count < 0;
  piece.resize(begin + (at_end_ ? 0 : static_cast<std::size_t>(count)));
  if (transcoder_ && !at_end_)
    transcoder_->convert(piece, buffer_);
  else if (transcoder_)
    transcoder_->finish(buffer_);
  return !at_end_ || buffer_.size() > size;
}

Lines::Result Lines::next(std::string &line) {
  std::size_t searched = 0;
  while (true) {
    if (is_first_ && buffer_.size() - begin_ >= byte_order_mark.size()) {
      is_first_ = false;
      if (buffer_.starts_with(byte_order_mark))
        begin_ += byte_order_mark.size();
    }
    const std::size_t end = buffer_.find('\n', begin_ + searched);
    if (end != std::string::npos && end - begin_ <= longest_text) {
      line.assign(buffer_, begin_, end + 1 - begin_);
      begin_ = end + 1;
      ++number_;
      return Result::line;
    }
    searched = buffer_.size() - begin_;
    if (searched > longest_text)
      return skip_line(line);
    if (!fill())
      break;
    searched -= std::min(searched, byte_order_mark.size());
  }
  if (has_failed_)
    return Result::failed;
  if (begin_ == buffer_.size())
    return Result::end;
  line.assign(buffer_, begin_);
  begin_ = buffer_.size();
  ++number_;
  return Result::line;
}

Lines::Result Lines::skip_line(std::string &line) {
  line.assign(buffer_, begin_, shown_begin);
  ++number_;
  while (true) {
    const std::size_t end = buffer_.find('\n', begin_);
    if (end != std::string::npos) {
      begin_ = end + 1;
      return Result::too_long;
    }
    begin_ = buffer_.size();
    if (!fill())
      return has_failed_ ? Result::failed : Result::too_long;
  }
}

}  // namespace vek::convert

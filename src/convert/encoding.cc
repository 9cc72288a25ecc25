#include "convert/encoding.h"

#include <glib.h>
#include <uchardet/uchardet.h>

#include <algorithm>
#include <cerrno>
#include <memory>

namespace vek::convert {
namespace {

constexpr std::string_view utf8_mark = "\xEF\xBB\xBF";
// More does not make the guess better.
constexpr std::size_t most_guessed = std::size_t{1} << 20;

// Of text in UTF-16 without a mark, mostly ASCII. Binary data has its zeros at
// odd and even places alike.
std::string detect_utf16(std::string_view text) {
  if (text.size() % 2 != 0)
    return "";
  std::size_t nr_zeros[2] = {0, 0};
  text = text.substr(0, most_guessed);
  for (std::size_t i = 0; i < text.size(); ++i)
    nr_zeros[i % 2] += text[i] == '\0';
  for (const std::size_t place : {std::size_t{0}, std::size_t{1}}) {
    if (nr_zeros[place] * 10 > text.size() * 3 && nr_zeros[1 - place] == 0)
      return place == 0 ? "UTF-16BE" : "UTF-16LE";
  }
  return "";
}

}  // namespace

bool is_utf8(std::string_view text) {
  return g_utf8_validate_len(text.data(), text.size(), nullptr) != FALSE;
}

std::string detect_encoding(std::string_view text) {
  if (text.starts_with(utf8_mark))
    return "UTF-8";
  using namespace std::string_view_literals;
  if (text.starts_with("\xFF\xFE\0\0"sv) || text.starts_with("\0\0\xFE\xFF"sv))
    return "UTF-32";
  if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF"))
    return "UTF-16";
  if (text.find('\0') != std::string_view::npos)
    return detect_utf16(text);
  if (is_utf8(text))
    return "UTF-8";
  const std::unique_ptr<struct uchardet, decltype(&uchardet_delete)> detector(
      uchardet_new(), uchardet_delete);
  uchardet_handle_data(detector.get(), text.data(),
                       std::min(text.size(), most_guessed));
  uchardet_data_end(detector.get());
  const std::string found = uchardet_get_charset(detector.get());
  // The most frequent one of the West is a superset of it.
  return found == "ISO-8859-1" ? "WINDOWS-1252" : found;
}

Transcoder::Transcoder(const std::string &encoding)
    : handle_(iconv_open("UTF-8", encoding.c_str())) {}

Transcoder::~Transcoder() {
  if (is_good())
    iconv_close(handle_);
}

void Transcoder::convert(std::string_view piece, std::string &out) {
  rest_ += piece;
  char *from_P = rest_.data();
  std::size_t nr_left = rest_.size();
  char buffer[16384];
  while (nr_left > 0) {
    char *to_P = buffer;
    std::size_t room = sizeof buffer;
    const std::size_t result = iconv(handle_, &from_P, &nr_left, &to_P, &room);
    const int error = errno;
    out.append(buffer, to_P);
    if (result != std::size_t(-1) || error == E2BIG)
      continue;
    if (error == EINVAL)
      break;
    out += '\xFF';
    ++from_P;
    --nr_left;
  }
  rest_.erase(0, rest_.size() - nr_left);
}

void Transcoder::finish(std::string &out) {
  if (!rest_.empty())
    out += '\xFF';
  rest_.clear();
}

std::string to_utf8(std::string &text, std::string encoding) {
  const bool is_told = !encoding.empty();
  if (!is_told)
    encoding = detect_encoding(text);
  if (encoding.empty()) {
    return text.find('\0') != std::string::npos
               ? "NUL bytes: this is no text"
               : "its encoding cannot be told; see --encoding";
  }
  if (encoding != "UTF-8") {
    Transcoder transcoder(encoding);
    if (!transcoder.is_good())
      return "unknown encoding `" + encoding + "'";
    std::string converted;
    transcoder.convert(text, converted);
    transcoder.finish(converted);
    text.swap(converted);
  }
  if (text.find('\0') != std::string::npos)
    return "NUL bytes: this is no text";
  if (!is_utf8(text))
    return "not valid " + encoding + (is_told ? "" : "; see --encoding");
  if (text.starts_with(utf8_mark))
    text.erase(0, utf8_mark.size());
  return "";
}

}  // namespace vek::convert

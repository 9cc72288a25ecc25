#include "convert/mail.h"

#include <gmime/gmime.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <memory>

#include "convert/encoding.h"
#include "convert/html.h"

namespace vek::convert {
namespace {

// More than any honest message has. The parser has a bound of its own for what
// is nested.
constexpr int deepest = 30;
constexpr std::size_t most_parts = 1000;
// The parser makes objects of these, each many times as large as its line.
constexpr std::size_t most_boundaries = 100000;
constexpr std::size_t most_headers = 200000;

template <class Object>
struct Unref {
  void operator()(Object *object_P) const { g_object_unref(object_P); }
};
template <class Object>
using Owned = std::unique_ptr<Object, Unref<Object>>;

class BodyReader {
 public:
  explicit BodyReader(std::string &text) : text_(text) {}

  void read(GMimeObject *object_P, int depth = 0) {
    if (++nr_parts_ > most_parts || depth > deepest) {
      reason_ = "too many parts, or nested too deep";
    } else if (GMIME_IS_MULTIPART(object_P)) {
      read_multipart(GMIME_MULTIPART(object_P), depth);
    } else if (GMIME_IS_MESSAGE_PART(object_P)) {
      GMimeMessage *const inner_P =
          g_mime_message_part_get_message(GMIME_MESSAGE_PART(object_P));
      if (inner_P != nullptr)
        read_message_body(inner_P, depth + 1);
    } else if (GMIME_IS_TEXT_PART(object_P) &&
               g_mime_part_is_attachment(GMIME_PART(object_P)) == FALSE) {
      read_text(GMIME_PART(object_P));
    }
  }

  void read_message_body(GMimeMessage *message_P, int depth) {
    if (const char *subject_P = g_mime_message_get_subject(message_P))
      add(subject_P);
    if (GMimeObject *const body_P = g_mime_message_get_mime_part(message_P))
      read(body_P, depth);
  }

  const std::string &reason() const { return reason_; }

 private:
  static bool is_type(GMimeObject *object_P, const char *type,
                      const char *subtype) {
    return g_mime_content_type_is_type(g_mime_object_get_content_type(object_P),
                                       type, subtype) != 0;
  }

  void read_multipart(GMimeMultipart *multipart_P, int depth) {
    const int count = g_mime_multipart_get_count(multipart_P);
    if (is_type(GMIME_OBJECT(multipart_P), "multipart", "alternative")) {
      if (GMimeObject *const best_P = best_alternative(multipart_P, count))
        read(best_P, depth + 1);
      return;
    }
    for (int i = 0; i < count && reason_.empty(); ++i)
      read(g_mime_multipart_get_part(multipart_P, i), depth + 1);
  }

  // The plain text, else the last one, which is the richest.
  static GMimeObject *best_alternative(GMimeMultipart *multipart_P, int count) {
    GMimeObject *best_P = nullptr;
    for (int i = 0; i < count; ++i) {
      GMimeObject *const part_P = g_mime_multipart_get_part(multipart_P, i);
      if (is_type(part_P, "text", "plain"))
        return part_P;
      if (GMIME_IS_TEXT_PART(part_P) || GMIME_IS_MULTIPART(part_P))
        best_P = part_P;
    }
    return best_P;
  }

  void read_text(GMimePart *part_P) {
    GMimeDataWrapper *const content_P = g_mime_part_get_content(part_P);
    if (content_P == nullptr)
      return;
    const Owned<GMimeStream> stream(g_mime_stream_mem_new());
    g_mime_data_wrapper_write_to_stream(content_P, stream.get());
    const GByteArray *bytes_P =
        g_mime_stream_mem_get_byte_array(GMIME_STREAM_MEM(stream.get()));
    const std::string bytes(reinterpret_cast<const char *>(bytes_P->data),
                            bytes_P->len);
    const char *charset_P = g_mime_object_get_content_type_parameter(
        GMIME_OBJECT(part_P), "charset");
    const bool is_page = is_type(GMIME_OBJECT(part_P), "text", "html");
    const auto convert = [is_page](std::string &text, const char *encoding_P) {
      return is_page ? page_to_text(text, encoding_P)
                     : to_utf8(text, encoding_P);
    };
    // What a message says of its encoding is wrong often enough.
    std::string text = bytes;
    if (charset_P == nullptr || !convert(text, charset_P).empty()) {
      text = bytes;
      reason_ = convert(text, "");
    }
    if (reason_.empty())
      add(text);
  }

  void add(const std::string &text) {
    if (!text_.empty())
      text_ += "\n\n";
    text_ += text;
  }

  std::string &text_;
  std::size_t nr_parts_ = 0;
  std::string reason_;
};

std::string header_of(GMimeMessage *message_P, const std::string &name) {
  const char *value_P =
      g_mime_object_get_header(GMIME_OBJECT(message_P), name.c_str());
  return value_P == nullptr ? "" : value_P;
}

// "From somebody Mon Nov  2 10:00:00 2020": a line of a text can begin with the
// word as well.
bool is_separator(std::string_view line) {
  const auto is_digit = [&line](std::size_t at) {
    return at < line.size() && std::isdigit(line[at] & 0xFF) != 0;
  };
  if (!line.starts_with("From "))
    return false;
  for (std::size_t at = line.find(':'); at != std::string_view::npos;
       at = line.find(':', at + 1)) {
    if (is_digit(at - 1) && is_digit(at + 1) && is_digit(at + 2))
      return true;
  }
  return false;
}

// ">From ", ">>From ": each has one mark too many.
bool is_quoted_separator(std::string_view line) {
  const std::size_t begin = line.find_first_not_of('>');
  return begin != std::string_view::npos && begin > 0 &&
         line.substr(begin).starts_with("From ");
}

// Whether so many lines look like headers or boundaries that the parser would
// need too much memory.
bool is_bomb(std::string_view bytes) {
  std::size_t nr_headers = 0;
  std::size_t nr_boundaries = 0;
  while (!bytes.empty()) {
    const std::size_t end = std::min(bytes.find('\n'), bytes.size() - 1);
    const std::string_view line = bytes.substr(0, end);
    nr_boundaries += line.starts_with("--");
    const std::size_t stop = line.find_first_of(": \t\r");
    nr_headers += stop != std::string_view::npos && line[stop] == ':';
    bytes.remove_prefix(end + 1);
  }
  return nr_headers > most_headers || nr_boundaries > most_boundaries;
}

class MboxReader {
 public:
  MboxReader(const Settings &settings, const FilePlace &file, Sink &sink)
      : settings_(settings), file_(file), sink_(sink) {}

  void add(std::string_view line, std::uint64_t number) {
    if (is_behind_blank_ && is_separator(line)) {
      finish();
      begin_ = number;
      return;
    }
    if (begin_ == 0) {
      begin_ = number;
      reason_ = "no line `From ...' in front of the message";
    }
    is_behind_blank_ = line == "\n" || line == "\r\n";
    if (bytes_.size() + line.size() > longest_text)
      reason_ = "a message of more than 40 MiB";
    if (reason_.empty())
      bytes_ += line.substr(is_quoted_separator(line) ? 1 : 0);
  }

  void finish() {
    if (begin_ == 0)
      return;
    Record record;
    record.place = file_.at_line(begin_);
    if (reason_.empty())
      reason_ = read_message(bytes_, settings_, record);
    if (!reason_.empty()) {
      sink_.reject(record.place, reason_, bytes_);
    } else if (record.key.empty() || sink_.wants(record.key, false)) {
      if (settings_.classes.empty()) {
        record.classes = {file_.folder};
        record.has_folder_class = true;
      }
      sink_.take(record);
    }
    begin_ = 0;
    reason_.clear();
    bytes_.clear();
  }

 private:
  const Settings &settings_;
  const FilePlace &file_;
  Sink &sink_;
  std::uint64_t begin_ = 0;  // line of the message; 0: none is open
  bool is_behind_blank_ = true;
  std::string bytes_;
  std::string reason_;
};

}  // namespace

std::string page_to_text(std::string &page, const std::string &encoding) {
  if (page.size() > longest_page)
    return "a page of more than 8 MiB";
  std::string told = encoding;
  if (told.empty() && !is_utf8(page)) {
    // UTF-16 cannot be named in letters of one byte.
    const std::string named = named_encoding(page);
    if (named.find("16") == std::string::npos && named != "utf-8")
      told = named;
  }
  std::string reason = to_utf8(page, told);
  if (reason.empty())
    page = html_text(page);
  return reason;
}

std::string read_message(const std::string &bytes, const Settings &settings,
                         Record &record) {
  static const bool is_ready = (g_mime_init(), true);
  static_cast<void>(is_ready);
  if (is_bomb(bytes))
    return "too many headers or parts";
  const Owned<GMimeStream> stream(
      g_mime_stream_mem_new_with_buffer(bytes.data(), bytes.size()));
  const Owned<GMimeParser> parser(g_mime_parser_new_with_stream(stream.get()));
  const Owned<GMimeMessage> message(
      g_mime_parser_construct_message(parser.get(), nullptr));
  if (!message)
    return "no mail";
  BodyReader reader(record.text);
  reader.read_message_body(message.get(), 0);
  if (!reader.reason().empty())
    return reader.reason();
  const char *id_P = g_mime_message_get_message_id(message.get());
  if (record.key.empty() && id_P != nullptr)
    record.key = id_P;
  if (!settings.classes.empty()) {
    split_classes(header_of(message.get(), settings.classes),
                  settings.separator, record.classes);
  }
  if (!settings.group.empty())
    record.group = header_of(message.get(), settings.group);
  if (!settings.group.empty() && record.group.empty())
    return "no header `" + settings.group + "'";
  for (const std::string &text : {record.text, record.key, record.group}) {
    if (!is_utf8(text))
      return "a header that is not valid UTF-8, or has NUL";
  }
  return "";
}

bool read_mbox(Lines &lines, const Settings &settings, const FilePlace &file,
               Sink &sink, Failure &failure) {
  MboxReader reader(settings, file, sink);
  std::string line;
  while (true) {
    const Lines::Result result = lines.next(line);
    if (result == Lines::Result::failed) {
      failure = {file.path, "line " + std::to_string(lines.number()),
                 std::strerror(errno)};
      return false;
    }
    if (result == Lines::Result::end)
      break;
    // The begin of a line that is too long, so that the message is too.
    if (result == Lines::Result::too_long)
      line.resize(longest_text + 1);
    reader.add(line, lines.number());
  }
  reader.finish();
  return true;
}

}  // namespace vek::convert

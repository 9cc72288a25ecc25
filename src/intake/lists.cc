#include "intake/lists.h"

#include <algorithm>
#include <climits>
#include <cstdint>

#include "base/helpers.h"

namespace vek {

const char *list_name(ListKind kind) {
  return kind == ListKind::train ? "train" : "test";
}

ReadResult read_list(const std::string &path, std::string &text,
                     std::string &reason) {
  constexpr std::uint64_t largest_list = std::uint64_t{1} << 32;
  return read_file(path, text, reason, largest_list);
}

std::string list_oddity(std::string_view text) {
  std::string oddity;
  if (text.starts_with("\xEF\xBB\xBF"))
    oddity = "a byte-order mark is part of the first name";
  if (text.find("\r\n") != std::string_view::npos) {
    oddity += oddity.empty() ? "" : ", and ";
    oddity += "the lines end in CR LF: the carriage returns are parts of names";
  }
  return oddity;
}

bool ListReader::next(std::string &line) {
  if (rest_.empty())
    return false;
  ++line_number_;
  const std::size_t end = rest_.find('\n');
  const std::string_view text = rest_.substr(0, end);
  // Nothing is taken off, so that the list ends here for good.
  too_long_ = text.size() > longest_list_line;
  if (too_long_)
    return false;
  line = text;
  rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
  return true;
}

bool parse_list_line(const std::string &line, ListEntry &entry) {
  entry.classes.clear();
  std::string word;
  std::string rest;
  // A file name would end there, and two documents could be one file.
  if (line.find('\0') != std::string::npos)
    return false;
  if (!split_word(line, ' ', word, rest))
    return false;
  strip_suffix(entry.document, word, document_suffix);
  while (!rest.empty()) {
    split_word(rest, ' ', word, rest);
    clean_class_name(word);
    entry.classes.push_back(word);
  }
  return true;
}

// In the order in which parse_list_line() finds it, so that the reason is the
// first one.
std::string list_line_fault(const std::string &line) {
  if (line.find('\0') != std::string::npos)
    return "there is a NUL byte";
  if (line.find_first_not_of(' ') == std::string::npos)
    return "the line is empty";
  return "there is no class behind `" + line + "'";
}

void clean_class_name(std::string &field) {
  // A rank file has a score behind each colon, so that it can be used as a list
  // as it is.
  const std::size_t colon = field.find(':');
  if (colon != std::string::npos)
    field.resize(colon);
  if (field.starts_with('?'))
    field.erase(0, 1);
}

bool is_input_document(const std::string &entry, std::string &name) {
  strip_suffix(name, entry, document_suffix);
  return !entry.starts_with('.') && ends_with(entry, document_suffix);
}

std::string request_fault(const std::string &name, const std::string &path) {
  const auto is_control = [](char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte < 0x20 || byte == 0x7F;
  };
  if (std::ranges::any_of(name, is_control))
    return "its name has a control character";
  return path.size() < PATH_MAX ? "" : "the path of its text is too long";
}

}  // namespace vek

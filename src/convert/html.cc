#include "convert/html.h"

#include <libxml/HTMLparser.h>

#include <algorithm>
#include <cctype>
#include <iterator>
#include <memory>
#include <new>

namespace vek::convert {
namespace {

constexpr std::string_view unseen[] = {"script", "style", "template",
                                       "noscript", "svg"};
// Within a line; all other elements stand in lines of their own.
constexpr std::string_view inner[] = {
    "a",      "abbr", "acronym", "b",    "bdi",  "bdo",   "big",  "cite",
    "code",   "data", "del",     "dfn",  "em",   "font",  "i",    "ins",
    "kbd",    "mark", "q",       "s",    "samp", "small", "span", "strike",
    "strong", "sub",  "sup",     "time", "tt",   "u",     "var",  "wbr"};
// A page names its encoding within its first kilobyte.
constexpr std::size_t named_within = 1024;
constexpr int piece_size = 65536;

template <std::size_t count>
bool is_one_of(const std::string_view (&names)[count], const xmlChar *name_P) {
  const std::string_view name(reinterpret_cast<const char *>(name_P));
  return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

struct PageText {
  std::string text;
  std::size_t nr_unseen = 0;  // open elements whose text is not shown

  void end_line() {
    if (!text.empty() && text.back() != '\n')
      text += '\n';
  }
  // Runs of white space are one blank.
  void add(std::string_view piece) {
    if (nr_unseen > 0)
      return;
    for (const char character : piece) {
      const bool is_space = std::isspace(character & 0xFF) != 0;
      if (!is_space)
        text += character;
      else if (!text.empty() && text.back() != ' ' && text.back() != '\n')
        text += ' ';
    }
  }
};

void start_element(void *page_P, const xmlChar *name_P, const xmlChar **) {
  PageText &page = *static_cast<PageText *>(page_P);
  if (is_one_of(unseen, name_P))
    ++page.nr_unseen;
  else if (!is_one_of(inner, name_P))
    page.end_line();
}

void end_element(void *page_P, const xmlChar *name_P) {
  PageText &page = *static_cast<PageText *>(page_P);
  if (is_one_of(unseen, name_P)) {
    if (page.nr_unseen > 0)
      --page.nr_unseen;
  } else if (!is_one_of(inner, name_P)) {
    page.end_line();
  }
}

void add_characters(void *page_P, const xmlChar *text_P, int size) {
  static_cast<PageText *>(page_P)->add(
      {reinterpret_cast<const char *>(text_P), static_cast<std::size_t>(size)});
}

}  // namespace

std::string named_encoding(std::string_view page) {
  std::string head(page.substr(0, named_within));
  std::transform(head.begin(), head.end(), head.begin(), [](char character) {
    return static_cast<char>(std::tolower(character & 0xFF));
  });
  std::size_t begin = head.find("charset=");
  if (begin == std::string::npos)
    return "";
  begin = head.find_first_not_of("\"' ", begin + 8);
  const std::size_t end = head.find_first_of("\"' />;", begin);
  return begin == std::string::npos || end == std::string::npos
             ? ""
             : head.substr(begin, end - begin);
}

std::string html_text(std::string_view page) {
  PageText result;
  htmlSAXHandler handler = {};
  handler.startElement = start_element;
  handler.endElement = end_element;
  handler.characters = add_characters;
  handler.ignorableWhitespace = add_characters;
  const std::unique_ptr<htmlParserCtxt, decltype(&htmlFreeParserCtxt)> parser(
      htmlCreatePushParserCtxt(&handler, &result, nullptr, 0, nullptr,
                               XML_CHAR_ENCODING_UTF8),
      htmlFreeParserCtxt);
  if (!parser)
    throw std::bad_alloc();
  htmlCtxtUseOptions(parser.get(), HTML_PARSE_IGNORE_ENC | HTML_PARSE_NONET |
                                       HTML_PARSE_NOERROR |
                                       HTML_PARSE_NOWARNING |
                                       HTML_PARSE_RECOVER);
  while (!page.empty()) {
    const auto size = std::min<std::size_t>(page.size(), piece_size);
    htmlParseChunk(parser.get(), page.data(), static_cast<int>(size), 0);
    page.remove_prefix(size);
  }
  htmlParseChunk(parser.get(), nullptr, 0, 1);
  result.end_line();
  return result.text;
}

}  // namespace vek::convert

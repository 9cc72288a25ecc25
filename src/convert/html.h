// The text of an HTML page.
#ifndef VEK_CONVERT_HTML_H_
#define VEK_CONVERT_HTML_H_

#include <string>
#include <string_view>

namespace vek::convert {

// Longer pages, in bytes, are refused: tags that are nested deep enough cost
// time that grows faster than the page.
inline constexpr std::size_t longest_page = std::size_t{8} << 20;

// The encoding that a page names in its head; empty: none.
std::string named_encoding(std::string_view page);

// What a reader sees of `page`, in UTF-8, and its title in front: without
// scripts and styles, a line end around paragraphs and their like. Any bytes
// are a page.
std::string html_text(std::string_view page);

}  // namespace vek::convert

#endif  // VEK_CONVERT_HTML_H_

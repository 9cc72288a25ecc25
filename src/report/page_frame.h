// What pages that are one file have in common: nothing in them can end the
// place in which it stands, and a content security policy allows their own
// style and script, by their hashes, and nothing else.
#ifndef VEK_REPORT_PAGE_FRAME_H_
#define VEK_REPORT_PAGE_FRAME_H_

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/failure.h"

namespace vek::reporting {

// JSON for a script element, which ends at the first "</script" whatever stands
// around it. Such characters are in strings only.
std::string without_markup(const std::string &json);

// Text for an element or an attribute in quotes. What is no UTF-8, and what
// moves a cursor or turns the direction of text, but for line ends and tabs, is
// shown as U+FFFD.
std::string html_text(std::string_view text);

// As a content security policy names a script or a style.
std::string hash_of(std::string_view text);

// Puts texts in the places of "@NAME@" in the page's frame, in their order.
std::string filled(
    std::string_view frame,
    const std::vector<std::pair<std::string_view, std::string_view>> &parts);

// Writes the page, so that under its name there is always a complete one.
// False, with `failure` filled in, if the system refuses.
bool write_page(const std::string &path, const std::string &page,
                Failure &failure);

}  // namespace vek::reporting

#endif  // VEK_REPORT_PAGE_FRAME_H_

// The files of the folder page, which the build turns into constants.
#ifndef VEK_EXPLAIN_PAGE_SOURCES_H_
#define VEK_EXPLAIN_PAGE_SOURCES_H_

#include <string_view>

namespace vek::explaining {

extern const std::string_view page_html;
extern const std::string_view page_css;

}  // namespace vek::explaining

#endif  // VEK_EXPLAIN_PAGE_SOURCES_H_

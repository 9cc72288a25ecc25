// The files of the folder page, which the build turns into constants.
#ifndef VEK_REPORT_PAGE_SOURCES_H_
#define VEK_REPORT_PAGE_SOURCES_H_

#include <string_view>

namespace vek::reporting {

extern const std::string_view page_html;
extern const std::string_view page_css;
extern const std::string_view page_js;

}  // namespace vek::reporting

#endif  // VEK_REPORT_PAGE_SOURCES_H_

// The beginning of a document's text.
#ifndef VEK_REPORT_EXCERPT_H_
#define VEK_REPORT_EXCERPT_H_

#include <cstddef>
#include <string>

namespace vek::reporting {

// At most `longest` bytes of the file DIRECTORY/NAME.txt, cut between
// characters, and with "..." behind it if there is more. Empty if there is no
// such file, or if the name leads out of the directory.
std::string excerpt(const std::string &directory, const std::string &name,
                    std::size_t longest);

}  // namespace vek::reporting

#endif  // VEK_REPORT_EXCERPT_H_

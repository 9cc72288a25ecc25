// The resource file of a new examples directory.
#ifndef VEK_IMPORT_RESOURCE_H_
#define VEK_IMPORT_RESOURCE_H_

#include <cstddef>
#include <string>

namespace vek::importing {

// Where the analyser lies: beside this program, or on the PATH.
std::string find_analyser();

// Settings that serve most collections: those of the installed example for
// Winnow. A document goes to at most `nr_classes` classes.
std::string resource_text(const std::string &language, std::size_t nr_classes);

}  // namespace vek::importing

#endif  // VEK_IMPORT_RESOURCE_H_
